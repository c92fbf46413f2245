// The places of units on each model: the pattern of a location path, its type codes, its limits.

#include "include/lmainte.h"

#include <cstddef>
#include <string_view>

namespace {

// A pattern has one to six parts, none of them empty, and every part has a limit.
constexpr bool is_location(const lmainte_unit_code &row) {
  const std::string_view pattern = row.pattern;
  if (pattern.empty() || pattern.front() != '/' || pattern.back() == '/') return false;
  size_t parts = 0;
  for (size_t i = 0; i < pattern.size(); ++i) {
    if (pattern[i] != '/') continue;
    if (pattern[i + 1] == '/' || parts == sizeof row.max || row.max[parts] == 0) return false;
    ++parts;
  }
  return row.type_pos != 0;
}

// Every table lists its locations once and ends with an empty pattern.
template <size_t Rows>
constexpr bool ends_after(const lmainte_unit_code (&table)[Rows], size_t patterns) {
  if (Rows != patterns + 1 || table[patterns].pattern[0] != '\0') return false;
  for (size_t i = 0; i < patterns; ++i) {
    if (!is_location(table[i])) return false;
    for (size_t k = 0; k < i; ++k)
      if (std::string_view(table[i].pattern) == table[k].pattern) return false;
  }
  return true;
}

}  // namespace

// Limits beyond the parts of a location, such as the third limit of one with two parts, belong to the layout, too.
constexpr lmainte_unit_code convert_unit_code_qa[] = {
    {"/MBU_A", 0, 120, {1}, nullptr},
    {"/MBU_A/MEM#", 0, 138, {1, 1, 8}, convert_unit_no_qa_mem},
    {"/MBU_A/PCI#", 104, 192, {1, 4}, nullptr},
    {"/PSU#", 161, 195, {2}, convert_unit_no_qa_psu},
    {"/FAN_A#", 180, 198, {2}, convert_unit_no_qa_fan},
    {"/FANBP_B", 0, 199, {1}, convert_unit_no_qa_fanbp},
    {"/OPNL", 0, 205, {1}, nullptr},
    {"", 0, 0, {}, nullptr},
};
static_assert(ends_after(convert_unit_code_qa, 7));

constexpr lmainte_unit_code convert_unit_code_qb1[] = {
    {"/MBU_A", 0, 120, {1}, nullptr},
    {"/MBU_A/DDC_A#", 0, 121, {1, 2}, nullptr},
    {"/MBU_A/DDC_B#", 0, 122, {1, 1}, nullptr},
    {"/MBU_A/CPUM#", 0, 139, {1, 2}, nullptr},
    {"/MBU_A/MEMB#", 0, 133, {1, 4}, nullptr},
    {"/MBU_A/MEMB#/MEM#", 0, 138, {1, 4, 8}, convert_unit_no_qb1_mem},
    {"/BPU_A", 0, 175, {1}, nullptr},
    {"/IOU#", 0, 179, {1}, nullptr},
    {"/IOU#/DDC_A#", 0, 188, {1, 1}, nullptr},
    {"/IOU#/DDCR", 0, 189, {1, 1}, nullptr},
    {"/IOU#/DDCR/DDC_B#", 0, 190, {1, 1, 1}, nullptr},
    {"/IOU#/PCI#", 104, 192, {1, 5}, nullptr},
    {"/EMGBU", 0, 194, {1}, nullptr},
    {"/PSU#", 161, 195, {2}, convert_unit_no_qb1_psu},
    {"/FANBP_A", 0, 197, {1}, convert_unit_no_qb1_fanbp},
    {"/FAN_A#", 180, 198, {2}, convert_unit_no_qb1_fan},
    {"/FANBP_B", 0, 199, {1}, convert_unit_no_qb1_fanbp},
    {"/FAN_B#", 180, 201, {2}, convert_unit_no_qb1_fan},
    {"/OPNL", 0, 205, {1}, nullptr},
    {"", 0, 0, {}, nullptr},
};
static_assert(ends_after(convert_unit_code_qb1, 19));

