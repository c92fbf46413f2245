// A unit as people and scripts see it, and what control programs have set for it.
#pragma once

#include <map>
#include <string>

#include "host/box/hardware.h"
#include "host/box/inventory.h"
#include "host/spbox/json.h"

namespace spbox {

// False for a fan of a tray.
bool has_id(const box::UnitPlace &place);

// What the control programs have set for a unit: "maintenance, detached, link down".
std::string flag_text(const box::Hardware &hardware, const std::string &unit);
std::string unreadable(const std::string &why);

// For scripts.
Json id_json(const box::UnitId &id);
Json::Object json_of(const box::Unit &unit, const box::Hardware &hardware);

// What control programs have set that is of no unit of the inventory, by its key in the box's own database.
std::map<std::string, std::string> other_settings(const box::Hardware &hardware, const box::Inventory &inventory);

}  // namespace spbox
