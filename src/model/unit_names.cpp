// The names of units on each model, and the numbers that a unit has by its name.

#include "include/lmainte.h"

#include <cstddef>
#include <string_view>

namespace {

// The number behind the "#" of a name; 0 for a name without one.
constexpr uint32_t number_in(const char *name) {
  while (*name != '\0' && *name != '#') ++name;
  uint32_t number = 0;
  for (; *name != '\0'; ++name)
    if (*name != '#') number = number * 10 + static_cast<uint32_t>(*name - '0');
  return number;
}

constexpr bool are_distinct(const lmainte_unit_name *table, size_t names) {
  for (size_t i = 0; i < names; ++i)
    for (size_t k = 0; k < i; ++k)
      if (std::string_view(table[i].name) == table[k].name) return false;
  return true;
}

// Every table names its units once, counts their records from 0 in the order of its rows, and ends with an empty name.
// The larger mid-range model counts its memory anew from the fifth board on: its boards 4 to 7 take the numbers of
// boards 0 to 3.
template <size_t Rows>
constexpr bool counts_its_rows(const lmainte_unit_name (&table)[Rows], size_t names, size_t period) {
  if (Rows != names + 1 || table[names].name[0] != '\0') return false;
  for (size_t i = 0; i < names; ++i)
    if (table[i].name[0] == '\0' || table[i].id_fru != i % period) return false;
  return are_distinct(table, names);
}

// A unit's own number is the one in its name.
template <size_t Rows>
constexpr bool numbers_units(const lmainte_unit_name (&table)[Rows], size_t names) {
  for (size_t i = 0; i < names; ++i)
    if (table[i].id_pos != number_in(table[i].name)) return false;
  return counts_its_rows(table, names, 256);
}

// A memory module's own number is its place in the records: its name is that of its slot.
template <size_t Rows>
constexpr bool places_memory(const lmainte_unit_name (&table)[Rows], size_t names) {
  for (size_t i = 0; i < names; ++i)
    if (table[i].id_pos != table[i].id_fru) return false;
  return counts_its_rows(table, names, 32);
}

}  // namespace

constexpr lmainte_unit_name convert_unit_no_qa_psu[] = {
    {"PSU#0", 0, 0},
    {"PSU#1", 1, 1},
    {"", 0, 0},
};
static_assert(numbers_units(convert_unit_no_qa_psu, 2));

constexpr lmainte_unit_name convert_unit_no_qb1_psu[] = {
    {"PSU#0", 0, 0},
    {"PSU#1", 1, 1},
    {"", 0, 0},
};
static_assert(numbers_units(convert_unit_no_qb1_psu, 2));

constexpr lmainte_unit_name convert_unit_no_qb2_psu[] = {
    {"PSU#0", 0, 0}, {"PSU#1", 1, 1}, {"PSU#2", 2, 2}, {"PSU#3", 3, 3}, {"", 0, 0},
};
static_assert(numbers_units(convert_unit_no_qb2_psu, 4));

constexpr lmainte_unit_name convert_unit_no_qe1_psu[] = {
    {"PSU#0", 0, 0},    {"PSU#1", 1, 1},    {"PSU#2", 2, 2},    {"PSU#3", 3, 3},    {"PSU#4", 4, 4},
    {"PSU#5", 5, 5},    {"PSU#6", 6, 6},    {"PSU#7", 7, 7},    {"PSU#8", 8, 8},    {"PSU#40", 9, 40},
    {"PSU#41", 10, 41}, {"PSU#42", 11, 42}, {"PSU#43", 12, 43}, {"PSU#44", 13, 44}, {"PSU#45", 14, 45},
    {"PSU#46", 15, 46}, {"PSU#47", 16, 47}, {"PSU#48", 17, 48}, {"", 0, 0},
};
static_assert(numbers_units(convert_unit_no_qe1_psu, 18));

