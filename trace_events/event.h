// How the library's trace events are numbered, and what a function's entry in this catalogue consists of.
//
// A room of the library has a header here with a struct for each of its functions, and for each internal step that
// records events of its own:
//
//   // lmainte_detach_fru
//   struct DetachFru : PlainBlock<Ops, 0x032> {
//     enum Point : Code { kUnit = point(2), kEnded };
//     enum Error : Code { kNoTimeLimit = error(1), kNoUnit, kRefused };
//   };
//
// The library writes an event by its name, and the trace book of the host platform has the words for it under the same
// name. The catalogue itself has numbers only: no text of it gets into the library.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>

namespace trace_events {

// An event is 0x110C0000 + its code.
using Code = std::uint16_t;

inline constexpr std::uint32_t kEventBase = 0x110C0000;
inline constexpr Code kSecondSpace = 0x8000;
inline constexpr Code kPlainError = 0x1000;
inline constexpr Code kSecondError = 0x3000;  // of the second space
inline constexpr Code kEventsOfABlock = 16;

constexpr bool is_error(Code code) {
  return (code & kPlainError) != 0;
}

// The functions of a room, each once.
template <class... Functions>
struct Room {
  template <class Function>
  static constexpr bool kHas = (std::same_as<Function, Functions> || ...);
};

// What every function has: its room, and the codes of its block, which begin at `First`. Of two functions in one block the
// second one begins later.
template <class OfRoom, Code First, Code ErrorBits>
struct Block {
  using Home = OfRoom;

  static constexpr Code point(Code number) { return static_cast<Code>(First + number); }
  static constexpr Code error(Code number) { return static_cast<Code>(First + ErrorBits + number); }

  enum Bound : Code { kEntry = First, kExit };
};

template <class OfRoom, Code Number, Code First = 0>
using PlainBlock = Block<OfRoom, Number * kEventsOfABlock + First, kPlainError>;

template <class OfRoom, Code Number, Code First = 0>
using SecondBlock = Block<OfRoom, kSecondSpace + Number * kEventsOfABlock + First, kSecondError>;

}  // namespace trace_events
