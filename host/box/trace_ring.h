// The trace: a ring of records in a mapped file, appended without a lock by all processes of a box.
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <vector>

#include "host/box/record_ring.h"

namespace box {

struct TraceEntry {
  std::uint64_t number;  // counted from 0 since the ring was made
  std::int64_t time_ns;  // wall clock
  std::uint32_t module, level, kind, event;
  std::uint32_t word_count;
  std::array<std::uint32_t, 4> words;
};

struct TraceForm {
  static constexpr std::uint64_t kMagic = 0x31474E4952584253;  // "SBXRING1"
  static constexpr std::uint32_t kSlots = 65536;
  static constexpr std::size_t kBodyWords = 6;
  static constexpr const char *kName = "trace";
};

class TraceRing {
 public:
  static constexpr std::uint32_t kSlots = TraceForm::kSlots;

  // Makes an empty ring in `file`, in place of what is there. Throws.
  static void create(const std::filesystem::path &file);

  // Throws where it is damaged: no record can be kept there.
  static void check(const std::filesystem::path &file);

  // Maps the ring, for the life of the process. Uses system calls only: may be called in a signal handler and between
  // fork and execve. Keeps errno. False when the file is missing or is no ring. Who calls survive_lost_mappings() before
  // outlives a file that is cut short meanwhile.
  bool map(const char *file) noexcept;

  // Appends a record; the oldest is overwritten when the ring is full. As safe as map. False when not mapped.
  bool append(std::uint32_t module, std::uint32_t level, std::uint32_t kind, std::uint32_t event,
              const std::uint32_t *words, std::uint32_t word_count) noexcept;

  // How many records were ever begun: the number of the next one. 0 when not mapped.
  std::uint64_t next() noexcept;

  // The records, oldest first. A record whose writer died while it wrote it is left out. Throws.
  static std::vector<TraceEntry> read(const std::filesystem::path &file);

  // The last so many of them, read without the others. Throws.
  static std::vector<TraceEntry> read_last(const std::filesystem::path &file, std::uint32_t count);

  // Where the file says how many records were ever begun: who looks there again knows whether there are new ones.
  static constexpr std::size_t kCountAt = offsetof(RingHead, next);

 private:
  RecordRing<TraceForm> ring_;
};
static_assert(TraceRing::kCountAt == 16);

}  // namespace box
