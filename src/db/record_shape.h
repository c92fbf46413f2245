// A kind of record: the pattern of its name and its size in bytes. A record written by another level of the firmware has
// another size, and is not read.
#pragma once

#include <cstdint>

namespace lmainte {

struct RecordShape {
  const char *name;
  int32_t size;
};

// The records that are read in runs as well as by their units.
inline constexpr RecordShape kPsuRecord = {"current_psu_info", 3360};
inline constexpr RecordShape kFantrayRecord = {"current_fantray_info", 6912};
inline constexpr RecordShape kBp32Record = {"current_bp32_info", 1008};

inline constexpr RecordShape kSystemRecord = {"current_system_info", 176};

// The large FRU records have one size.
inline constexpr int32_t kIdentitySize = 8192;

}  // namespace lmainte
