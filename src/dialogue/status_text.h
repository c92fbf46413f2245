// The words for a unit's state: chosen here for every list and table, and never translated.
#pragma once

#include <cstdint>

#include "include/lmainte.h"
#include "src/model/unit_status.h"

namespace lmainte {

// The word for an installed unit, by the bits that say how it fares.
constexpr const char *condition_text(uint32_t status) {
  if ((status & LMAINTE_STATUS_FAULTED) != 0) return "Faulted";
  if ((status & LMAINTE_STATUS_DEGRADED) != 0) return "Degraded";
  return "Normal";
}

// The word for a unit with a flag byte: one of the two sources is enough, the status word of the maintenance or the
// flags.
constexpr const char *flagged_status_text(int32_t status, int32_t mainte_status, uint8_t flags) {
  if (!is_installed(static_cast<uint32_t>(status))) return "Not installed";
  auto condition = static_cast<uint32_t>(mainte_status);
  if ((flags & LMAINTE_FLAG_FAULTED) != 0) condition |= LMAINTE_STATUS_FAULTED;
  if ((flags & LMAINTE_FLAG_DEGRADED) != 0) condition |= LMAINTE_STATUS_DEGRADED;
  return condition_text(condition);
}

// A status word whose condition is taken from another word of the unit's record.
constexpr uint32_t with_condition_of(uint32_t status, uint32_t source) {
  constexpr uint32_t kCondition = LMAINTE_STATUS_FAULTED | LMAINTE_STATUS_DEGRADED;
  return (status & ~kCondition) | (source & kCondition);
}
constexpr uint32_t with_condition_of(int32_t status, int32_t source) {
  return with_condition_of(static_cast<uint32_t>(status), static_cast<uint32_t>(source));
}

// A status word of all ones says nothing of the unit.
inline constexpr uint32_t kUnknownStatus = 0xFFFFFFFF;

// The word for a unit by its status word alone, or `unknown` where it says nothing.
constexpr const char *status_text(uint32_t status, const char *unknown) {
  if (status == kUnknownStatus) return unknown;
  return is_installed(status) ? condition_text(status) : "Not installed";
}

// A null text, as the target's formatting routine prints it.
inline constexpr char kNullText[] = "(null)";

}  // namespace lmainte
