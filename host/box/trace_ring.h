// The trace: a ring of records in a mapped file, appended without a lock by all processes of a box.
// The format of the file is in trace_ring.cpp: Head and Slot.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <filesystem>
#include <vector>

namespace box {

struct TraceEntry {
  std::uint64_t number;  // counted from 0 since the ring was made
  std::int64_t time_ns;  // wall clock
  std::uint32_t module, level, kind, event;
  std::uint32_t word_count;
  std::array<std::uint32_t, 4> words;
};

class TraceRing {
 public:
  static constexpr std::uint32_t kSlots = 65536;

  // Makes an empty ring in `file`, in place of what is there. Throws.
  static void create(const std::filesystem::path &file);

  // Maps the ring, for the life of the process. Uses system calls only: may be called in a signal handler and between
  // fork and execve. Keeps errno. False when the file is missing or is no ring. Who calls survive_lost_mappings() before
  // outlives a file that is cut short meanwhile.
  bool map(const char *file) noexcept;

  // Appends a record; the oldest is overwritten when the ring is full. As safe as map. False when not mapped.
  bool append(std::uint32_t module, std::uint32_t level, std::uint32_t kind, std::uint32_t event,
              const std::uint32_t *words, std::uint32_t word_count) noexcept;

  // The records, oldest first. A record whose writer died while it wrote it is left out. Throws.
  static std::vector<TraceEntry> read(const std::filesystem::path &file);

  // The last so many of them, read without the others. Throws.
  static std::vector<TraceEntry> read_last(const std::filesystem::path &file, std::uint32_t count);

  // Where the file says how many records were ever begun: who looks there again knows whether there are new ones.
  static constexpr std::size_t kCountAt = 16;

 private:
  std::atomic<void *> memory_ = nullptr;
};

}  // namespace box
