// The list of units that are marked for replacement.

#include <algorithm>

#include <gtest/gtest.h>

#include "tests/unit/doubles/library_test.h"
#include "tests/unit/doubles/units.h"

namespace {

using doubles::Lines;
using doubles::machine;
using doubles::put_status;

constexpr uint32_t kInstalled = 0x80000000;
constexpr uint32_t kMarked = 0x80008000;

constexpr uint32_t kCmu = 16, kIou = 80, kTray2 = 176, kTray3 = 178, kTray = 180, kPsu = 161, kPsu2 = 162, kDdc = 212;

// A high-end server of two boards, six fan trays, four power supplies and two DDC units; nothing is marked.
class LmainteSwapFruList : public doubles::LibraryTest {
 protected:
  void SetUp() override {
    LibraryTest::SetUp();
    arrange();
    // Whatever a test before has left: an empty list, a count of zero.
    doubles::put_system_status(0);
    EXPECT_EQ(init(3), 0);
    arrange();
  }
  void TearDown() override {
    lmainte_free_swap_fru_list();
    LibraryTest::TearDown();
  }

  // A new machine; the list stays.
  static void arrange() {
    machine().start();
    doubles::put_units();
    doubles::put_system_status(0x8000);
  }
  static lmainte_model_data model_data(uint32_t model) {
    lmainte_model_data data = {};
    data.model = model;
    data.unit[0].max_count = 2;
    data.unit[1].max_count = 2;
    data.unit[3].max_count = model == 6 ? 4 : 6;
    data.unit[4].max_count = 4;
    data.unit[12].max_count = 2;
    return data;
  }
  static int32_t init(uint32_t model) {
    const auto data = model_data(model);
    return lmainte_init_swap_fru_list(&data);
  }

  // Marks a unit and adds it.
  static int32_t add(uint32_t type, uint32_t number) {
    put_status(static_cast<int32_t>(type), number, kMarked);
    return lmainte_add_swap_fru_to_list(type, number);
  }

