// The exported tables of event codes, spelled out.

#include <vector>

#include <gtest/gtest.h>

#include "include/lmainte.h"

namespace {

using Codes = std::vector<std::pair<int, int>>;

Codes rows_of(const lmainte_event_code *table, size_t count) {
  Codes rows;
  for (size_t i = 0; i < count; ++i) rows.emplace_back(table[i].kind, table[i].code);
  return rows;
}

TEST(EventCodes, OfReplacement) {
  EXPECT_EQ(rows_of(rep_code, 9),
            (Codes{{0, 1}, {1, 13}, {2, 4}, {3, 10}, {4, 7}, {5, 8}, {6, 9}, {7, 16}, {255, 255}}));
}

TEST(EventCodes, OfAddition) {
  EXPECT_EQ(rows_of(add_code, 9),
            (Codes{{0, 2}, {1, 14}, {2, 5}, {3, 11}, {4, 7}, {5, 8}, {6, 9}, {7, 17}, {255, 255}}));
}

TEST(EventCodes, OfRemovalLackThoseKindsThatCannotBeRemoved) {
  EXPECT_EQ(rows_of(del_code, 6), (Codes{{0, 3}, {1, 15}, {2, 6}, {3, 12}, {7, 18}, {255, 255}}));
}

TEST(EventCodes, AreBytePairs) {
  EXPECT_EQ(sizeof(lmainte_event_code), 2u);
  EXPECT_EQ(reinterpret_cast<const uint8_t *>(rep_code)[3], 13);
}

}  // namespace
