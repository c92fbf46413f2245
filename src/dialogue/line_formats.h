// The lines that units have in lists and status tables: their columns, and their names in the message catalogue.
#pragma once

#include <cstdint>

#include "src/dialogue/catalogue.h"

namespace lmainte {

using Number = int32_t;
using Text = const char *;

// A format with the types of the columns that it prints.
template <class... Columns>
struct LineFormat {
  const char *text;
};

// TRANSLATORS: a unit in a list: its number, its location, its state. The columns stand under the heads of the
// maintenance command's own, and the state is a fixed word: keep the widths.
inline constexpr LineFormat<Number, Text, Text> kListLine = {message("%2d. %-16s%s\n")};

// TRANSLATORS: a system board in a list: its number, its location, four domains, its power, its state.
inline constexpr LineFormat<Number, Text, Text, Text, Text, Text, Text, Text> kBoardLine = {
    message("%2d. %-13s %5s %5s %5s %5s  %-4s  %s\n")};

// TRANSLATORS: a PCI slot in a list: its number in the list, its location, its number in the unit, its power.
inline constexpr LineFormat<Number, Text, Number, Text> kSlotLine = {message("%2d. %-21s%-10d%s\n")};

// TRANSLATORS: a unit in a status table: its location, its state.
inline constexpr LineFormat<Text, Text> kStatusLine = {message("%-14s%s\n")};

// TRANSLATORS: a module of the unit above it in a status table: its location, its state.
inline constexpr LineFormat<Text, Text> kPartLine = {message("    %-10s%s\n")};

}  // namespace lmainte