constexpr lmainte_unit_name convert_unit_no_qe2_psu[] = {
    {"PSU#0", 0, 0},    {"PSU#1", 1, 1},    {"PSU#2", 2, 2},    {"PSU#3", 3, 3},    {"PSU#4", 4, 4},
    {"PSU#5", 5, 5},    {"PSU#6", 6, 6},    {"PSU#7", 7, 7},    {"PSU#8", 8, 8},    {"PSU#9", 9, 9},
    {"PSU#10", 10, 10}, {"PSU#11", 11, 11}, {"PSU#12", 12, 12}, {"PSU#13", 13, 13}, {"PSU#14", 14, 14},
    {"PSU#40", 15, 40}, {"PSU#41", 16, 41}, {"PSU#42", 17, 42}, {"PSU#43", 18, 43}, {"PSU#44", 19, 44},
    {"PSU#45", 20, 45}, {"PSU#46", 21, 46}, {"PSU#47", 22, 47}, {"PSU#48", 23, 48}, {"PSU#49", 24, 49},
    {"PSU#50", 25, 50}, {"PSU#51", 26, 51}, {"PSU#52", 27, 52}, {"PSU#53", 28, 53}, {"PSU#54", 29, 54},
    {"", 0, 0},
};
static_assert(numbers_units(convert_unit_no_qe2_psu, 30));

constexpr lmainte_unit_name convert_unit_no_qe3_psu[] = {
    {"PSU#0", 0, 0},    {"PSU#1", 1, 1},    {"PSU#2", 2, 2},    {"PSU#3", 3, 3},    {"PSU#4", 4, 4},
    {"PSU#5", 5, 5},    {"PSU#6", 6, 6},    {"PSU#7", 7, 7},    {"PSU#8", 8, 8},    {"PSU#9", 9, 9},
    {"PSU#10", 10, 10}, {"PSU#11", 11, 11}, {"PSU#12", 12, 12}, {"PSU#13", 13, 13}, {"PSU#14", 14, 14},
    {"PSU#20", 15, 20}, {"PSU#21", 16, 21}, {"PSU#22", 17, 22}, {"PSU#23", 18, 23}, {"PSU#24", 19, 24},
    {"PSU#25", 20, 25}, {"PSU#26", 21, 26}, {"PSU#27", 22, 27}, {"PSU#28", 23, 28}, {"PSU#29", 24, 29},
    {"PSU#30", 25, 30}, {"PSU#31", 26, 31}, {"PSU#32", 27, 32}, {"PSU#33", 28, 33}, {"PSU#34", 29, 34},
    {"PSU#40", 30, 40}, {"PSU#41", 31, 41}, {"PSU#42", 32, 42}, {"PSU#43", 33, 43}, {"PSU#44", 34, 44},
    {"PSU#45", 35, 45}, {"PSU#46", 36, 46}, {"PSU#47", 37, 47}, {"PSU#48", 38, 48}, {"PSU#49", 39, 49},
    {"PSU#50", 40, 50}, {"PSU#51", 41, 51}, {"PSU#52", 42, 52}, {"PSU#53", 43, 53}, {"PSU#54", 44, 54},
    {"PSU#60", 45, 60}, {"PSU#61", 46, 61}, {"PSU#62", 47, 62}, {"PSU#63", 48, 63}, {"PSU#64", 49, 64},
    {"PSU#65", 50, 65}, {"PSU#66", 51, 66}, {"PSU#67", 52, 67}, {"PSU#68", 53, 68}, {"PSU#69", 54, 69},
    {"PSU#70", 55, 70}, {"PSU#71", 56, 71}, {"PSU#72", 57, 72}, {"PSU#73", 58, 73}, {"PSU#74", 59, 74},
    {"", 0, 0},
};
static_assert(numbers_units(convert_unit_no_qe3_psu, 60));

constexpr lmainte_unit_name convert_unit_no_qa_fan[] = {
    {"FAN_A#0", 0, 0},
    {"FAN_A#1", 1, 1},
    {"", 0, 0},
};
static_assert(numbers_units(convert_unit_no_qa_fan, 2));

constexpr lmainte_unit_name convert_unit_no_qb1_fan[] = {
    {"FAN_A#0", 0, 0}, {"FAN_A#1", 1, 1}, {"FAN_B#0", 2, 0}, {"FAN_B#1", 3, 1}, {"", 0, 0},
};
static_assert(numbers_units(convert_unit_no_qb1_fan, 4));

constexpr lmainte_unit_name convert_unit_no_qb2_fan[] = {
    {"FAN_A#0", 0, 0}, {"FAN_A#1", 1, 1}, {"FAN_A#2", 2, 2}, {"FAN_A#3", 3, 3}, {"", 0, 0},
};
static_assert(numbers_units(convert_unit_no_qb2_fan, 4));

