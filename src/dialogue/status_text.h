// The words for a unit's state: chosen here for every list and table, and never translated.
#pragma once

#include <cstdint>

#include "include/lmainte.h"
#include "src/model/unit_status.h"

namespace lmainte {

inline constexpr uint32_t kConditionBits = LMAINTE_STATUS_FAULTED | LMAINTE_STATUS_DEGRADED;
inline constexpr char kNotInstalled[] = "Not installed";

// The word for an installed unit, by the bits that say how it fares.
constexpr const char *condition_text(uint32_t condition) {
  if ((condition & LMAINTE_STATUS_FAULTED) != 0) return "Faulted";
  if ((condition & LMAINTE_STATUS_DEGRADED) != 0) return "Degraded";
  return "Normal";
}

// The word for a unit by its status word and another word for how it fares.
constexpr const char *state_text(int32_t status, uint32_t condition) {
  return is_installed(static_cast<uint32_t>(status)) ? condition_text(condition) : kNotInstalled;
}

// A unit with a flag byte is faulted or degraded where either says so, the byte or the maintenance status.
constexpr const char *state_text(const PsuData &psu) {
  return state_text(psu.status, merged_status(static_cast<uint32_t>(psu.mainte_status), psu.flags));
}
constexpr const char *state_text(const FantrayData &tray) {
  return state_text(tray.status, merged_status(static_cast<uint32_t>(tray.mainte_status), tray.flags));
}

// The status word of the other kinds, with the condition bits from where each kind has them.
constexpr uint32_t with_condition(int32_t status, int32_t source) {
  return (static_cast<uint32_t>(status) & ~kConditionBits) | (static_cast<uint32_t>(source) & kConditionBits);
}
constexpr uint32_t whole_status(const CmuData &cmu) {
  return with_condition(cmu.status, cmu.mainte_status);
}
constexpr uint32_t whole_status(const IouData &iou) {
  return with_condition(iou.status, iou.parts_status);
}
constexpr uint32_t whole_status(const UnitData &module) {
  return with_condition(module.status, module.mainte_status);
}
constexpr uint32_t whole_status(const BpUnitData &ddc) {
  return with_condition(ddc.status, ddc.mainte_status);
}

// A whole status of all ones says nothing of the unit.
inline constexpr uint32_t kUnknownStatus = 0xFFFFFFFF;

// The word for a unit by its whole status, or `unknown` where it says nothing.
constexpr const char *state_text(uint32_t whole, const char *unknown) {
  if (whole == kUnknownStatus) return unknown;
  return is_installed(whole) ? condition_text(whole) : kNotInstalled;
}

// An unknown DDC unit has always been shown as the target's formatting routine prints a null text.
constexpr const char *state_text(const BpUnitData &ddc) {
  return state_text(whole_status(ddc), "(null)");
}

}  // namespace lmainte
