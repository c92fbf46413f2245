#include <cstring>
#include <map>

#include <gtest/gtest.h>

#include "tests/unit/doubles/library_test.h"

namespace {

using doubles::Bytes;
using doubles::Lines;
using doubles::machine;

// Every byte of a unit's record tells its place.
EventUnit a_unit() {
  return {{0x01020304, 0x05060708, 0x090A0B0C},
          {0x11121314, 0x15161718},
          {0x21222324, 0x25262728, 0x292A2B2C, 0x2D2E2F30},
          0x3132};
}

// An event without a unit.
Bytes event_of(uint8_t code) {
  Bytes event(48, 0);
  event[8] = 0xD7;
  event[9] = 2;
  event[11] = code;
  return event;
}

Bytes with(Bytes event, size_t offset, const Bytes &bytes) {
  std::copy(bytes.begin(), bytes.end(), event.begin() + static_cast<ptrdiff_t>(offset));
  return event;
}

const Bytes kIdent = {0x11, 0x12, 0x13, 0x14, 0x15, 0x16, 0x17, 0x18};
const Bytes kDetail = {0x21, 0x22, 0x23, 0x24, 0x25, 0x26, 0x27, 0x28, 0x29,
                       0x2A, 0x2B, 0x2C, 0x2D, 0x2E, 0x2F, 0x30, 0x31, 0x32};

class LmainteSendEvent : public doubles::LibraryTest {
 protected:
  static Lines own_trace() { return doubles::trace_of(0x110C0500); }
};

// By action and kind.
const std::map<std::pair<int32_t, int32_t>, uint8_t> kCodes = {
    {{0, 0}, 1},  {{0, 1}, 13}, {{0, 2}, 4},  {{0, 3}, 10}, {{0, 4}, 7},  {{0, 5}, 8},  {{0, 6}, 9},
    {{0, 7}, 16}, {{1, 0}, 2},  {{1, 1}, 14}, {{1, 2}, 5},  {{1, 3}, 11}, {{1, 4}, 7},  {{1, 5}, 8},
    {{1, 6}, 9},  {{1, 7}, 17}, {{2, 0}, 3},  {{2, 1}, 15}, {{2, 2}, 6},  {{2, 3}, 12}, {{2, 7}, 18},
};

TEST_F(LmainteSendEvent, EveryActionOnEveryKindSavesItsEvent) {
  const EventUnit unit = a_unit();
  for (const auto &[what, code] : kCodes) {
    const auto [action, kind] = what;
    SCOPED_TRACE("action " + std::to_string(action) + ", kind " + std::to_string(kind));
    machine().start();
    EXPECT_EQ(lmainte_send_event(action, kind, &unit), 0);
    ASSERT_EQ(machine().saved.size(), 1u);
    EXPECT_EQ(machine().saved[0].head, 0x00030000u);
    const Bytes expected = kind == 7 ? event_of(code) : with(with(event_of(code), 19, kIdent), 29, kDetail);
    EXPECT_EQ(machine().saved[0].event, expected);
    EXPECT_EQ(machine().calls, Lines{"save"});
    EXPECT_EQ(doubles::trace(),
              (Lines{"100 110C0500", "100 110C0510", "100 110C0511", "100 110C0502 0", "100 110C0501"}));
  }
}

TEST_F(LmainteSendEvent, EveryOtherActionAndKindSavesNothing) {
  const EventUnit unit = a_unit();
  for (const int32_t action : {INT32_MIN, -1, 0, 1, 2, 3, 256, INT32_MAX}) {
    for (const int32_t kind : {INT32_MIN, -249, -1, 0, 1, 2, 3, 4, 5, 6, 7, 8, 254, 255, 256, 263, INT32_MAX}) {
      if (kCodes.contains({action, kind})) continue;
      machine().start();
      EXPECT_EQ(lmainte_send_event(action, kind, &unit), 8) << "action " << action << ", kind " << kind;
      EXPECT_EQ(machine().calls, Lines{});
    }
  }
}

TEST_F(LmainteSendEvent, UnknownActionIsRecordedBeforeTheKindIsLookedUp) {
  const EventUnit unit = a_unit();
  EXPECT_EQ(lmainte_send_event(3, 99, &unit), 8);
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C0500", "805 110C1502 3", "100 110C0501"}));
}

TEST_F(LmainteSendEvent, KindWithoutACodeIsRecorded) {
  const EventUnit unit = a_unit();
  EXPECT_EQ(lmainte_send_event(2, 4, &unit), 8);
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C0500", "100 110C0510", "805 110C1511 4", "100 110C0511",
                                     "805 110C1503 2 4", "100 110C0501"}));
}

