// The codes of the log's events, by kind of unit: for its replacement, its addition and its removal.

#include "include/lmainte.h"

#include <cstddef>

namespace {

constexpr uint8_t kEnd = 255;

template <size_t Rows>
constexpr bool ends_once(const lmainte_event_code (&table)[Rows]) {
  for (size_t i = 0; i + 1 < Rows; ++i)
    if (table[i].kind == kEnd || table[i].code == kEnd) return false;
  return table[Rows - 1].kind == kEnd && table[Rows - 1].code == kEnd;
}

}  // namespace

// Kinds 4 to 6 share one code for replacement and addition, and cannot be removed.
constexpr lmainte_event_code rep_code[] = {{0, 1}, {1, 13}, {2, 4},  {3, 10},     {4, 7},
                                           {5, 8}, {6, 9},  {7, 16}, {kEnd, kEnd}};
constexpr lmainte_event_code add_code[] = {{0, 2}, {1, 14}, {2, 5},  {3, 11},     {4, 7},
                                           {5, 8}, {6, 9},  {7, 17}, {kEnd, kEnd}};
constexpr lmainte_event_code del_code[] = {{0, 3}, {1, 15}, {2, 6}, {3, 12}, {7, 18}, {kEnd, kEnd}};

static_assert(ends_once(rep_code) && ends_once(add_code) && ends_once(del_code));
