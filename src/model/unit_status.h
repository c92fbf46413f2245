// The status word of a unit and the flag byte that some kinds of unit have beside it.
#pragma once

#include <cstdint>

#include "include/lmainte.h"

namespace lmainte {

constexpr bool is_installed(uint32_t status) {
  return (status & LMAINTE_STATUS_INSTALLED) != 0;
}
// The same of a status word in the caller's records, where it is signed.
constexpr bool is_installed(int32_t status) {
  return is_installed(static_cast<uint32_t>(status));
}

// The flag byte merged into the status word: faulted before degraded. Bits of the status word stay.
constexpr uint32_t merged_status(uint32_t status, uint8_t flags) {
  if ((flags & LMAINTE_FLAG_FAULTED) != 0) return status | LMAINTE_STATUS_FAULTED;
  if ((flags & LMAINTE_FLAG_DEGRADED) != 0) return status | LMAINTE_STATUS_DEGRADED;
  return status;
}

}  // namespace lmainte
