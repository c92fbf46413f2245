// The line from a program on another machine to the platform of its box.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "host/wire/message.h"

namespace target {

// Sends a request and waits for its answer. False where there is none: the platform is gone, or says what makes no sense. Allocates
// nothing and keeps errno. May be called in a signal handler, and between fork and execve; a signal that comes meanwhile is handled as
// it would be in a call of the platform on a workstation.
bool exchange(wire::Writer &request, std::span<std::uint8_t> room, wire::Reader &answer) noexcept;

// A request whose answer is short: its fields, and then those of the answer.
class Request {
 public:
  explicit Request(wire::Kind kind) noexcept : fields(room_, kind) {}

  // What was asked for; false where no answer came, or not with these fields and no others: `read` takes them.
  template <typename Read>
  bool answered(Read read) noexcept {
    wire::Reader answer;
    if (!exchange(fields, answer_room_, answer)) return false;
    read(answer);
    return answer.is_whole();
  }

 private:
  std::array<std::uint8_t, wire::kLongestShort> room_, answer_room_;

 public:
  wire::Writer fields;
};

// Whether this is a signal handler that came in between a request and its answer: what it opens is closed at once.
bool is_between() noexcept;

// Which databases this process has open, for its children: to them they are closed.
void note_open(std::uint32_t db_id, bool is_open) noexcept;

}  // namespace target
