#include "host/spbox/log_book.h"

#include <gtest/gtest.h>

namespace {

box::LogEntry event(std::uint8_t code) {
  box::LogEntry entry{};
  entry.head = 0x00030000;
  entry.event[8] = 215;
  entry.event[9] = 2;
  entry.event[11] = code;
  return entry;
}

void put_word(box::LogEntry &entry, std::size_t at, std::uint32_t word) {
  for (std::size_t i = 0; i < 4; ++i) entry.event.at(at + i) = static_cast<std::uint8_t>(word >> (24 - 8 * i));
}

TEST(LogBook, SaysWhatHappenedToWhichUnit) {
  box::LogEntry entry = event(10);
  put_word(entry, 19, 0x59012900);
  const spbox::LogLine line = spbox::decode(3, entry);
  EXPECT_EQ(line.what, "unit replaced");
  EXPECT_EQ(line.kind, "kind 3");
  EXPECT_EQ(line.unit, "/PSU#41");
  EXPECT_EQ(line.detail, "");
  EXPECT_EQ(line.code, 10u);
}

TEST(LogBook, HasEveryCode) {
  struct Row {
    std::uint8_t code;
    const char *what, *kind;
  };
  const Row rows[] = {
      {1, "unit replaced", "kind 0"},
      {2, "unit added", "kind 0"},
      {3, "unit removed", "kind 0"},
      {13, "unit replaced", "kind 1"},
      {14, "unit added", "kind 1"},
      {15, "unit removed", "kind 1"},
      {4, "unit replaced", "kind 2"},
      {5, "unit added", "kind 2"},
      {6, "unit removed", "kind 2"},
      {10, "unit replaced", "kind 3"},
      {11, "unit added", "kind 3"},
      {12, "unit removed", "kind 3"},
      {7, "unit replaced or added", "kind 4"},
      {8, "unit replaced or added", "kind 5"},
      {9, "unit replaced or added", "kind 6"},
      {16, "unit replaced", "kind 7"},
      {17, "unit added", "kind 7"},
      {18, "unit removed", "kind 7"},
  };
  for (const Row &row : rows) {
    EXPECT_EQ(spbox::decode(3, event(row.code)).what, row.what) << int{row.code};
    EXPECT_EQ(spbox::decode(3, event(row.code)).kind, row.kind) << int{row.code};
  }
}

TEST(LogBook, ShowsHonestlyWhatItDoesNotHave) {
  EXPECT_EQ(spbox::decode(3, event(19)).what, "event 19");
  EXPECT_EQ(spbox::decode(3, event(19)).unit, "");
  box::LogEntry foreign = event(10);
  foreign.event[8] = 214;
  EXPECT_EQ(spbox::decode(3, foreign).what, "event 10");
  box::LogEntry unknown = event(10);
  put_word(unknown, 19, 0x01020304);
  put_word(unknown, 23, 0x05060708);
  EXPECT_EQ(spbox::decode(3, unknown).unit, "0x01020304 0x05060708");
}

TEST(LogBook, ShowsTheDetailBlock) {
  box::LogEntry entry = event(10);
  put_word(entry, 29, 0x11223344);
  entry.event[46] = 0xEE;
  EXPECT_EQ(spbox::decode(3, entry).detail, "1122334400000000000000000000000000EE");
}

}  // namespace
