// How many fans each fan tray of a model holds.

#include "include/lmainte.h"

#include <cstddef>

namespace {

constexpr uint8_t kEndOfTrays = 255;
constexpr uint8_t kMostFans = 3;

// Trays are counted from 0 without a gap, and no tray holds more fans than a record has room for.
template <size_t Rows>
constexpr bool counts_its_trays(const lmainte_fan_count (&table)[Rows], size_t trays) {
  for (size_t i = 0; i < trays; ++i)
    if (table[i].tray != i || table[i].fans < 1 || table[i].fans > kMostFans) return false;
  return Rows == trays + 1 && table[trays].tray == kEndOfTrays;
}

}  // namespace

constexpr lmainte_fan_count max_fan_num_qa[] = {{0, 1}, {1, 1}, {2, 1}, {3, 1}, {kEndOfTrays, kEndOfTrays}};
constexpr lmainte_fan_count max_fan_num_qb1[] = {
    {0, 1}, {1, 1}, {2, 1}, {3, 1}, {4, 2}, {5, 2}, {kEndOfTrays, kEndOfTrays}};
constexpr lmainte_fan_count max_fan_num_qb2[] = {
    {0, 1}, {1, 1}, {2, 1}, {3, 1}, {4, 2}, {5, 2}, {6, 2}, {7, 2}, {kEndOfTrays, kEndOfTrays}};
constexpr lmainte_fan_count max_fan_num_qe1[] = {{0, 2},
                                                 {1, 2},
                                                 {2, 3},
                                                 {3, 3},
                                                 {4, 3},
                                                 {5, 3},
                                                 {6, 2},
                                                 {7, 2},
                                                 {8, 2},
                                                 {9, 2},
                                                 {10, 2},
                                                 {11, 2},
                                                 {kEndOfTrays, kEndOfTrays}};
constexpr lmainte_fan_count max_fan_num_qe2[] = {{0, 3},
                                                 {1, 3},
                                                 {2, 3},
                                                 {3, 3},
                                                 {4, 3},
                                                 {5, 3},
                                                 {6, 3},
                                                 {7, 3},
                                                 {8, 3},
                                                 {9, 3},
                                                 {10, 3},
                                                 {11, 3},
                                                 {12, 3},
                                                 {13, 3},
                                                 {14, 3},
                                                 {15, 3},
                                                 {kEndOfTrays, kEndOfTrays}};
constexpr lmainte_fan_count max_fan_num_qe3[] = {{0, 3},  {1, 3},  {2, 3},
                                                 {3, 3},  {4, 3},  {5, 3},
                                                 {6, 3},  {7, 3},  {8, 3},
                                                 {9, 3},  {10, 3}, {11, 3},
                                                 {12, 3}, {13, 3}, {14, 3},
                                                 {15, 3}, {16, 3}, {17, 3},
                                                 {18, 3}, {19, 3}, {20, 3},
                                                 {21, 3}, {22, 3}, {23, 3},
                                                 {24, 3}, {25, 3}, {26, 3},
                                                 {27, 3}, {28, 3}, {29, 3},
                                                 {30, 3}, {31, 3}, {kEndOfTrays, kEndOfTrays}};

static_assert(counts_its_trays(max_fan_num_qa, 4) && counts_its_trays(max_fan_num_qb1, 6) &&
              counts_its_trays(max_fan_num_qb2, 8) && counts_its_trays(max_fan_num_qe1, 12) &&
              counts_its_trays(max_fan_num_qe2, 16) && counts_its_trays(max_fan_num_qe3, 32));
