// The table of a driver, a program that calls the library in a box: its functions by name, each with the number of words
// that it takes from the command line.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <span>

#include "tests/end_to_end/signals.h"

namespace end_to_end {

struct Row {
  const char *name;
  int words;
  int32_t (*call)(char **words);
};

// The row that a command line names, or null; says so then.
inline const Row *row_of(std::span<const Row> rows, int argc, char **argv) {
  for (const Row &row : rows) {
    if (argc == row.words + 2 && std::strcmp(argv[1], row.name) == 0) return &row;
  }
  std::fprintf(stderr, "%s: unknown function, or wrong number of arguments\n", argv[0]);
  return nullptr;
}

// What a driver's main does: calls the function and prints its result, which says whether it is what a test expects. Gives
// the driver's exit status: 1 where there is no such function, and where it left the signals changed.
inline int call_and_print(std::span<const Row> rows, int argc, char **argv) {
  const Row *row = row_of(rows, argc, argv);
  if (row == nullptr) return 1;
  const Signals before = signals_of("self");
  std::printf("result %d\n", row->call(argv + 2));
  if (signals_of("self") == before) return 0;
  std::fprintf(stderr, "%s: %s left the signals changed\n", argv[0], row->name);
  return 1;
}

}  // namespace end_to_end
