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
  Message text;
};

inline constexpr LineFormat<Number, Text, Text> kListLine = {
    // TRANSLATORS: a unit in a list: its number, its location, its state. The columns stand under the heads of the
    // maintenance command's own, and the state is a fixed word: keep the widths.
    message("%2d. %-16s%s\n")};

inline constexpr LineFormat<Number, Text, Text, Text, Text, Text, Text, Text> kBoardLine = {
    // TRANSLATORS: a system board in a list: its number, its location, four domains, its power, its state.
    message("%2d. %-13s %5s %5s %5s %5s  %-4s  %s\n")};

inline constexpr LineFormat<Number, Text, Number, Text> kSlotLine = {
    // TRANSLATORS: a PCI slot in a list: its number in the list, its location, its number in the unit, its power.
    message("%2d. %-21s%-10d%s\n")};

using StatusFormat = LineFormat<Text, Text>;

inline constexpr StatusFormat kStatusLine = {
    // TRANSLATORS: a unit in a status table: its location, its state.
    message("%-14s%s\n")};

inline constexpr StatusFormat kPartLine = {
    // TRANSLATORS: a module of the unit above it in a status table: its location, its state.
    message("    %-10s%s\n")};

}  // namespace lmainte
