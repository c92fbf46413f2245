// Room for the files of a procedure.
#pragma once

#include <sys/statvfs.h>

#include <cstdint>

namespace procedure {

// The library shows what it could write: a list that /tmp had no room for is cut short, and nobody knows.
inline bool has_room_for_lists() {
  constexpr uint64_t kRoom = 65536;
  struct statvfs tmp {};
  return statvfs("/tmp", &tmp) == 0 && uint64_t{tmp.f_bavail} * tmp.f_frsize >= kRoom;
}

}  // namespace procedure
