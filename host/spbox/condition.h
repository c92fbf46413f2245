// What of a box is not as it was when the box was made.
#pragma once

#include <string>
#include <vector>

#include "host/box/hardware.h"
#include "host/box/inventory.h"
#include "host/box/place.h"

namespace spbox {

// False for a unit that is out, faulted, degraded, unreadable, lit, under maintenance, detached or with its link down.
bool is_usual(const box::Unit &unit, const box::Hardware &hardware);

// Control programs, the daemon, records and points that are bent, broken or deviated, in words.
std::vector<std::string> bent_lines(const box::Place &place);

// What control programs have set for what is no unit of the inventory: "Set: power /IOX@0A21 off".
std::vector<std::string> other_lines(const box::Inventory &inventory, const box::Hardware &hardware);

}  // namespace spbox