constexpr lmainte_unit_name convert_unit_no_qe1_fan[] = {
    {"FAN_B#0", 0, 0},  {"FAN_B#1", 1, 1},  {"FAN_A#0", 2, 0}, {"FAN_A#1", 3, 1}, {"FAN_A#2", 4, 2},
    {"FAN_A#3", 5, 3},  {"FAN_B#2", 6, 2},  {"FAN_B#3", 7, 3}, {"FAN_B#4", 8, 4}, {"FAN_B#5", 9, 5},
    {"FAN_B#6", 10, 6}, {"FAN_B#7", 11, 7}, {"", 0, 0},
};
static_assert(numbers_units(convert_unit_no_qe1_fan, 12));

constexpr lmainte_unit_name convert_unit_no_qe2_fan[] = {
    {"FAN_A#0", 0, 0},    {"FAN_A#1", 1, 1},    {"FAN_A#2", 2, 2},    {"FAN_A#3", 3, 3},    {"FAN_A#4", 4, 4},
    {"FAN_A#5", 5, 5},    {"FAN_A#6", 6, 6},    {"FAN_A#7", 7, 7},    {"FAN_A#8", 8, 8},    {"FAN_A#9", 9, 9},
    {"FAN_A#10", 10, 10}, {"FAN_A#11", 11, 11}, {"FAN_A#12", 12, 12}, {"FAN_A#13", 13, 13}, {"FAN_A#14", 14, 14},
    {"FAN_A#15", 15, 15}, {"", 0, 0},
};
static_assert(numbers_units(convert_unit_no_qe2_fan, 16));

constexpr lmainte_unit_name convert_unit_no_qe3_fan[] = {
    {"FAN_A#0", 0, 0},    {"FAN_A#1", 1, 1},    {"FAN_A#2", 2, 2},    {"FAN_A#3", 3, 3},    {"FAN_A#4", 4, 4},
    {"FAN_A#5", 5, 5},    {"FAN_A#6", 6, 6},    {"FAN_A#7", 7, 7},    {"FAN_A#8", 8, 8},    {"FAN_A#9", 9, 9},
    {"FAN_A#10", 10, 10}, {"FAN_A#11", 11, 11}, {"FAN_A#12", 12, 12}, {"FAN_A#13", 13, 13}, {"FAN_A#14", 14, 14},
    {"FAN_A#15", 15, 15}, {"FAN_A#20", 16, 20}, {"FAN_A#21", 17, 21}, {"FAN_A#22", 18, 22}, {"FAN_A#23", 19, 23},
    {"FAN_A#24", 20, 24}, {"FAN_A#25", 21, 25}, {"FAN_A#26", 22, 26}, {"FAN_A#27", 23, 27}, {"FAN_A#28", 24, 28},
    {"FAN_A#29", 25, 29}, {"FAN_A#30", 26, 30}, {"FAN_A#31", 27, 31}, {"FAN_A#32", 28, 32}, {"FAN_A#33", 29, 33},
    {"FAN_A#34", 30, 34}, {"FAN_A#35", 31, 35}, {"", 0, 0},
};
static_assert(numbers_units(convert_unit_no_qe3_fan, 32));

constexpr lmainte_unit_name convert_unit_no_qa_mem[] = {
    {"MEM#3A", 0, 0}, {"MEM#2A", 1, 1}, {"MEM#3B", 2, 2}, {"MEM#2B", 3, 3}, {"MEM#1A", 4, 4},
    {"MEM#0A", 5, 5}, {"MEM#1B", 6, 6}, {"MEM#0B", 7, 7}, {"", 0, 0},
};
static_assert(places_memory(convert_unit_no_qa_mem, 8));