constexpr lmainte_unit_code convert_unit_code_qb2[] = {
    {"/MBU_B", 0, 147, {1}, nullptr},
    {"/MBU_B/DDC_A#", 0, 148, {1, 4}, nullptr},
    {"/MBU_B/DDC_B#", 0, 149, {1, 2}, nullptr},
    {"/MBU_B/CPUM#", 0, 167, {1, 4}, nullptr},
    {"/MBU_B/MEMB#", 0, 161, {1, 8}, nullptr},
    {"/MBU_B/MEMB#/MEM#", 0, 166, {1, 8, 8}, convert_unit_no_qb2_mem},
    {"/IOU#", 0, 179, {2}, nullptr},
    {"/IOU#/DDC_A#", 0, 188, {2, 1}, nullptr},
    {"/IOU#/DDCR", 0, 189, {2, 1}, nullptr},
    {"/IOU#/DDCR/DDC_B#", 0, 190, {2, 1, 1}, nullptr},
    {"/IOU#/PCI#", 104, 192, {2, 5}, nullptr},
    {"/EMGBU", 0, 194, {1}, nullptr},
    {"/PSU#", 161, 195, {4}, convert_unit_no_qb2_psu},
    {"/FANBP_C", 0, 202, {1}, convert_unit_no_qb2_fanbp},
    {"/FAN_A#", 180, 204, {4}, convert_unit_no_qb2_fan},
    {"/OPNL", 0, 205, {1}, nullptr},
    {"", 0, 0, {}, nullptr},
};
static_assert(ends_after(convert_unit_code_qb2, 16));

constexpr lmainte_unit_code convert_unit_code_qe1[] = {
    {"/CMU#", 16, 1, {4}, nullptr},
    {"/CMU#/CPUM#", 0, 20, {4, 4}, nullptr},
    {"/CMU#/MEM#", 0, 19, {16, 32}, convert_unit_no_qe_mem},
    {"/IOU#", 80, 42, {4}, nullptr},
    {"/IOU#/DDC#", 0, 51, {4, 14}, nullptr},
    {"/IOU#/PCI#", 104, 52, {4, 8}, nullptr},
    {"/EMGBU_B#", 128, 85, {2}, nullptr},
    {"/PSU#", 161, 89, {9}, convert_unit_no_qe1_psu},
    {"/BP_A#", 0, 64, {1}, nullptr},
    {"/DDC_A#", 212, 76, {2}, nullptr},
    {"/FANBP_C#", 0, 92, {2}, convert_unit_no_qe1_fanbp},
    {"/FAN_A#", 180, 93, {4}, convert_unit_no_qe1_fan},
    {"/FAN_B#", 180, 95, {8}, convert_unit_no_qe1_fan},
    {"/OPNL#", 2, 97, {1}, nullptr},
    {"", 0, 0, {}, nullptr},
};
static_assert(ends_after(convert_unit_code_qe1, 14));

constexpr lmainte_unit_code convert_unit_code_qe2[] = {
    {"/CMU#", 16, 1, {8}, nullptr},
    {"/CMU#/CPUM#", 0, 20, {8, 4}, nullptr},
    {"/CMU#/MEM#", 0, 19, {8, 32}, convert_unit_no_qe_mem},
    {"/IOU#", 80, 42, {8}, nullptr},
    {"/IOU#/DDC#", 0, 51, {8, 14}, nullptr},
    {"/IOU#/PCI#", 104, 52, {8, 8}, nullptr},
    {"/EMGBU_B#", 128, 85, {2}, nullptr},
    {"/PSU#", 161, 89, {15}, convert_unit_no_qe2_psu},
    {"/FANBP_A#", 0, 90, {1}, convert_unit_no_qe2_fanbp},
    {"/FANBP_B#", 0, 91, {1}, convert_unit_no_qe2_fanbp},
    {"/FAN_A#", 180, 93, {16}, convert_unit_no_qe2_fan},
    {"/OPNL#", 2, 97, {1}, nullptr},
    {"", 0, 0, {}, nullptr},
};
static_assert(ends_after(convert_unit_code_qe2, 12));

constexpr lmainte_unit_code convert_unit_code_qe3[] = {
    {"/CMU#", 16, 1, {16}, nullptr},
    {"/CMU#/CPUM#", 0, 20, {16, 4}, nullptr},
    {"/CMU#/MEM#", 0, 19, {16, 32}, convert_unit_no_qe_mem},
    {"/XBU_B#", 0, 29, {16}, nullptr},
    {"/IOU#", 80, 42, {16}, nullptr},
    {"/IOU#/DDC#", 0, 51, {16, 14}, nullptr},
    {"/IOU#/PCI#", 104, 52, {16, 8}, nullptr},
    {"/EMGBU_B#", 128, 85, {2}, nullptr},
    {"/EMGBU_C#", 130, 86, {2}, nullptr},
    {"/CLKU_B#", 0, 55, {4}, nullptr},
    {"/PSU#", 161, 89, {30}, convert_unit_no_qe3_psu},
    {"/FANBP_A#", 0, 90, {2}, convert_unit_no_qe3_fanbp},
    {"/FANBP_B#", 0, 91, {2}, convert_unit_no_qe3_fanbp},
    {"/FAN_A#", 180, 93, {32}, convert_unit_no_qe3_fan},
    {"/OPNL#", 2, 97, {1}, nullptr},
    {"", 0, 0, {}, nullptr},
};
static_assert(ends_after(convert_unit_code_qe3, 15));
