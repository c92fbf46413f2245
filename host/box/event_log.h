// The log: events in an append-only file, each durable before the call that saves it returns.
// The format of the file is in event_log.cpp: Record.
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <vector>

namespace box {

struct LogEntry {
  std::int64_t time_ns;
  std::uint32_t pid;
  std::uint32_t head;
  std::array<std::uint8_t, 48> event;  // big-endian
};

class EventLog {
 public:
  // Appends one entry and waits until it is on disk; whole also when several processes append. False on failure, errno set.
  static bool append(const std::filesystem::path &file, const LogEntry &entry) noexcept;

  // The entries, oldest first; none where nothing was ever saved. What a crash left of an unfinished entry is left out.
  // Throws.
  static std::vector<LogEntry> read(const std::filesystem::path &file);
};

}  // namespace box
