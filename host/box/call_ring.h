// What passes between commands and the platform of their box: each call of the platform with what it came to, and each start of a
// command or a control program. A ring beside the trace, appended as that is; the trace itself holds the library's records only.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "host/box/call.h"
#include "host/box/record_ring.h"

namespace box {

struct CallEntry : Call {
  std::uint64_t number = 0;  // counted from 0 since the ring was made
  std::string whole_text;    // as far as the ring keeps it
  std::size_t text_size = 0;

  bool is_cut() const { return whole_text.size() < text_size; }
};

struct CallForm {
  static constexpr std::uint64_t kMagic = 0x314C4C4143584253;  // "SBXCALL1"
  static constexpr std::uint32_t kSlots = 8192;
  static constexpr std::size_t kBodyWords = 14;
  static constexpr const char *kName = "calls";
};

class CallRing {
 public:
  static constexpr std::uint32_t kSlots = CallForm::kSlots;
  static constexpr std::size_t kLongestText = kLongestCallText;

  // Makes an empty ring in `file`, in place of what is there. Throws.
  static void create(const std::filesystem::path &file);

  // Throws where it is damaged: no record can be kept there.
  static void check(const std::filesystem::path &file);

  // Maps the ring, for the life of the process. Uses system calls only, and keeps errno. False when the file is missing or is no ring.
  bool map(const char *file) noexcept;

  // Appends a record, as the trace does. Allocates nothing, calls nothing of the system, and keeps errno. False when not mapped.
  bool append(const Call &call) noexcept;

  // A number for a command that begins, counted from 1. 0 when not mapped.
  std::uint32_t number_of_next_command() noexcept;

  // The records, oldest first. Throws.
  static std::vector<CallEntry> read(const std::filesystem::path &file);
  static std::vector<CallEntry> read_last(const std::filesystem::path &file, std::uint32_t count);

 private:
  RecordRing<CallForm> ring_;
};

// Now, by the clock that the records have.
std::int64_t call_time() noexcept;

}  // namespace box
