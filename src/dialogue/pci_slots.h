// The PCI slots of an I/O unit or an I/O expansion unit, ten words each, as the lists show them.
#pragma once

#include <cstddef>
#include <cstdint>

#include "src/dialogue/unit_table.h"
#include "src/model/unit_status.h"

namespace lmainte {

// The words of a slot's entry.
inline constexpr size_t kSlotWords = 10;
inline constexpr size_t kSlotUnitId = 2;
inline constexpr size_t kSlotStatus = 4;
inline constexpr size_t kSlotNumber = 6;
inline constexpr size_t kSlotPower = 7;
inline constexpr uint32_t kPowerOn = LMAINTE_PCI_POWER;

// Writes a line with the number and the power of a slot, under the name of the slot or of the unit that holds it.
inline bool write_slot(Table &table, const uint32_t *unit_id, const uint32_t *slot, int32_t &number) {
  UnitName name;
  if (!table.find_name(unit_id, NameForm::kLocation, name)) return false;
  const char *power = (slot[kSlotPower] & kPowerOn) != 0 ? "On" : "Off";
  table.write_unit(kSlotLine, ++number, name.shown(), static_cast<int32_t>(slot[kSlotNumber]), power);
  return true;
}

// Slots that are not installed take no number.
inline bool write_installed_slots(Table &table, const uint32_t *slots, uint32_t count, int32_t &number) {
  for (uint32_t k = 0; k < count; ++k) {
    const uint32_t *slot = slots + size_t{k} * kSlotWords;
    if (is_installed(slot[kSlotStatus]) && !write_slot(table, slot + kSlotUnitId, slot, number)) return false;
  }
  return true;
}

}  // namespace lmainte
