// A unit as people and scripts see it, and what control programs have set for it.
#pragma once

#include <map>
#include <nlohmann/json.hpp>
#include <string>

#include "host/box/hardware.h"
#include "host/box/inventory.h"

namespace spbox {

// False for a fan of a tray.
bool has_id(const box::UnitPlace &place);

// What the control programs have set for a unit: "maintenance, detached, link down".
std::string flag_text(const box::Hardware &hardware, const std::string &unit);
std::string unreadable(const std::string &why);
nlohmann::json json_of(const box::Unit &unit, const box::Hardware &hardware);

// What control programs have set that is of no unit of the inventory, by its key in the box's own database.
std::map<std::string, std::string> other_settings(const box::Hardware &hardware, const box::Inventory &inventory);

}  // namespace spbox
