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
  EXPECT_EQ(line.kind, "power supply");
  EXPECT_EQ(line.unit, "/PSU#41");
  EXPECT_EQ(line.detail, "");
  EXPECT_EQ(line.code, 10u);
  EXPECT_EQ(spbox::sentence_of(line), "unit replaced  power supply  /PSU#41");
}

TEST(LogBook, HasEveryCode) {
  struct Row {
    std::uint8_t code;
    const char *what, *kind;
  };
  const Row rows[] = {
      {1, "unit replaced", "CPU/memory unit"}, {2, "unit added", "CPU/memory unit"},
      {3, "unit removed", "CPU/memory unit"},  {13, "unit replaced", "I/O unit"},
      {14, "unit added", "I/O unit"},          {15, "unit removed", "I/O unit"},
      {4, "unit replaced", "fan tray"},        {5, "unit added", "fan tray"},
      {6, "unit removed", "fan tray"},         {10, "unit replaced", "power supply"},
      {11, "unit added", "power supply"},      {12, "unit removed", "power supply"},
      {7, "unit replaced or added", "kind 4"}, {8, "unit replaced or added", "kind 5"},
      {9, "unit replaced or added", "kind 6"}, {16, "unit replaced", "DDC unit"},
      {17, "unit added", "DDC unit"},          {18, "unit removed", "DDC unit"},
  };
  for (const Row &row : rows) {
    EXPECT_EQ(spbox::decode(3, event(row.code)).what, row.what) << int{row.code};
    EXPECT_EQ(spbox::decode(3, event(row.code)).kind, row.kind) << int{row.code};
  }
}

TEST(LogBook, SaysWhatAProcedureLeftAndOfWhichKindTheUnitIs) {
  struct Row {
    std::uint8_t code;
    const char *what;
  };
  const Row rows[] = {
      {1, "place left empty"},
      {2, "unit left out of operation"},
      {3, "unit perhaps left out of operation"},
      {4, "unit left out of operation, not passed"},
      {5, "unit left untested"},
      {6, "unit left in operation, not checked to the end"},
      {7, "unit left in an unknown state"},
      {8, "LED, maintenance flag or fans left switched"},
      {9, "left in maintenance mode"},
      {10, "event 10"},
  };
  for (const Row &row : rows) {
    box::LogEntry entry = event(row.code);
    entry.event[9] = 3;
    put_word(entry, 19, 0x59012900);
    EXPECT_EQ(spbox::decode(3, entry).what, row.what) << int{row.code};
    EXPECT_EQ(spbox::decode(3, entry).kind, row.code == 9 ? "server" : "power supply") << int{row.code};
    EXPECT_EQ(spbox::decode(3, entry).unit, "/PSU#41");
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

TEST(LogBook, ShowsAnAuthorsOwnEventByItsNumbers) {
  box::LogEntry entry = event(7);
  entry.event[9] = 128;
  put_word(entry, 19, 0x59012900);
  EXPECT_EQ(spbox::decode(3, entry).what, "event 7 of form 128");
  EXPECT_EQ(spbox::decode(3, entry).unit, "/PSU#41");
  entry.event[9] = 127;
  EXPECT_EQ(spbox::decode(3, entry).what, "event 7");
}

}  // namespace
