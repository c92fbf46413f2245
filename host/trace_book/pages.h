// The pages of all rooms, looked up by an event's code.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "host/trace_book/phrases.h"

namespace trace_book {

// A room of the library: its folder, its functions that record events, and the code of the first event of each.
struct Room {
  const char *folder;
  Functions (*functions)();
  std::span<const Code> entries;
};
std::span<const Room> rooms();

// Every function of the library that records events, room by room.
const std::vector<Function> &all_functions();

// The code of an event. None for an event that cannot be the library's.
std::optional<Code> code_of(std::uint32_t event);

// Where a code stands: in a block, and there at a point or an error.
struct BlockNumber {
  std::uint32_t block;
  std::uint32_t number;
};
BlockNumber block_number_of(Code code);

// The function in whose block a code is. Of two functions in a block it is the one whose points begin last before the
// code. Null where no function has the block.
const Function *function_of(Code code);

const Event *event_of(const Function &function, Code code);

}  // namespace trace_book
