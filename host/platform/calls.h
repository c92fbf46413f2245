// What the platform keeps of each call beside the library's trace: spbox shows both together.
#pragma once

#include <cstdint>
#include <string_view>

#include "host/box/call.h"

namespace platform {

// How many records the trace has had; 0 as long as this process has not looked for it. The first record looks for it, too.
std::uint64_t records_of_the_trace() noexcept;
void look_for_the_trace() noexcept;

// A call that begins now, and its end. Who stands for the platform of a process elsewhere keeps that process's calls.
box::Call begun_call() noexcept;
void end_call(box::Call &call) noexcept;

// The process whose calls are kept: this one, or the one that it stands for.
void stand_for(pid_t process) noexcept;
pid_t kept_process() noexcept;

// A command begins; `words` is what it is called. False where the box keeps no calls.
bool command_begins(std::string_view words, pid_t parent) noexcept;
void command_ends(std::string_view words, int status) noexcept;

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