TEST_F(LmainteSendEvent, MissingUnitIsRefusedForEveryKind) {
  for (const int32_t kind : {0, 7, 99}) {
    machine().start();
    EXPECT_EQ(lmainte_send_event(0, kind, nullptr), 8) << kind;
    EXPECT_EQ(machine().calls, Lines{});
    EXPECT_EQ(doubles::trace(), (Lines{"100 110C0500", "805 110C1501", "100 110C0501"}));
  }
}

// ---- the unit

TEST_F(LmainteSendEvent, DetailIsLeftOutWhereItsFirstByteIsZero) {
  EventUnit unit = a_unit();
  unit.detail[0] = 0;
  EXPECT_EQ(lmainte_send_event(0, 2, &unit), 0);
  EXPECT_EQ(machine().saved.at(0).event, with(event_of(4), 19, kIdent));
}

// The same values give the same event on every machine: the byte is the one that the event has first.
TEST_F(LmainteSendEvent, FirstByteOfTheDetailIsTheMostSignificantOneOfItsFirstWord) {
  struct Row {
    uint32_t first_word;
    bool has_detail;
  };
  for (const Row &row : {Row{0x01000000, true}, Row{0xFF000000, true}, Row{0x00010000, false}, Row{0x00000100, false},
                         Row{0x00000001, false}, Row{0x00FFFFFF, false}}) {
    machine().start();
    EventUnit unit = a_unit();
    unit.detail[0] = row.first_word;
    EXPECT_EQ(lmainte_send_event(1, 0, &unit), 0);
    const auto &event = machine().saved.at(0).event;
    EXPECT_EQ(event[29], row.has_detail ? row.first_word >> 24 : 0) << std::hex << row.first_word;
    EXPECT_EQ(event[33], row.has_detail ? 0x25 : 0) << std::hex << row.first_word;
    EXPECT_EQ(event[45], row.has_detail ? 0x31 : 0) << std::hex << row.first_word;
  }
}

TEST_F(LmainteSendEvent, NothingOfTheUnitIsReadForKindSeven) {
  EventUnit unit;
  std::memset(&unit, 0xFF, sizeof unit);
  EXPECT_EQ(lmainte_send_event(2, 7, &unit), 0);
  EXPECT_EQ(machine().saved.at(0).event, event_of(18));
}

TEST_F(LmainteSendEvent, ValuesOfAllBitsKeepTheirPlaces) {
  EventUnit unit;
  std::memset(&unit, 0xFF, sizeof unit);
  EXPECT_EQ(lmainte_send_event(0, 0, &unit), 0);
  EXPECT_EQ(machine().saved.at(0).event, with(with(event_of(1), 19, Bytes(8, 0xFF)), 29, Bytes(18, 0xFF)));
}

TEST_F(LmainteSendEvent, UnitStaysAsItWas) {
  const EventUnit before = a_unit();
  EventUnit unit = before;
  lmainte_send_event(0, 0, &unit);
  EXPECT_EQ(std::memcmp(&unit, &before, 38), 0);
}

// ---- the log

TEST_F(LmainteSendEvent, LogThatFailsIsRecorded) {
  const EventUnit unit = a_unit();
  machine().fail("save", 1, EIO, -3);
  EXPECT_EQ(lmainte_send_event(0, 0, &unit), 8);
  EXPECT_EQ(own_trace(), (Lines{"100 110C0500", "100 110C0502 -3", "800A 110C1504 -3", "100 110C0501"}));
  EXPECT_EQ(machine().calls, Lines{"save"});
}

TEST_F(LmainteSendEvent, ResultAboveZeroIsSuccess) {
  const EventUnit unit = a_unit();
  machine().log_result = 48;
  EXPECT_EQ(lmainte_send_event(0, 0, &unit), 0);
  EXPECT_EQ(own_trace(), (Lines{"100 110C0500", "100 110C0502 48", "100 110C0501"}));
}

}  // namespace
