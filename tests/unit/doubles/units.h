// An inventory in which every unit of every kind is installed and well, for tests that work with any kind of unit.
#pragma once

#include <cstdint>

namespace doubles {

// Four boards with their extended system boards, and of the other kinds all that a record holds.
void put_units();

// The status word of a unit, by the type code that a caller gives for it.
void put_status(int32_t type, uint32_t number, uint32_t status);

// The first identifying word of a unit; the second has all its bits the other way round.
uint32_t unit_id_of(int32_t type, uint32_t number);

// The system's own status word.
void put_system_status(uint32_t status);

}  // namespace doubles