  // The list as text, from its head, with its links checked on the way.
  static std::string list() {
    lmainte_swap_fru *head = nullptr;
    EXPECT_EQ(lmainte_get_swap_fru_list(&head), 0);
    std::string text;
    const lmainte_swap_fru *previous = nullptr;
    for (const auto *node = head; node != nullptr; previous = node, node = node->next) {
      EXPECT_EQ(node->prev, previous);
      if (!text.empty()) text += " ";
      text += std::to_string(node->unit_type) + "#" + std::to_string(node->unit_no);
    }
    return text;
  }
  static lmainte_swap_fru *head() {
    lmainte_swap_fru *node = nullptr;
    lmainte_get_swap_fru_list(&node);
    return node;
  }
  static void mark_everything() {
    for (const auto type : {kCmu, kIou, kTray, kPsu, kDdc})
      for (uint32_t n = 0; n < 2; ++n) put_status(static_cast<int32_t>(type), n, kMarked);
  }
};

// ---- building

struct ModelRow {
  uint32_t model;
  const char *list;
  int32_t count;
};

TEST_F(LmainteSwapFruList, EveryModelCollectsItsKinds) {
  constexpr ModelRow kRows[] = {
      {1, "180#0 180#1 161#0 161#1", 4},
      {2, "180#0 180#1 161#0 161#1", 4},
      {6, "180#0 180#1 161#0 161#1", 4},
      {3, "16#0 16#1 80#0 80#1 180#0 180#1 161#0 161#1 212#0 212#1", 10},
      {4, "16#0 16#1 80#0 80#1 180#0 180#1 161#0 161#1", 8},
      {5, "16#0 16#1 80#0 80#1 180#0 180#1 161#0 161#1", 8},
  };
  for (const auto &row : kRows) {
    lmainte_free_swap_fru_list();
    arrange();
    mark_everything();
    EXPECT_EQ(init(row.model), row.count) << "model " << row.model;
    EXPECT_EQ(list(), row.list) << "model " << row.model;
    lmainte_free_swap_fru_list();
  }
}

TEST_F(LmainteSwapFruList, KindsAreReadInTheirOrder) {
  EXPECT_EQ(init(3), 0);
  const Lines gets = machine().calls_of({"get"});
  ASSERT_FALSE(gets.empty());
  EXPECT_EQ(gets.front(), "get 2 current_system_info");
  Lines kinds;
  for (const auto &get : gets)
    for (const char *name : {"cmu_info_00", "iou_info_00", "fantray_info", "psu_info", "bp32_info"})
      if (get == std::string("get 2 current_") + name && (kinds.empty() || kinds.back() != name))
        kinds.emplace_back(name);
  // Boards are read whole, for their CMUs and again for their IOUs.
  EXPECT_EQ(kinds, (Lines{"cmu_info_00", "iou_info_00", "cmu_info_00", "iou_info_00", "fantray_info", "psu_info",
                          "bp32_info"}));
}

TEST_F(LmainteSwapFruList, AllUnitsOfTheModelsCountAreLookedAt) {
  put_status(kPsu, 3, kMarked);
  put_status(kPsu, 4, kMarked);
  put_status(kTray, 5, kMarked);
  put_status(kTray, 6, kMarked);
  EXPECT_EQ(init(1), 2);
  EXPECT_EQ(list(), "180#5 161#3");
}

TEST_F(LmainteSwapFruList, KindOfWhichThereIsOneIsReadToo) {
  mark_everything();
  auto data = model_data(3);
  for (auto &slot : data.unit) slot.max_count = 1;
  data.unit[3].max_count = 6;
  EXPECT_EQ(lmainte_init_swap_fru_list(&data), 6);
  EXPECT_EQ(list(), "16#0 80#0 180#0 180#1 161#0 212#0");
  data = model_data(1);
  for (auto &slot : data.unit) slot.max_count = 1;
  EXPECT_EQ(lmainte_init_swap_fru_list(&data), 2);
  EXPECT_EQ(list(), "180#0 161#0");
}

TEST_F(LmainteSwapFruList, OrderOfTheReaderDoesNotShow) {
  for (uint32_t n = 0; n < 6; ++n) put_status(kTray, n, kMarked);
  EXPECT_EQ(init(3), 6);
  EXPECT_EQ(list(), "180#0 180#1 180#2 180#3 180#4 180#5");
}

TEST_F(LmainteSwapFruList, OnePowerSupplyThatIsMarkedIsTheWholeList) {
  put_status(kPsu, 1, kMarked);
  EXPECT_EQ(init(1), 1);
  ASSERT_EQ(list(), "161#1");
  EXPECT_EQ(head()->order, 4u);
  EXPECT_EQ(head()->ident[0], doubles::unit_id_of(kPsu, 1));
  EXPECT_EQ(head()->ident[1], ~doubles::unit_id_of(kPsu, 1));
}

TEST_F(LmainteSwapFruList, OnlyBit15OfTheStatusMarksAUnit) {
  for (const uint32_t status : {kInstalled, 0xFFFF7FFFU, 0U, 0x80000080U, 0x80010000U, 0x80004000U}) {
    put_status(kPsu, 0, status);
    EXPECT_EQ(init(1), 0) << std::hex << status;
  }
  for (const uint32_t status : {0x8000U, kMarked, 0xFFFFFFFFU}) {
    put_status(kPsu, 0, status);
    EXPECT_EQ(init(1), 1) << std::hex << status;
  }
}

TEST_F(LmainteSwapFruList, ClearBitInTheSystemsStatusSaysThatNothingIsMarked) {
  mark_everything();
  for (const uint32_t status : {0U, 0xFFFF7FFFU}) {
    doubles::put_system_status(status);
    for (const uint32_t model : {3U, 0U, 77U}) EXPECT_EQ(init(model), 0) << "model " << model;
  }
  EXPECT_EQ(list(), "");
  EXPECT_EQ(machine().calls_of({"get"}), Lines(6, "get 2 current_system_info"));
  doubles::put_system_status(0xFFFFFFFF);
  EXPECT_EQ(init(3), 10);
}

TEST_F(LmainteSwapFruList, BuildingAnewDropsTheOldList) {
  add(kPsu, 9);
  add(kCmu, 3);
  EXPECT_EQ(list(), "16#3 161#9");
  arrange();
  put_status(kTray, 1, kMarked);
  EXPECT_EQ(init(1), 1);
  EXPECT_EQ(list(), "180#1");
  EXPECT_EQ(doubles::trace_of(0x110C0600), (Lines{"100 110C0600", "805 110C1602 2", "100 110C0601"}));
}

TEST_F(LmainteSwapFruList, FirstBuildWarnsOfNothing) {
  EXPECT_EQ(init(1), 0);
  EXPECT_EQ(doubles::trace_of(0x110C0600), (Lines{"100 110C0600", "100 110C0601"}));
}

TEST_F(LmainteSwapFruList, UnknownModelFails) {
  for (const uint32_t model : {0U, 7U, 0xFFFFFFFFU}) {
    arrange();
    EXPECT_EQ(init(model), -1);
    const std::string error = "805 110C1604 " + std::to_string(static_cast<int32_t>(model));
    EXPECT_EQ(doubles::trace_of(0x110C0600), (Lines{"100 110C0600", error, "100 110C0601"}));
  }
}

TEST_F(LmainteSwapFruList, SystemStatusThatFailsLeavesAnEmptyList) {
  add(kPsu, 0);
  arrange();
  machine().fail("get 2 current_system_info");
  EXPECT_EQ(init(3), -1);
  EXPECT_EQ(list(), "");
  EXPECT_EQ(doubles::trace_of(0x110C0600), (Lines{"100 110C0600", "805 110C1602 1", "805 110C1603 8", "100 110C0601"}));
  EXPECT_EQ(add(kPsu, 0), 1) << "the count starts anew, with the new model";
}

TEST_F(LmainteSwapFruList, MissingModelDataLeavesTheListAsItIs) {
  add(kPsu, 0);
  machine().calls.clear();
  EXPECT_EQ(lmainte_init_swap_fru_list(nullptr), -1);
  EXPECT_EQ(list(), "161#0");
  EXPECT_EQ(machine().calls, Lines{});
  EXPECT_EQ(doubles::trace_of(0x110C0600), (Lines{"100 110C0600", "805 110C1601", "100 110C0601"}));
}

TEST_F(LmainteSwapFruList, ReaderThatFailsEndsTheBuildWithWhatThereIs) {
  mark_everything();
  machine().fail("get 2 current_fantray_info");
  EXPECT_EQ(init(3), -1);
  EXPECT_EQ(list(), "16#0 16#1 80#0 80#1");
  EXPECT_EQ(machine().calls_of({"get"}).back(), "get 2 current_fantray_info");
  EXPECT_EQ(doubles::trace_of(0x110C0600), (Lines{"100 110C0600", "805 110C1605 180 -1", "100 110C0601"}));
  const auto collected = doubles::trace_of(0x110C0660);
  ASSERT_EQ(collected.size(), 7u);
  EXPECT_EQ(collected[5], "805 110C1663 180 8");
}

TEST_F(LmainteSwapFruList, KindOfWhichThereIsNoneFails) {
  for (const size_t slot : {0U, 1U, 3U, 4U, 12U}) {
    arrange();
    auto data = model_data(3);
    data.unit[slot].max_count = 0;
    EXPECT_EQ(lmainte_init_swap_fru_list(&data), -1) << "slot " << slot;
  }
}

TEST_F(LmainteSwapFruList, CountThatNoMemoryHoldsFails) {
  for (const uint32_t count : {0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
    arrange();
    auto data = model_data(1);
    data.unit[3].max_count = count;
    machine().fail("calloc", 2, ENOMEM);  // after that of the system's status
    EXPECT_EQ(lmainte_init_swap_fru_list(&data), -1) << std::hex << count;
    EXPECT_EQ(machine().calls.back(), "calloc");
    EXPECT_EQ(doubles::trace_of(0x110C0660), (Lines{"100 110C0660", "800A 110C1662 12", "100 110C0661"}));
  }
}

// ---- adding

TEST_F(LmainteSwapFruList, ClassesComeInTheirOrderAndNumbersAscend) {
  EXPECT_EQ(add(kCmu, 3), 1);
  EXPECT_EQ(add(kPsu, 0), 2);
  EXPECT_EQ(add(kCmu, 1), 3);
  EXPECT_EQ(list(), "16#1 16#3 161#0");
  EXPECT_EQ(add(kDdc, 1), 4);
  EXPECT_EQ(add(kTray, 7), 5);
  EXPECT_EQ(add(kIou, 2), 6);
  EXPECT_EQ(add(kDdc, 0), 7);
  EXPECT_EQ(add(kPsu, 59), 8);
  EXPECT_EQ(add(kPsu, 30), 9);
  EXPECT_EQ(list(), "16#1 16#3 80#2 180#7 161#0 161#30 161#59 212#0 212#1");
  std::string orders;
  for (const auto *node = head(); node != nullptr; node = node->next) orders += std::to_string(node->order);
  EXPECT_EQ(orders, "112344466");
}

TEST_F(LmainteSwapFruList, TypesThatShareAClassStayAsTheyCame) {
  const struct { uint32_t type, number; } units[] = {{kTray, 5}, {kTray2, 3}, {kTray, 2}, {kTray2, 1}, {kTray, 7}};
  for (const auto &unit : units) add(unit.type, unit.number);
  EXPECT_EQ(list(), "180#2 180#5 176#1 176#3 180#7");
  add(kTray3, 0);
  EXPECT_EQ(list(), "180#2 180#5 176#1 176#3 180#7 178#0");
  EXPECT_EQ(head()->order, 3u);
}

TEST_F(LmainteSwapFruList, PowerSupplyOfEitherTypeIsAUnitOfItsOwn) {
  EXPECT_EQ(add(kPsu2, 4), 1);
  EXPECT_EQ(add(kPsu, 4), 2);
  EXPECT_EQ(list(), "162#4 161#4");
  EXPECT_EQ(head()->order, 4u);
  EXPECT_EQ(head()->next->order, 4u);
}

TEST_F(LmainteSwapFruList, UnitIsListedOnce) {
  add(kPsu, 2);
  add(kPsu, 1);
  const size_t blocks = machine().blocks();
  EXPECT_EQ(add(kPsu, 2), 2);
  EXPECT_EQ(add(kPsu, 1), 2);
  EXPECT_EQ(list(), "161#1 161#2");
  EXPECT_EQ(machine().blocks(), blocks);
}

TEST_F(LmainteSwapFruList, NumberOfAllOnesIsTheUnitThatTheReaderListsFirst) {
  for (const uint32_t type : {kPsu, kIou, kDdc}) {
    put_status(static_cast<int32_t>(type), 0, kMarked);
    put_status(static_cast<int32_t>(type), 1, kMarked);
    lmainte_add_swap_fru_to_list(type, 0xFFFFFFFF);
  }
  EXPECT_EQ(list(), "80#0 161#0 212#0");
}

TEST_F(LmainteSwapFruList, UnitThatIsNotMarkedIsNotAdded) {
  EXPECT_EQ(lmainte_add_swap_fru_to_list(kPsu, 0), 0);
  add(kPsu, 1);
  EXPECT_EQ(lmainte_add_swap_fru_to_list(kPsu, 0), 1);
  EXPECT_EQ(list(), "161#1");
}

TEST_F(LmainteSwapFruList, AddReadsThatUnitAloneAndNotTheSystemsStatus) {
  machine().records.erase({2, "current_system_info"});
  EXPECT_EQ(add(kPsu, 7), 1);
  EXPECT_EQ(machine().calls_of({"get"}), (Lines{"get 2 current_psu_info", "get 4 fru_psu_qe_info_07"}));
}

TEST_F(LmainteSwapFruList, NodeHoldsWhatTheRecordSays) {
  const struct {
    uint32_t type, order;
  } rows[] = {{kCmu, 1}, {kIou, 2}, {kTray2, 3}, {kTray3, 3}, {kTray, 3}, {kPsu, 4}, {kPsu2, 4}, {kDdc, 6}};
  for (const auto &row : rows) {
    lmainte_free_swap_fru_list();
    add(row.type, 1);
    ASSERT_NE(head(), nullptr) << row.type;
    EXPECT_EQ(head()->order, row.order) << row.type;
    EXPECT_EQ(head()->unit_type, row.type);
    EXPECT_EQ(head()->unit_no, 1u) << row.type;
    EXPECT_EQ(head()->ident[0], doubles::unit_id_of(static_cast<int32_t>(row.type), 1)) << row.type;
    EXPECT_EQ(head()->ident[1], ~doubles::unit_id_of(static_cast<int32_t>(row.type), 1)) << row.type;
    EXPECT_EQ(head()->prev, nullptr);
    EXPECT_EQ(head()->next, nullptr);
  }
}

TEST_F(LmainteSwapFruList, CmuAndIouOfABoardAreMarkedForThemselves) {
  put_status(kIou, 1, kMarked);
  EXPECT_EQ(lmainte_add_swap_fru_to_list(kCmu, 1), 0);
  EXPECT_EQ(lmainte_add_swap_fru_to_list(kIou, 1), 1);
  put_status(kIou, 2, kInstalled);
  put_status(kCmu, 2, kMarked);
  EXPECT_EQ(lmainte_add_swap_fru_to_list(kIou, 2), 1);
  EXPECT_EQ(lmainte_add_swap_fru_to_list(kCmu, 2), 2);
  EXPECT_EQ(list(), "16#2 80#1");
}

TEST_F(LmainteSwapFruList, AddRecordsItsStory) {
  add(kPsu, 7);
  EXPECT_EQ(doubles::trace_of(0x110C0610), (Lines{"100 110C0610", "100 110C0612 161 7", "100 110C0611"}));
  EXPECT_EQ(doubles::trace_of(0x110C0660), (Lines{"100 110C0660", "100 110C0661"}));
  EXPECT_EQ(doubles::trace_of(0x110C0670), (Lines{"100 110C0670", "100 110C0671"}));
  EXPECT_EQ(doubles::trace_of(0x110C0680), (Lines{"100 110C0680", "100 110C0681"}));
  EXPECT_EQ(doubles::trace().front(), "100 110C0610");
  EXPECT_EQ(doubles::trace().back(), "100 110C0611");
}

TEST_F(LmainteSwapFruList, TypeWithoutAReaderFails) {
  for (const uint32_t type : {128U, 130U, 0U, 2U, 32U, 40U, 51U, 104U, 177U, 0xFFFFFFFFU}) {
    arrange();
    EXPECT_EQ(lmainte_add_swap_fru_to_list(type, 0), -1) << type;
    const std::string told = std::to_string(static_cast<int32_t>(type));
    EXPECT_EQ(doubles::trace(),
              (Lines{"100 110C0610", "100 110C0612 " + told + " 0", "100 110C0660", "805 110C1661 " + told,
                     "100 110C0661", "805 110C1611 " + told + " 0", "100 110C0611"}));
    EXPECT_EQ(machine().calls, Lines{});
  }
}

TEST_F(LmainteSwapFruList, ReaderThatFailsAddsNothing) {
  add(kPsu, 0);
  arrange();
  EXPECT_EQ(lmainte_add_swap_fru_to_list(kPsu, 60), -1) << "no record holds number 60";
  machine().fail("get 2 current_psu_info", 0);
  EXPECT_EQ(add(kPsu, 1), -1);
  EXPECT_EQ(list(), "161#0");
  EXPECT_EQ(doubles::trace_of(0x110C0660), (Lines{"100 110C0660", "805 110C1663 161 8", "100 110C0661", "100 110C0660",
                                                  "805 110C1663 161 8", "100 110C0661"}));
}

// ---- memory

TEST_F(LmainteSwapFruList, NodesAreAllThatStaysInMemory) {
  mark_everything();
  EXPECT_EQ(init(3), 10);
  EXPECT_EQ(machine().blocks(), 10u);
  EXPECT_EQ(init(1), 4);
  EXPECT_EQ(machine().blocks(), 4u);
  EXPECT_EQ(lmainte_delete_swap_fru_from_list(kPsu, 0), 3);
  EXPECT_EQ(machine().blocks(), 3u);
  EXPECT_EQ(lmainte_free_swap_fru_list(), 0);
  EXPECT_EQ(machine().blocks(), 0u);
}

TEST_F(LmainteSwapFruList, RecordsThatNoMemoryHoldsFail) {
  machine().fail("calloc", 1, ENOMEM);
  EXPECT_EQ(add(kPsu, 0), -1);
  EXPECT_EQ(doubles::trace_of(0x110C0660), (Lines{"100 110C0660", "800A 110C1662 12", "100 110C0661"}));
  EXPECT_EQ(machine().calls, Lines{"calloc"});
  EXPECT_EQ(list(), "");
}

TEST_F(LmainteSwapFruList, NodeThatNoMemoryHoldsEndsTheCollection) {
  mark_everything();
  add(kPsu, 9);
  machine().calls.clear();
  // The reader of power supplies allocates between the records and the first node.
  const auto allocations = [] {
    const int32_t result = lmainte_add_swap_fru_to_list(kPsu, 9);
    EXPECT_EQ(result, 1);
    return static_cast<int>(machine().calls_of({"calloc"}).size());
  }();
  machine().fail("calloc", allocations + 1, ENOMEM);
  EXPECT_EQ(lmainte_add_swap_fru_to_list(kPsu, 0), -1);
  EXPECT_EQ(list(), "161#9");
  EXPECT_EQ(machine().blocks(), 1u);
  EXPECT_EQ(doubles::trace_of(0x110C0670).at(5), "800A 110C1671 12");
  const auto collected = doubles::trace_of(0x110C0660);
  EXPECT_EQ(collected.at(collected.size() - 2), "805 110C1664 161 -1");
  EXPECT_EQ(add(kPsu, 1), 2);
}

TEST_F(LmainteSwapFruList, EveryAllocationOfABuildMayFail) {
  for (int nth = 1;; ++nth) {
    arrange();
    mark_everything();
    machine().fail("calloc", nth, ENOMEM);
    const int32_t result = init(3);
    const auto text = list();
    const auto nodes = static_cast<size_t>(std::count(text.begin(), text.end(), '#'));
    EXPECT_EQ(machine().blocks(), nodes) << "allocation " << nth;
    lmainte_free_swap_fru_list();
    if (result != -1) {
      EXPECT_EQ(result, 10);
      EXPECT_GT(nth, 20);
      return;
    }
    ASSERT_LT(nth, 100);
  }
}

// ---- removal

TEST_F(LmainteSwapFruList, UnitIsTakenOutWhereverItStands) {
  struct Row {
    uint32_t number;
    const char *left;
  };
  for (const auto &row : {Row{1, "161#2 161#3"}, Row{2, "161#1 161#3"}, Row{3, "161#1 161#2"}}) {
    doubles::put_system_status(0);
    EXPECT_EQ(init(3), 0);
    for (const uint32_t number : {1U, 2U, 3U}) add(kPsu, number);
    EXPECT_EQ(lmainte_delete_swap_fru_from_list(kPsu, row.number), 2);
    EXPECT_EQ(list(), row.left);
    EXPECT_EQ(add(kPsu, row.number), 3);
    EXPECT_EQ(list(), "161#1 161#2 161#3");
  }
}

TEST_F(LmainteSwapFruList, LastUnitLeavesAnEmptyList) {
  add(kPsu, 1);
  arrange();
  EXPECT_EQ(lmainte_delete_swap_fru_from_list(kPsu, 1), 0);
  EXPECT_EQ(head(), nullptr);
  EXPECT_EQ(machine().calls, Lines{});
  EXPECT_EQ(doubles::trace_of(0x110C0620), (Lines{"100 110C0620", "100 110C0621"}));
}

TEST_F(LmainteSwapFruList, UnitThatIsNotInTheListIsNoFailure) {
  add(kPsu, 1);
  arrange();
  EXPECT_EQ(lmainte_delete_swap_fru_from_list(kPsu, 2), 1);
  EXPECT_EQ(lmainte_delete_swap_fru_from_list(kPsu2, 1), 1);
  EXPECT_EQ(list(), "161#1");
  EXPECT_EQ(doubles::trace_of(0x110C0620), (Lines{"100 110C0620", "805 110C1621 161 2", "100 110C0621", "100 110C0620",
                                                  "805 110C1621 162 1", "100 110C0621"}));
}

// ---- asking

TEST_F(LmainteSwapFruList, UnitIsFoundByTypeAndNumber) {
  EXPECT_EQ(lmainte_check_swap_fru(kPsu, 1), 0);
  add(kPsu, 1);
  add(kCmu, 2);
  EXPECT_EQ(lmainte_check_swap_fru(kPsu, 1), 1);
  EXPECT_EQ(lmainte_check_swap_fru(kCmu, 2), 1);
  EXPECT_EQ(lmainte_check_swap_fru(kPsu, 2), 0);
  EXPECT_EQ(lmainte_check_swap_fru(kPsu2, 1), 0);
  EXPECT_EQ(lmainte_check_swap_fru(kCmu, 1), 0);
  arrange();
  EXPECT_EQ(lmainte_check_swap_fru(kPsu, 1), 1);
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C0640", "100 110C0641"}));
  EXPECT_EQ(machine().calls, Lines{});
}

TEST_F(LmainteSwapFruList, HeadIsGivenWhereItIsAskedFor) {
  EXPECT_EQ(lmainte_get_swap_fru_list(nullptr), 0);
  auto *given = reinterpret_cast<lmainte_swap_fru *>(this);
  EXPECT_EQ(lmainte_get_swap_fru_list(&given), 0);
  EXPECT_EQ(given, nullptr);
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C0630", "100 110C0631", "100 110C0630", "100 110C0631"}));
}

// ---- the end

TEST_F(LmainteSwapFruList, FreeEmptiesTheListAndKeepsTheCount) {
  add(kPsu, 1);
  add(kPsu, 2);
  arrange();
  EXPECT_EQ(lmainte_free_swap_fru_list(), 0);
  EXPECT_EQ(list(), "");
  EXPECT_EQ(lmainte_check_swap_fru(kPsu, 1), 0);
  EXPECT_EQ(doubles::trace_of(0x110C0650), (Lines{"100 110C0650", "100 110C0651"}));
  EXPECT_EQ(lmainte_delete_swap_fru_from_list(kPsu, 1), 2);
  EXPECT_EQ(add(kPsu, 3), 3);
  EXPECT_EQ(list(), "161#3");
  EXPECT_EQ(lmainte_free_swap_fru_list(), 0);
  EXPECT_EQ(lmainte_free_swap_fru_list(), 0);
  doubles::put_system_status(0);
  EXPECT_EQ(init(3), 0);
}

// ---- before the first list was made

// Asks before any test runs.
struct AtFirst : ::testing::Environment {
  void SetUp() override {
    machine().start();
    doubles::put_units();
    put_status(kPsu, 0, kMarked);
    lmainte_get_swap_fru_list(&head);
    found = lmainte_check_swap_fru(kPsu, 0);
    left = lmainte_delete_swap_fru_from_list(kPsu, 0);
    freed = lmainte_free_swap_fru_list();
    added = lmainte_add_swap_fru_to_list(kPsu, 0);
    calls = machine().calls;
    machine().stop();
  }

  lmainte_swap_fru *head = reinterpret_cast<lmainte_swap_fru *>(this);
  int32_t found = -7, left = -7, freed = -7, added = -7;
  Lines calls;
};

const AtFirst &at_first = *dynamic_cast<AtFirst *>(::testing::AddGlobalTestEnvironment(new AtFirst));

TEST(SwapFruListAtFirst, IsEmptyAndKnowsNoModel) {
  EXPECT_EQ(at_first.head, nullptr);
  EXPECT_EQ(at_first.found, 0);
  EXPECT_EQ(at_first.left, 0);
  EXPECT_EQ(at_first.freed, 0);
  EXPECT_EQ(at_first.added, -1) << "no reader knows the model 0";
  EXPECT_EQ(at_first.calls, Lines{"calloc"});
}

}  // namespace