constexpr lmainte_unit_name convert_unit_no_qb1_mem[] = {
    {"MEMB#0/MEM#3A", 0, 0},   {"MEMB#0/MEM#2A", 1, 1},   {"MEMB#0/MEM#3B", 2, 2},
    {"MEMB#0/MEM#2B", 3, 3},   {"MEMB#0/MEM#1A", 4, 4},   {"MEMB#0/MEM#0A", 5, 5},
    {"MEMB#0/MEM#1B", 6, 6},   {"MEMB#0/MEM#0B", 7, 7},   {"MEMB#1/MEM#3A", 8, 8},
    {"MEMB#1/MEM#2A", 9, 9},   {"MEMB#1/MEM#3B", 10, 10}, {"MEMB#1/MEM#2B", 11, 11},
    {"MEMB#1/MEM#1A", 12, 12}, {"MEMB#1/MEM#0A", 13, 13}, {"MEMB#1/MEM#1B", 14, 14},
    {"MEMB#1/MEM#0B", 15, 15}, {"MEMB#2/MEM#3A", 16, 16}, {"MEMB#2/MEM#2A", 17, 17},
    {"MEMB#2/MEM#3B", 18, 18}, {"MEMB#2/MEM#2B", 19, 19}, {"MEMB#2/MEM#1A", 20, 20},
    {"MEMB#2/MEM#0A", 21, 21}, {"MEMB#2/MEM#1B", 22, 22}, {"MEMB#2/MEM#0B", 23, 23},
    {"MEMB#3/MEM#3A", 24, 24}, {"MEMB#3/MEM#2A", 25, 25}, {"MEMB#3/MEM#3B", 26, 26},
    {"MEMB#3/MEM#2B", 27, 27}, {"MEMB#3/MEM#1A", 28, 28}, {"MEMB#3/MEM#0A", 29, 29},
    {"MEMB#3/MEM#1B", 30, 30}, {"MEMB#3/MEM#0B", 31, 31}, {"", 0, 0},
};
static_assert(places_memory(convert_unit_no_qb1_mem, 32));

constexpr lmainte_unit_name convert_unit_no_qb2_mem[] = {
    {"MEMB#0/MEM#3A", 0, 0},
    {"MEMB#0/MEM#2A", 1, 1},
    {"MEMB#0/MEM#3B", 2, 2},
    {"MEMB#0/MEM#2B", 3, 3},
    {"MEMB#0/MEM#1A", 4, 4},
    {"MEMB#0/MEM#0A", 5, 5},
    {"MEMB#0/MEM#1B", 6, 6},
    {"MEMB#0/MEM#0B", 7, 7},
    {"MEMB#1/MEM#3A", 8, 8},
    {"MEMB#1/MEM#2A", 9, 9},
    {"MEMB#1/MEM#3B", 10, 10},
    {"MEMB#1/MEM#2B", 11, 11},
    {"MEMB#1/MEM#1A", 12, 12},
    {"MEMB#1/MEM#0A", 13, 13},
    {"MEMB#1/MEM#1B", 14, 14},
    {"MEMB#1/MEM#0B", 15, 15},
    {"MEMB#2/MEM#3A", 16, 16},
    {"MEMB#2/MEM#2A", 17, 17},
    {"MEMB#2/MEM#3B", 18, 18},
    {"MEMB#2/MEM#2B", 19, 19},
    {"MEMB#2/MEM#1A", 20, 20},
    {"MEMB#2/MEM#0A", 21, 21},
    {"MEMB#2/MEM#1B", 22, 22},
    {"MEMB#2/MEM#0B", 23, 23},
    {"MEMB#3/MEM#3A", 24, 24},
    {"MEMB#3/MEM#2A", 25, 25},
    {"MEMB#3/MEM#3B", 26, 26},
    {"MEMB#3/MEM#2B", 27, 27},
    {"MEMB#3/MEM#1A", 28, 28},
    {"MEMB#3/MEM#0A", 29, 29},
    {"MEMB#3/MEM#1B", 30, 30},
    {"MEMB#3/MEM#0B", 31, 31},
    {"MEMB#4/MEM#3A", 0, 0},
    {"MEMB#4/MEM#2A", 1, 1},
    {"MEMB#4/MEM#3B", 2, 2},
    {"MEMB#4/MEM#2B", 3, 3},
    {"MEMB#4/MEM#1A", 4, 4},
    {"MEMB#4/MEM#0A", 5, 5},
    {"MEMB#4/MEM#1B", 6, 6},
    {"MEMB#4/MEM#0B", 7, 7},
    {"MEMB#5/MEM#3A", 8, 8},
    {"MEMB#5/MEM#2A", 9, 9},
    {"MEMB#5/MEM#3B", 10, 10},
    {"MEMB#5/MEM#2B", 11, 11},
    {"MEMB#5/MEM#1A", 12, 12},
    {"MEMB#5/MEM#0A", 13, 13},
    {"MEMB#5/MEM#1B", 14, 14},
    {"MEMB#5/MEM#0B", 15, 15},
    {"MEMB#6/MEM#3A", 16, 16},
    {"MEMB#6/MEM#2A", 17, 17},
    {"MEMB#6/MEM#3B", 18, 18},
    {"MEMB#6/MEM#2B", 19, 19},
    {"MEMB#6/MEM#1A", 20, 20},
    {"MEMB#6/MEM#0A", 21, 21},
    {"MEMB#6/MEM#1B", 22, 22},
    {"MEMB#6/MEM#0B", 23, 23},
    {"MEMB#7/MEM#3A", 24, 24},
    {"MEMB#7/MEM#2A", 25, 25},
    {"MEMB#7/MEM#3B", 26, 26},
    {"MEMB#7/MEM#2B", 27, 27},
    {"MEMB#7/MEM#1A", 28, 28},
    {"MEMB#7/MEM#0A", 29, 29},
    {"MEMB#7/MEM#1B", 30, 30},
    {"MEMB#7/MEM#0B", 31, 31},
    {"", 0, 0},
};
static_assert(places_memory(convert_unit_no_qb2_mem, 64));

