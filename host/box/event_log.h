// The log: events in an append-only file, each durable before the call that saves it returns.
// The format of the file is in event_log.cpp: Record.
#pragma once

#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <vector>

#include "host/include/lmainte_host.h"

namespace box {

using Event = std::span<const std::uint8_t, LMAINTE_HOST_EVENT_SIZE>;  // big-endian

struct LogEntry {
  std::int64_t time_ns;
  std::uint32_t pid;
  std::uint32_t head;
  std::array<std::uint8_t, LMAINTE_HOST_EVENT_SIZE> event;
};

class EventLog {
 public:
  // Appends one entry and waits until it is on disk; whole also when several processes append. False on failure, errno set.
  static bool append(const std::filesystem::path &file, const LogEntry &entry) noexcept;

  // The same for an event of this process or another one, now.
  static bool append(const std::filesystem::path &file, std::uint32_t head, Event event,
                     pid_t process = getpid()) noexcept;

  // Throws where something else is in its place: no entry can be saved there. A file that is gone is made by the next entry.
  static void check(const std::filesystem::path &file);

  // What lies between whole entries and is none: an entry with a changed byte, or what a crash left of one.
  struct Damage {
    std::size_t places = 0, bytes = 0;
  };

  // The whole entries, oldest first; none where nothing was ever saved. Throws.
  static std::vector<LogEntry> read(const std::filesystem::path &file, Damage *damage = nullptr);
};

}  // namespace box
