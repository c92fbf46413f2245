// What the library's functions record: the trace book's data, a table of functions for each room of the library.
#pragma once

#include <cstdint>
#include <span>

namespace spbox {

// One event of a function: what happened, and what its values are. The meaning of a value also says how it is shown.
struct Phrase {
  std::uint32_t number;
  bool is_error;
  const char *text;
  const char *first;
  const char *second;
};

constexpr Phrase point(std::uint32_t number, const char *text, const char *first = nullptr,
                       const char *second = nullptr) {
  return {number, false, text, first, second};
}
constexpr Phrase error(std::uint32_t number, const char *text, const char *first = nullptr,
                       const char *second = nullptr) {
  return {number, true, text, first, second};
}

// Phrases that several functions share, each from a number of its own on.
struct Shared {
  std::span<const Phrase> phrases;
  std::uint32_t from = 0;
};

enum class Space : std::uint32_t { kPlain = 0, kSecond = 0x8000 };

// A function, or an internal step of one. Entry and exit are the first two points of every function.
struct Function {
  const char *name;
  Space space;
  std::uint32_t block;
  std::span<const Phrase> own = {};
  Shared shared = {};
  std::uint32_t first = 0;  // where its points begin in a block of two functions
};

using Functions = std::span<const Function>;

Functions frame_functions();
Functions db_functions();
Functions model_functions();
Functions inventory_functions();
Functions ops_functions();
Functions dialogue_functions();
Functions state_functions();

}  // namespace spbox