constexpr lmainte_unit_name convert_unit_no_qe_mem[] = {
    {"MEM#03A", 0, 0},   {"MEM#02A", 1, 1},   {"MEM#03B", 2, 2},   {"MEM#02B", 3, 3},   {"MEM#13A", 4, 4},
    {"MEM#12A", 5, 5},   {"MEM#13B", 6, 6},   {"MEM#12B", 7, 7},   {"MEM#23A", 8, 8},   {"MEM#22A", 9, 9},
    {"MEM#23B", 10, 10}, {"MEM#22B", 11, 11}, {"MEM#33A", 12, 12}, {"MEM#32A", 13, 13}, {"MEM#33B", 14, 14},
    {"MEM#32B", 15, 15}, {"MEM#01A", 16, 16}, {"MEM#00A", 17, 17}, {"MEM#01B", 18, 18}, {"MEM#00B", 19, 19},
    {"MEM#11A", 20, 20}, {"MEM#10A", 21, 21}, {"MEM#11B", 22, 22}, {"MEM#10B", 23, 23}, {"MEM#21A", 24, 24},
    {"MEM#20A", 25, 25}, {"MEM#21B", 26, 26}, {"MEM#20B", 27, 27}, {"MEM#31A", 28, 28}, {"MEM#30A", 29, 29},
    {"MEM#31B", 30, 30}, {"MEM#30B", 31, 31}, {"", 0, 0},
};
static_assert(places_memory(convert_unit_no_qe_mem, 32));

constexpr lmainte_unit_name convert_unit_no_qa_fanbp[] = {
    {"FANBP_B", 0, 0},
    {"", 0, 0},
};
static_assert(numbers_units(convert_unit_no_qa_fanbp, 1));

constexpr lmainte_unit_name convert_unit_no_qb1_fanbp[] = {
    {"FANBP_B", 0, 0},
    {"", 0, 0},
};
static_assert(numbers_units(convert_unit_no_qb1_fanbp, 1));

constexpr lmainte_unit_name convert_unit_no_qb2_fanbp[] = {
    {"FANBP_C", 0, 0},
    {"", 0, 0},
};
static_assert(numbers_units(convert_unit_no_qb2_fanbp, 1));

constexpr lmainte_unit_name convert_unit_no_qe1_fanbp[] = {
    {"FANBP_C#0", 0, 0},
    {"FANBP_C#1", 1, 1},
    {"", 0, 0},
};
static_assert(numbers_units(convert_unit_no_qe1_fanbp, 2));

constexpr lmainte_unit_name convert_unit_no_qe2_fanbp[] = {
    {"FANBP_A#0", 0, 0},
    {"FANBP_B#0", 1, 0},
    {"", 0, 0},
};
static_assert(numbers_units(convert_unit_no_qe2_fanbp, 2));

constexpr lmainte_unit_name convert_unit_no_qe3_fanbp[] = {
    {"FANBP_A#0", 0, 0}, {"FANBP_B#0", 1, 0}, {"FANBP_A#1", 2, 1}, {"FANBP_B#1", 3, 1}, {"", 0, 0},
};
static_assert(numbers_units(convert_unit_no_qe3_fanbp, 4));
