// What the platform keeps of each call beside the library's trace: spbox shows both together.
#pragma once

#include <cstdint>
#include <string_view>

#include "host/box/call_ring.h"

namespace platform {

// How many records the trace has had; 0 as long as this process has not looked for it. The first record looks for it, too.
std::uint64_t records_of_the_trace() noexcept;
void look_for_the_trace() noexcept;

// A call of the platform from here to its end. Allocates nothing, calls nothing of the system once the ring is there, and keeps errno.
class KeptCall {
 public:
  explicit KeptCall(box::CallKind kind, std::string_view text = {}, std::uint32_t first = 0,
                    std::uint32_t second = 0) noexcept;

  void set_second(std::uint32_t second) noexcept { call_.second = second; }
  void set_first(std::uint32_t first) noexcept { call_.first = first; }
  void set_text(std::string_view text) noexcept { call_.text = text; }

  // Keeps it, and gives back its result.
  std::int32_t ends_with(std::int32_t result) noexcept;

 private:
  box::Call call_;
};

// The call that is under way went as somebody had said before.
void call_deviates() noexcept;

}  // namespace platform
