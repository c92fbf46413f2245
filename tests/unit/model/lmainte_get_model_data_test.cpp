#include <cstring>

#include <gtest/gtest.h>

#include "tests/unit/doubles/library_test.h"

namespace {

using doubles::Bytes;
using doubles::in_a_process_of_its_own;
using doubles::Lines;
using doubles::machine;
using doubles::RecordBytes;

constexpr uint32_t kUntouched = 0x5A5A5A5A;
constexpr uint32_t kEnd = 0xFFFFFFFF;

struct Model {
  const char *name;
  uint32_t code;
  const char *family;
};

constexpr Model kQb1 = {"qb1", 1, "qb"}, kQb2 = {"qb2", 2, "qb"}, kQe1 = {"qe1", 3, "qe"}, kQe2 = {"qe2", 4, "qe"},
                kQe3 = {"qe3", 5, "qe"}, kQa = {"qa", 6, "qa"};
constexpr Model kModels[] = {kQb1, kQb2, kQe1, kQe2, kQe3, kQa};

// A model once found is kept by the library, so each case is a process of its own.
class LmainteGetModelData : public doubles::LibraryTest {
 protected:
  void SetUp() override {
    LibraryTest::SetUp();
    put_system(0x80);
    machine().records[{1, "setup_system_info"}] = {Bytes(248)};
    put_general(24);
    for (const char *family : {"qa", "qb", "qe"}) {
      control_file(family) = time_file(64, 1000);
      command_file(family) = time_file(32, 2000);
    }
    std::memset(&data_, 0x5A, sizeof data_);
  }

  void put_system(uint8_t flags) {
    machine().records[{2, "current_system_info"}] = {RecordBytes(176).byte(148, flags)};
  }
  void put_general(uint32_t power_supplies) {
    RecordBytes record(1408);
    for (uint32_t n = 0; n < 12; ++n) record.word(size_t{4} * n, 50 + n);
    record.word(32, power_supplies);
    machine().records[{0, "gen_system_info"}] = {record};
  }

  // A file of 32-bit times, the most significant byte first: first, first + 1 and so on. The high bytes are used too.
  static Bytes time_file(uint32_t words, uint32_t first) {
    Bytes bytes;
    for (uint32_t n = 0; n < words; ++n) {
      const uint32_t time = 0x01020000 + first + n;
      for (const int shift : {24, 16, 8, 0}) bytes.push_back(static_cast<uint8_t>(time >> shift));
    }
    return bytes;
  }
  static uint32_t control_time(uint32_t n) { return 0x01020000 + 1000 + n; }
  static uint32_t command_time(uint32_t n) { return 0x01020000 + 2000 + n; }

  Bytes &control_file(const std::string &family) { return machine().files["/mgb/cli/etc/controltime_" + family]; }
  Bytes &command_file(const std::string &family) { return machine().files["/mgb/cli/etc/cmdtime_" + family]; }
  void mark(const Model &model) { machine().markers.insert(std::string("/tmp/.") + model.name); }
  void unmark(const Model &model) { machine().markers.erase(std::string("/tmp/.") + model.name); }

  int32_t get() { return lmainte_get_model_data(&data_, nullptr); }

