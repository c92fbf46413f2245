#include "tests/unit/doubles/units.h"
#include "tests/unit/inventory/reader_test.h"

namespace {

using doubles::Bytes;
using doubles::Lines;
using doubles::machine;

using Getter = int32_t (*)(int32_t index, int32_t count, int32_t model, void *out);

template <class Unit, int32_t (*Get)(int32_t, int32_t, int32_t, Unit *)>
int32_t get(int32_t index, int32_t count, int32_t model, void *out) {
  return Get(index, count, model, static_cast<Unit *>(out));
}

struct TypeRow {
  int32_t type;
  size_t size;    // of its record
  Getter getter;  // that serves it
  uint32_t entry;
};

constexpr Getter kGetBoards = get<SbData, lmainte_get_sb_data>;
constexpr Getter kGetPsus = get<PsuData, lmainte_get_psu_data>;
constexpr Getter kGetTrays = get<FantrayData, lmainte_get_fantray_data>;
constexpr Getter kGetDdcs = get<BpUnitData, lmainte_get_ddca_data>;

constexpr TypeRow kTypes[] = {
    {16, 2200, kGetBoards, 0x110C0030}, {80, 2200, kGetBoards, 0x110C0030}, {161, 44, kGetPsus, 0x110C0400},
    {162, 44, kGetPsus, 0x110C0400},    {176, 72, kGetTrays, 0x110C03E0},   {178, 72, kGetTrays, 0x110C03E0},
    {180, 72, kGetTrays, 0x110C03E0},   {212, 44, kGetDdcs, 0x110C8120},
};

const std::string kFruEntry = "100 110C06A0";
const std::string kFruExit = "100 110C06A1";

class LmainteGetFruData : public doubles::LibraryTest {
 protected:
  void SetUp() override {
    LibraryTest::SetUp();
    arrange();
  }

  static void arrange() {
    machine().start();
    doubles::put_units();
  }
  static Lines own_trace() { return doubles::trace_of(0x110C06A0); }
};

// What a getter does by itself: its result, its calls, its trace and its records.
struct Outcome {
  int32_t result;
  Lines calls, trace;
  Bytes out;

  bool operator==(const Outcome &) const = default;
};

Outcome outcome_of(const std::function<int32_t(void *out)> &call) {
  Bytes out(size_t{4} * 2200, doubles::kUntouched);
  const int32_t result = call(out.data());
  return {result, machine().calls, doubles::trace(), out};
}

TEST_F(LmainteGetFruData, EveryTypeIsServedByItsGetterWithTheArgumentsUnchanged) {
  struct Arguments {
    int32_t index, count;
  };
  for (const auto &row : kTypes) {
    for (const auto &given : {Arguments{0, 1}, {1, 1}, {-1, 2}, {1, 2}, {-1, 1}, {1, -1}, {-2, 1}, {-1, -1}}) {
      for (int32_t model = 1; model <= 6; ++model) {
        arrange();
        const auto expected = outcome_of([&](void *out) { return row.getter(given.index, given.count, model, out); });
        arrange();
        auto got =
            outcome_of([&](void *out) { return lmainte_get_fru_data(row.type, given.index, given.count, model, out); });
        ASSERT_GE(got.trace.size(), 2u);
        EXPECT_EQ(got.trace.front(), kFruEntry);
        EXPECT_EQ(got.trace.back(), kFruExit);
        got.trace.erase(got.trace.begin());
        got.trace.pop_back();
        if (got.result != 0) {
          EXPECT_EQ(got.trace.back(), "805 110C16A4 8");
          got.trace.pop_back();
        }
        EXPECT_TRUE(got == expected) << "type " << row.type << ", index " << given.index << ", count " << given.count
                                     << ", model " << model << ": another result than the getter's";
      }
    }
  }
}

TEST_F(LmainteGetFruData, RecordIsTheGetters) {
  for (const auto &row : kTypes) {
    arrange();
    Bytes out(row.size, 0);
    EXPECT_EQ(lmainte_get_fru_data(row.type, 1, 1, 3, out.data()), 0) << row.type;
    EXPECT_FALSE(doubles::trace_of(row.entry).empty()) << row.type;
    EXPECT_EQ(own_trace(), (Lines{kFruEntry, kFruExit}));
    uint32_t id = 0;
    std::memcpy(&id, &out.at((row.type == 80 ? 1816 : 0) + 8), sizeof id);
    EXPECT_EQ(id, doubles::unit_id_of(row.type, 1)) << row.type;
  }
}

TEST_F(LmainteGetFruData, RefusesCountZeroAndNullFirst) {
  Bytes out(2200, 0);
  for (const int32_t type : {161, 128, 999}) {
    machine().start();
    EXPECT_EQ(lmainte_get_fru_data(type, 0, 0, 99, out.data()), 8) << type;
    EXPECT_EQ(doubles::trace(), (Lines{kFruEntry, "805 110C16A1 0", kFruExit}));
    machine().start();
    EXPECT_EQ(lmainte_get_fru_data(type, 0, 2, 99, nullptr), 8) << type;
    EXPECT_EQ(doubles::trace(), (Lines{kFruEntry, "805 110C16A1 2", kFruExit}));
    EXPECT_EQ(machine().calls, Lines{});
  }
}

TEST_F(LmainteGetFruData, RefusesAnUnknownModelBeforeTheType) {
  Bytes out(2200, 0);
  for (const int32_t model : {0, 7, -1, 256 + 3, INT32_MIN, INT32_MAX}) {
    machine().start();
    EXPECT_EQ(lmainte_get_fru_data(999, 0, 1, model, out.data()), 8) << model;
    EXPECT_EQ(doubles::trace(), (Lines{kFruEntry, "805 110C16A2 " + std::to_string(model), kFruExit}));
    EXPECT_EQ(machine().calls, Lines{});
  }
}

TEST_F(LmainteGetFruData, UnknownTypeIsRecorded) {
  Bytes out(2200, doubles::kUntouched);
  for (const int32_t type :
       {0, 2, 15, 17, 32, 40, 51, 104, 127, 129, 131, 160, 163, 177, 179, 181, 211, 213, -16, 256 + 16, INT32_MIN}) {
    machine().start();
    EXPECT_EQ(lmainte_get_fru_data(type, 0, 1, 3, out.data()), 8) << type;
    EXPECT_EQ(doubles::trace(), (Lines{kFruEntry, "805 110C16A3 " + std::to_string(type), kFruExit}));
    EXPECT_EQ(machine().calls, Lines{});
  }
  EXPECT_EQ(out, Bytes(2200, doubles::kUntouched));
}

TEST_F(LmainteGetFruData, ServiceProcessorUnitsAreNotServedHere) {
  Bytes out(2200, doubles::kUntouched);
  for (const int32_t type : {128, 130}) {
    machine().start();
    EXPECT_EQ(lmainte_get_fru_data(type, -1, 1, 3, out.data()), 8) << type;
    EXPECT_EQ(doubles::trace(), (Lines{kFruEntry, kFruExit}));
    EXPECT_EQ(machine().calls, Lines{});
  }
}

TEST_F(LmainteGetFruData, GetterThatFailsIsRecorded) {
  for (const auto &row : kTypes) {
    arrange();
    machine().fail("get");
    Bytes out(2200, 0);
    EXPECT_EQ(lmainte_get_fru_data(row.type, 0, 1, 3, out.data()), 8) << row.type;
    EXPECT_EQ(own_trace(), (Lines{kFruEntry, "805 110C16A4 8", kFruExit}));
  }
}

}  // namespace