  lmainte_model_data data_;
  lmainte_cmdtime times_[3] = {{3, kUntouched}, {20, kUntouched}, {kEnd, kUntouched}};
};

// ---- which model

TEST_F(LmainteGetModelData, EveryMarkerNamesItsModel) {
  for (const auto &model : kModels) {
    in_a_process_of_its_own([&] {
      mark(model);
      EXPECT_EQ(get(), 0) << model.name;
      EXPECT_EQ(data_.model, model.code) << model.name;
    });
  }
}

struct MarkersRow {
  std::vector<Model> markers;
  uint32_t model;
};

TEST_F(LmainteGetModelData, FirstMarkerInTheOrderOfTheListsWins) {
  const MarkersRow rows[] = {
      {{kQa, kQe2}, 6},  {{kQb2, kQe1}, 2}, {{kQb1, kQb2}, 1}, {{kQe1, kQe2, kQe3}, 3},
      {{kQe2, kQe3}, 4}, {{kQe3, kQb2}, 2}, {{kQa, kQb1}, 6},  {{kQa, kQb1, kQb2, kQe1, kQe2, kQe3}, 6}};
  for (const auto &row : rows) {
    in_a_process_of_its_own([&] {
      for (const auto &model : row.markers) mark(model);
      EXPECT_EQ(get(), 0);
      EXPECT_EQ(data_.model, row.model);
    });
  }
}

TEST_F(LmainteGetModelData, LooksAtTheMarkersInOrderUntilOneExists) {
  in_a_process_of_its_own([&] {
    mark(kQe2);
    get();
    EXPECT_EQ(machine().calls_of({"stat"}),
              (Lines{"stat /tmp/.qa", "stat /tmp/.qb1", "stat /tmp/.qb2", "stat /tmp/.qe1", "stat /tmp/.qe2"}));
  });
}

TEST_F(LmainteGetModelData, FoundModelIsNeverLookedUpAgain) {
  for (const auto &model : {kQa, kQe1}) {
    in_a_process_of_its_own([&] {
      mark(model);
      EXPECT_EQ(get(), 0);
      unmark(model);
      mark(kQb1);
      machine().calls.clear();
      EXPECT_EQ(get(), 0);
      EXPECT_EQ(data_.model, model.code);
      EXPECT_EQ(machine().calls_of({"stat"}), Lines{});
    });
  }
}

TEST_F(LmainteGetModelData, AbsenceOfEveryMarkerIsLookedUpAgain) {
  in_a_process_of_its_own([&] {
    EXPECT_EQ(get(), 8);
    EXPECT_EQ(machine().calls_of({"stat"}).size(), 6u);
    EXPECT_EQ(get(), 8);
    EXPECT_EQ(machine().calls_of({"stat"}).size(), 12u);
    mark(kQe3);
    EXPECT_EQ(get(), 0);
    EXPECT_EQ(data_.model, 5u);
  });
}

TEST_F(LmainteGetModelData, EntryMarkerThatComesLaterIsFound) {
  in_a_process_of_its_own([&] {
    EXPECT_EQ(get(), 8);
    mark(kQa);
    EXPECT_EQ(get(), 0);
    EXPECT_EQ(data_.model, 6u);
  });
}

TEST_F(LmainteGetModelData, MarkerWithAnInodeTooLargeForThisBuildExists) {
  in_a_process_of_its_own([&] {
    machine().fail("stat /tmp/.qb2", 1, EOVERFLOW);
    EXPECT_EQ(get(), 0);
    EXPECT_EQ(data_.model, 2u);
  });
}

TEST_F(LmainteGetModelData, MarkerThatCannotBeLookedAtIsAbsent) {
  in_a_process_of_its_own([&] {
    mark(kQb1);
    mark(kQb2);
    machine().fail("stat /tmp/.qb1", 1, EACCES);
    EXPECT_EQ(get(), 0);
    EXPECT_EQ(data_.model, 2u);
  });
}

TEST_F(LmainteGetModelData, NoMarkerFailsAfterTheModelAndTheFlags) {
  in_a_process_of_its_own([&] {
    EXPECT_EQ(get(), 8);
    EXPECT_EQ(data_.model, 0u);
    EXPECT_EQ(data_.system_flags, 0x80u);
    EXPECT_EQ(data_.unit[0].max_count, kUntouched);
    EXPECT_EQ(machine().calls_of({"get", "lopen"}),
              (Lines{"get 2 current_system_info", "get 1 setup_system_info", "get 0 gen_system_info"}));
    EXPECT_EQ(doubles::trace_of(0x110C0440),
              (Lines{"100 110C0440", "100 110C0442 0", "805 110C1446 0", "100 110C0441"}));
  });
}

// ---- counts

struct CountRow {
  Model model;
  uint32_t count[11];  // of slots 0 to 10
  uint32_t last;       // of slot 12
};

TEST_F(LmainteGetModelData, EveryModelHasItsUnitCounts) {
  const CountRow rows[] = {
      {kQb1, {50, 51, 8, 56, 24, 1, 8, 2, 2, 14, 1}, kUntouched},
      {kQb2, {50, 51, 8, 56, 24, 1, 8, 2, 2, 14, 1}, kUntouched},
      {kQe1, {50, 51, 8, 56, 24, 1, 8, 2, 2, 14, 2}, 2},
      {kQe2, {50, 51, 8, 56, 24, 1, 8, 2, 2, 14, 2}, 2},
      {kQe3, {50, 51, 8, 56, 24, 1, 8, 2, 2, 14, 4}, 2},
      {kQa, {50, 51, 8, 56, 24, 1, 8, 2, 2, 14, 1}, kUntouched},
  };
  for (const auto &row : rows) {
    in_a_process_of_its_own([&] {
      mark(row.model);
      EXPECT_EQ(get(), 0);
      for (size_t slot = 0; slot < 11; ++slot)
        EXPECT_EQ(data_.unit[slot].max_count, row.count[slot]) << row.model.name << " slot " << slot;
      EXPECT_EQ(data_.unit[11].max_count, kUntouched) << row.model.name;
      EXPECT_EQ(data_.unit[12].max_count, row.last) << row.model.name;
    });
  }
}

struct PowerRow {
  const char *says;
  Model model;
  uint8_t flags;
  uint32_t stored, count;
};

TEST_F(LmainteGetModelData, HighEndCountsHalfItsPowerSuppliesUnlessAllCount) {
  const PowerRow rows[] = {
      {"qe1 halves", kQe1, 0x00, 18, 9},
      {"qe2 halves", kQe2, 0x7F, 30, 15},
      {"qe3 halves downwards", kQe3, 0x00, 7, 3},
      {"qe3 counts all", kQe3, 0x80, 7, 7},
      {"any flags with bit 7 count all", kQe1, 0xFF, 18, 18},
      {"qa never halves", kQa, 0x00, 7, 7},
      {"qb1 never halves", kQb1, 0x00, 7, 7},
      {"qb2 never halves", kQb2, 0x00, 7, 7},
      {"halving knows no sign", kQe1, 0x00, 0x80000002, 0x40000001},
  };
  for (const auto &row : rows) {
    in_a_process_of_its_own([&] {
      mark(row.model);
      put_system(row.flags);
      put_general(row.stored);
      EXPECT_EQ(get(), 0) << row.says;
      EXPECT_EQ(data_.unit[4].max_count, row.count) << row.says;
      EXPECT_EQ(data_.system_flags, row.flags) << row.says;
    });
  }
}

// ---- control times

TEST_F(LmainteGetModelData, EveryFamilyHasItsControlTimes) {
  for (const auto &model : kModels) {
    in_a_process_of_its_own([&] {
      mark(model);
      EXPECT_EQ(get(), 0);
      for (uint32_t slot = 0; slot < 11; ++slot) {
        EXPECT_EQ(data_.unit[slot].control_time_1, control_time(slot)) << slot;
        EXPECT_EQ(data_.unit[slot].control_time_2, control_time(32 + slot)) << slot;
      }
      EXPECT_EQ(machine().calls_of({"lopen", "lread", "lclose"}),
                (Lines{std::string("lopen /mgb/cli/etc/controltime_") + model.family, "lread 256", "lclose"}));
    });
  }
}

TEST_F(LmainteGetModelData, TwelfthTimeBelongsToSlot12AndSlot11TakesNone) {
  for (const auto &model : kModels) {
    in_a_process_of_its_own([&] {
      mark(model);
      get();
      EXPECT_EQ(data_.unit[11].control_time_1, kUntouched);
      EXPECT_EQ(data_.unit[11].control_time_2, kUntouched);
      EXPECT_EQ(data_.unit[12].control_time_1, control_time(11));
      EXPECT_EQ(data_.unit[12].control_time_2, control_time(43));
    });
  }
}

struct SizeRow {
  size_t size;
  int32_t result;
};

TEST_F(LmainteGetModelData, ControlTimeFileNeeds256Bytes) {
  for (const SizeRow &row : {SizeRow{0, 8}, {255, 8}, {256, 0}, {300, 0}}) {
    in_a_process_of_its_own([&] {
      mark(kQe1);
      control_file("qe").resize(row.size);
      EXPECT_EQ(get(), row.result) << row.size;
      EXPECT_EQ(data_.unit[0].control_time_1, row.result == 0 ? control_time(0) : kUntouched) << row.size;
      EXPECT_EQ(data_.unit[0].max_count, 50u) << row.size;
      EXPECT_EQ(machine().left_behind(), Lines{}) << row.size;
    });
  }
}

TEST_F(LmainteGetModelData, ShortReadOfALongFileIsNotRepeated) {
  in_a_process_of_its_own([&] {
    mark(kQe1);
    machine().read_at_most = 100;
    EXPECT_EQ(get(), 8);
    EXPECT_EQ(machine().calls_of({"lread", "lclose"}), (Lines{"lread 256", "lclose"}));
    EXPECT_EQ(doubles::trace_of(0x110C0460), (Lines{"100 110C0460", "800A 110C1462 100 4", "100 110C0461"}));
  });
}

TEST_F(LmainteGetModelData, MissingControlTimeFileFails) {
  in_a_process_of_its_own([&] {
    mark(kQa);
    machine().files.erase("/mgb/cli/etc/controltime_qa");
    EXPECT_EQ(get(), 8);
    EXPECT_EQ(doubles::trace_of(0x110C0460), (Lines{"100 110C0460", "800A 110C1461 -1 2", "100 110C0461"}));
    EXPECT_EQ(data_.unit[0].max_count, 50u);
    EXPECT_EQ(data_.unit[0].control_time_1, kUntouched);
  });
}

TEST_F(LmainteGetModelData, ControlTimeFileThatCannotBeReadFailsAndIsClosed) {
  in_a_process_of_its_own([&] {
    mark(kQa);
    machine().fail("lread", 1, EIO, -7);
    EXPECT_EQ(get(), 8);
    EXPECT_EQ(doubles::trace_of(0x110C0460), (Lines{"100 110C0460", "800A 110C1462 -7 5", "100 110C0461"}));
    EXPECT_EQ(machine().left_behind(), Lines{});
  });
}

TEST_F(LmainteGetModelData, ControlTimesAreTakenThoughTheFileFailsToClose) {
  in_a_process_of_its_own([&] {
    mark(kQa);
    machine().fail("lclose", 1, EDQUOT, -2);
    EXPECT_EQ(get(), 8);
    EXPECT_EQ(data_.unit[0].control_time_1, control_time(0));
    EXPECT_EQ(doubles::trace_of(0x110C0460).at(1), "800A 110C1463 -2 " + std::to_string(EDQUOT));
  });
}

TEST_F(LmainteGetModelData, FailedReadAndFailedCloseAreBothRecorded) {
  in_a_process_of_its_own([&] {
    mark(kQa);
    machine().fail("lread", 1, EIO);
    machine().fail("lclose", 1, ENOSPC);
    EXPECT_EQ(get(), 8);
    EXPECT_EQ(doubles::trace_of(0x110C0460),
              (Lines{"100 110C0460", "800A 110C1462 -1 5", "800A 110C1463 -1 28", "100 110C0461"}));
  });
}

// ---- command times

TEST_F(LmainteGetModelData, CommandTimesAreFilledByTheirNumbers) {
  in_a_process_of_its_own([&] {
    mark(kQb2);
    EXPECT_EQ(lmainte_get_model_data(nullptr, times_), 0);
    EXPECT_EQ(times_[0].time, command_time(3));
    EXPECT_EQ(times_[1].time, 0u);
    EXPECT_EQ(times_[2].time, kUntouched);
    EXPECT_EQ(times_[0].cmd_id, 3u);
  });
}

TEST_F(LmainteGetModelData, NumbersFrom16OnHaveNoTime) {
  in_a_process_of_its_own([&] {
    mark(kQb2);
    lmainte_cmdtime times[] = {{0, 1}, {15, 1}, {16, 1}, {0xFFFFFFFE, 1}, {3, 1}, {3, 1}, {kEnd, 1}};
    EXPECT_EQ(lmainte_get_model_data(nullptr, times), 0);
    EXPECT_EQ(times[0].time, command_time(0));
    EXPECT_EQ(times[1].time, command_time(15));
    EXPECT_EQ(times[2].time, 0u);
    EXPECT_EQ(times[3].time, 0u);
    EXPECT_EQ(times[4].time, command_time(3));
    EXPECT_EQ(times[5].time, command_time(3));
  });
}

TEST_F(LmainteGetModelData, CommandTimesAloneReadTheSystemRecordAndOneFile) {
  for (const auto &model : kModels) {
    in_a_process_of_its_own([&] {
      mark(model);
      EXPECT_EQ(lmainte_get_model_data(nullptr, times_), 0);
      EXPECT_EQ(machine().calls_of({"open", "lock", "get", "unlock", "close", "lopen", "lread", "lclose"}),
                (Lines{"open 2", "lock 2", "get 2 current_system_info", "unlock 2", "close 2",
                       std::string("lopen /mgb/cli/etc/cmdtime_") + model.family, "lread 128", "lclose"}));
    });
  }
}

TEST_F(LmainteGetModelData, CommandTimesAloneStillNeedTheSystemRecord) {
  in_a_process_of_its_own([&] {
    mark(kQa);
    machine().records.erase({2, "current_system_info"});
    EXPECT_EQ(lmainte_get_model_data(nullptr, times_), 8);
    EXPECT_EQ(machine().calls_of({"stat", "lopen"}), Lines{});
  });
}

TEST_F(LmainteGetModelData, CommandTimesWithoutAMarkerFail) {
  in_a_process_of_its_own([&] {
    EXPECT_EQ(lmainte_get_model_data(nullptr, times_), 8);
    EXPECT_EQ(times_[0].time, kUntouched);
    EXPECT_EQ(machine().calls_of({"lopen"}), Lines{});
    EXPECT_EQ(doubles::trace_of(0x110C0440),
              (Lines{"100 110C0440", "100 110C0442 0", "805 110C1446 0", "100 110C0441"}));
  });
}

TEST_F(LmainteGetModelData, CommandTimeFileNeeds128Bytes) {
  for (const SizeRow &row : {SizeRow{0, 8}, {127, 8}, {128, 0}, {200, 0}}) {
    in_a_process_of_its_own([&] {
      mark(kQe1);
      command_file("qe").resize(row.size);
      EXPECT_EQ(lmainte_get_model_data(nullptr, times_), row.result) << row.size;
      EXPECT_EQ(times_[0].time, row.result == 0 ? command_time(3) : kUntouched) << row.size;
    });
  }
}

TEST_F(LmainteGetModelData, CommandTimesAreNotTakenWhenTheFileFailsToClose) {
  in_a_process_of_its_own([&] {
    mark(kQe1);
    machine().fail("lclose");
    EXPECT_EQ(lmainte_get_model_data(nullptr, times_), 8);
    EXPECT_EQ(times_[0].time, kUntouched);
    EXPECT_EQ(times_[1].time, kUntouched);
  });
}

TEST_F(LmainteGetModelData, MissingCommandTimeFileFails) {
  in_a_process_of_its_own([&] {
    mark(kQe1);
    machine().files.erase("/mgb/cli/etc/cmdtime_qe");
    EXPECT_EQ(lmainte_get_model_data(nullptr, times_), 8);
    EXPECT_EQ(doubles::trace_of(0x110C0460).at(1), "800A 110C1461 -1 2");
  });
}

TEST_F(LmainteGetModelData, EmptyCommandListStillNeedsItsFile) {
  in_a_process_of_its_own([&] {
    mark(kQe1);
    lmainte_cmdtime none[] = {{kEnd, 1}};
    EXPECT_EQ(lmainte_get_model_data(nullptr, none), 0);
    machine().files.erase("/mgb/cli/etc/cmdtime_qe");
    EXPECT_EQ(lmainte_get_model_data(nullptr, none), 8);
  });
}

// ---- both at once

TEST_F(LmainteGetModelData, GivesModelAndTimesInOneCall) {
  in_a_process_of_its_own([&] {
    mark(kQe3);
    EXPECT_EQ(lmainte_get_model_data(&data_, times_), 0);
    EXPECT_EQ(data_.model, 5u);
    EXPECT_EQ(times_[0].time, command_time(3));
    EXPECT_EQ(machine().calls_of({"open", "lock", "get", "unlock", "close", "lopen"}),
              (Lines{"open 2", "lock 2", "get 2 current_system_info", "unlock 2", "close 2", "open 1", "lock 1",
                     "get 1 setup_system_info", "unlock 1", "close 1", "open 0", "lock 0", "get 0 gen_system_info",
                     "unlock 0", "close 0", "lopen /mgb/cli/etc/controltime_qe", "lopen /mgb/cli/etc/cmdtime_qe"}));
    EXPECT_EQ(doubles::trace_of(0x110C0440), (Lines{"100 110C0440", "100 110C0442 5", "100 110C0441"}));
    EXPECT_EQ(doubles::trace_of(0x110C0450), (Lines{"100 110C0450", "100 110C0451"}));
    EXPECT_EQ(doubles::trace().front(), "100 110C0440");
    EXPECT_EQ(doubles::trace().back(), "100 110C0441");
  });
}

TEST_F(LmainteGetModelData, FailureOfTheModelLeavesTheTimesUntouched) {
  in_a_process_of_its_own([&] {
    mark(kQe3);
    machine().records.erase({0, "gen_system_info"});
    EXPECT_EQ(lmainte_get_model_data(&data_, times_), 8);
    EXPECT_EQ(times_[0].time, kUntouched);
    EXPECT_EQ(machine().calls_of({"lopen"}), Lines{});
  });
}

TEST_F(LmainteGetModelData, NothingToFillIsRefused) {
  in_a_process_of_its_own([&] {
    EXPECT_EQ(lmainte_get_model_data(nullptr, nullptr), 8);
    EXPECT_EQ(machine().calls, Lines{});
    EXPECT_EQ(doubles::trace(), (Lines{"100 110C0440", "805 110C1441", "100 110C0441"}));
  });
}

// ---- records

struct RecordRow {
  const char *says;
  uint32_t db_id;
  const char *name;
  size_t size;
  const char *event;  // with which the function records it
};

constexpr RecordRow kRecords[] = {
    {"the current system record", 2, "current_system_info", 176, "805 110C1442"},
    {"the setup record", 1, "setup_system_info", 248, "805 110C1443"},
    {"the general record", 0, "gen_system_info", 1408, "805 110C1444"},
};

TEST_F(LmainteGetModelData, MissingRecordFails) {
  for (const auto &row : kRecords) {
    in_a_process_of_its_own([&] {
      mark(kQe3);
      machine().records.erase({row.db_id, row.name});
      EXPECT_EQ(get(), 8) << row.says;
      const auto trace = doubles::trace_of(0x110C0440);
      EXPECT_EQ(trace.at(trace.size() - 2), row.event) << row.says;
      EXPECT_EQ(data_.unit[0].max_count, kUntouched) << row.says;
      EXPECT_EQ(machine().left_behind(), Lines{}) << row.says;
    });
  }
}

TEST_F(LmainteGetModelData, RecordOfAnotherSizeFails) {
  for (const auto &row : kRecords) {
    for (const size_t size : {row.size - 1, row.size + 1}) {
      in_a_process_of_its_own([&] {
        mark(kQe3);
        machine().records[{row.db_id, row.name}] = {Bytes(size)};
        EXPECT_EQ(get(), 8) << row.says;
        EXPECT_EQ(machine().left_behind(), Lines{}) << row.says;
      });
    }
  }
}

TEST_F(LmainteGetModelData, EmptyRecordFails) {
  for (const auto &row : kRecords) {
    in_a_process_of_its_own([&] {
      mark(kQe3);
      machine().records[{row.db_id, row.name}] = {Bytes(row.size), 0, false};
      EXPECT_EQ(get(), 8) << row.says;
      const auto trace = doubles::trace_of(0x110C0440);
      EXPECT_EQ(trace.at(trace.size() - 2), row.event) << row.says;
    });
  }
}

TEST_F(LmainteGetModelData, FailureLeavesTheStepsAlreadyDone) {
  in_a_process_of_its_own([&] {
    mark(kQe3);
    machine().records.erase({1, "setup_system_info"});
    get();
    EXPECT_EQ(data_.model, 5u);
    EXPECT_EQ(data_.system_flags, kUntouched);
  });
}

// ---- the caller's own locks

struct LockRow {
  std::vector<uint32_t> held;
  int32_t result;
};

TEST_F(LmainteGetModelData, CallerMayHoldADatabaseOnlyWithAllBelowIt) {
  const LockRow rows[] = {{{0}, 0}, {{0, 1}, 0}, {{0, 1, 2}, 0}, {{1}, 8}, {{2}, 8}, {{3}, 8}, {{4}, 8}};
  for (const auto &row : rows) {
    in_a_process_of_its_own([&] {
      mark(kQe3);
      for (const uint32_t id : row.held) {
        EXPECT_EQ(lmainte_scdb_open(id), 0);
        EXPECT_EQ(lmainte_scdb_lock(id), 0);
      }
      EXPECT_EQ(get(), row.result) << row.held.back();
    });
  }
}

}  // namespace
