#include <algorithm>

#include "tests/unit/doubles/units.h"
#include "tests/unit/inventory/reader_test.h"

namespace {

using doubles::Bytes;
using doubles::Lines;
using doubles::machine;

const std::string kInstallEntry = "100 110C06B0";
const std::string kInstallExit = "100 110C06B1";

const Lines kOpen = {"open 1", "open 2", "open 3", "open 4"};
const Lines kClose = {"close 4", "close 3", "close 2", "close 1"};

// What the client is asked for at a look at power supply 3 of a high-end model.
const Lines kLook = {"lock 2", "get 2 current_psu_info", "unlock 2", "lock 4", "get 4 fru_psu_qe_info_03", "unlock 4"};

// A power supply that shows at each look what a letter says: I installed, anything else not.
class LmainteChkFruInstall : public doubles::LibraryTest {
 protected:
  void SetUp() override {
    LibraryTest::SetUp();
    arrange("");
  }

  void arrange(const std::string &looks) {
    machine().start();
    doubles::put_units();
    looked_ = 0;
    machine().meanwhile = [this, looks](const std::string &call) {
      if (call != kLook[1] || looks.empty()) return;
      const bool installed = looked_ < looks.size() && looks[looked_] == 'I';
      doubles::put_status(161, 3, installed ? 0x80000000 : 0);
      ++looked_;
    };
  }

  int32_t check(uint32_t expectation) { return lmainte_chk_fru_install(expectation, 161, 3, 3, &psu_); }

  // Seconds of each sleep.
  static std::string slept() {
    std::string seconds;
    for (const auto &call : machine().calls_of({"sleep"})) seconds += call.substr(std::strlen("sleep"));
    return seconds;
  }
  static Lines own_trace() { return doubles::trace_of(0x110C06B0); }
  static Lines check_trace() { return doubles::trace_of(0x110C06C0); }

  PsuData psu_ = {};
  size_t looked_ = 0;
};

struct Row {
  const char *says;
  std::string looks;
  int32_t result;
  const char *slept;
};

// With an expectation of "installed".
const std::vector<Row> &rows() {
  static const std::vector<Row> kRows = {
      {"it is there already and stays", "IIIII", 0, " 5 1 1 1"},
      {"it is late by one pass", "-IIIII", 0, " 5 1 1 1 1"},
      {"it shows up on the third pass and stays", "--IIIII", 0, " 5 1 1 1 1 1"},
      {"it is seen on the last pass", "----IIIII", 0, " 5 1 1 1 1 1 1 1"},
      {"it never comes", "-----", 224, " 5 1 1 1 1 1"},
      {"it vanishes at once", "I-", 224, " 5"},
      {"it vanishes after one look", "II-", 224, " 5 1"},
      {"it vanishes after two looks", "III-", 224, " 5 1 1"},
      {"it vanishes before the last look", "IIII-", 224, " 5 1 1 1"},
      {"it is late and vanishes", "---I-", 224, " 5 1 1 1"},
      {"it flickers", "-I-", 224, " 5 1"},
      {"it is seen on the last pass and vanishes", "----III-", 224, " 5 1 1 1 1 1 1"},
  };
  return kRows;
}

// The other way round.
std::string swapped(std::string looks) {
  std::replace(looks.begin(), looks.end(), 'I', '?');
  std::replace(looks.begin(), looks.end(), '-', 'I');
  return looks;
}

TEST_F(LmainteChkFruInstall, WaitsForAUnitToComeAndStay) {
  for (const uint32_t expectation : {0U, 1U}) {
    for (const auto &row : rows()) {
      arrange(row.looks);
      EXPECT_EQ(check(expectation), row.result) << row.says;
      EXPECT_EQ(looked_, row.looks.size()) << row.says;
      EXPECT_EQ(slept(), row.slept) << row.says;
    }
  }
}

TEST_F(LmainteChkFruInstall, WaitsForAUnitToGoAndStayAway) {
  for (const uint32_t expectation : {2U, 3U, 255U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
    for (const auto &row : rows()) {
      arrange(swapped(row.looks));
      EXPECT_EQ(check(expectation), row.result) << row.says << ", the other way round";
      EXPECT_EQ(looked_, row.looks.size()) << row.says;
      EXPECT_EQ(slept(), row.slept) << row.says;
    }
  }
}

TEST_F(LmainteChkFruInstall, HoldsTheSessionsAndLooksInBetween) {
  arrange("-IIIII");
  EXPECT_EQ(check(1), 0);
  const Lines five = {"sleep 5"};
  const Lines one = {"sleep 1"};
  EXPECT_EQ(machine().calls_of({"open", "lock", "get", "sleep", "unlock", "close"}),
            doubles::joined({kOpen, five, kLook, one, kLook, kLook, one, kLook, one, kLook, one, kLook, kClose}));
}

TEST_F(LmainteChkFruInstall, RecordsItsSteps) {
  arrange("-IIIII");
  EXPECT_EQ(check(1), 0);
  EXPECT_EQ(own_trace(), (Lines{kInstallEntry, kInstallExit}));
  EXPECT_EQ(check_trace(), (Lines{"100 110C06C0", "100 110C06C1"}));
  EXPECT_EQ(doubles::trace_of(0x110C06D0).size(), 12u);
  EXPECT_EQ(doubles::trace_of(0x110C06A0).size(), 12u);
  EXPECT_EQ(doubles::trace().front(), kInstallEntry);
  EXPECT_EQ(doubles::trace().back(), kInstallExit);
}

TEST_F(LmainteChkFruInstall, StateThatIsNotReachedIsRecorded) {
  arrange("-----");
  EXPECT_EQ(check(1), 224);
  EXPECT_EQ(check_trace(), (Lines{"100 110C06C0", "805 110C16C2 224", "100 110C06C1"}));
  EXPECT_EQ(own_trace(), (Lines{kInstallEntry, kInstallExit}));
  arrange("I-");
  EXPECT_EQ(check(1), 224);
  EXPECT_EQ(check_trace(), (Lines{"100 110C06C0", "805 110C16C2 224", "100 110C06C1"}));
}

TEST_F(LmainteChkFruInstall, OnlyBit31SaysInstalled) {
  for (const uint32_t status : {0x80000000U, 0xA0000000U, 0x90000000U, 0x80008000U, 0xFFFFFFFFU}) {
    arrange("");
    doubles::put_status(161, 3, status);
    EXPECT_EQ(check(0), 0) << std::hex << status;
    EXPECT_EQ(check(2), 224) << std::hex << status;
  }
  for (const uint32_t status : {0U, 0x7FFFFFFFU, 0x30000000U, 1U}) {
    arrange("");
    doubles::put_status(161, 3, status);
    EXPECT_EQ(check(0), 224) << std::hex << status;
    EXPECT_EQ(check(2), 0) << std::hex << status;
  }
}

TEST_F(LmainteChkFruInstall, EveryTypeIsLookedAtByItsOwnStatus) {
  constexpr int32_t kTypes[] = {16, 80, 161, 162, 176, 178, 180, 212};
  for (const int32_t type : kTypes) {
    Bytes record(2200, 0);
    arrange("");
    for (const int32_t other : kTypes)
      for (uint32_t n = 0; n < 2; ++n) doubles::put_status(other, n, 0);
    doubles::put_status(type, 1, 0x80000000);
    EXPECT_EQ(lmainte_chk_fru_install(0, type, 1, 3, record.data()), 0) << type;
    arrange("");
    doubles::put_status(type, 1, 0);
    EXPECT_EQ(lmainte_chk_fru_install(0, type, 1, 3, record.data()), 224) << type;
    EXPECT_EQ(lmainte_chk_fru_install(2, type, 1, 3, record.data()), 0) << type;
  }
}

TEST_F(LmainteChkFruInstall, EveryModelIsChecked) {
  for (int32_t model = 1; model <= 6; ++model) {
    arrange("");
    EXPECT_EQ(lmainte_chk_fru_install(0, 161, 0, model, &psu_), 0) << model;
    EXPECT_EQ(lmainte_chk_fru_install(9, 161, 0, model, &psu_), 224) << model;
  }
}

TEST_F(LmainteChkFruInstall, RecordIsThatOfTheLastLook) {
  arrange("----IIII-");
  EXPECT_EQ(check(0), 224);
  EXPECT_EQ(psu_.number, 3);
  EXPECT_EQ(psu_.unit_id[0], doubles::unit_id_of(161, 3));
  EXPECT_EQ(psu_.status, 0);
  arrange("IIIII");
  EXPECT_EQ(check(0), 0);
  EXPECT_EQ(static_cast<uint32_t>(psu_.status), 0x80000000u);
}

TEST_F(LmainteChkFruInstall, InterruptedSleepIsNotResumed) {
  arrange("-IIIII");
  machine().fail("sleep", 0);
  EXPECT_EQ(check(0), 0);
  EXPECT_EQ(slept(), " 5 1 1 1 1");
}

// ---- refusals

TEST_F(LmainteChkFruInstall, RefusedArgumentsTouchNothingAndDoNotWait) {
  struct Arguments {
    const char *says;
    int32_t index, model;
    void *record;
  };
  for (const auto &row : {Arguments{"all units", -1, 3, &psu_},
                          {"no record", 3, 3, nullptr},
                          {"no model", 3, 0, &psu_},
                          {"a model too many", 3, 7, &psu_},
                          {"a negative model", 3, -1, &psu_}}) {
    arrange("");
    EXPECT_EQ(lmainte_chk_fru_install(0, 161, row.index, row.model, row.record), 8) << row.says;
    EXPECT_EQ(machine().calls, Lines{}) << row.says;
    const std::string values = std::to_string(row.index) + " " + std::to_string(row.model);
    EXPECT_EQ(doubles::trace(), (Lines{kInstallEntry, "805 110C16B1 " + values, kInstallExit})) << row.says;
  }
}

TEST_F(LmainteChkFruInstall, UnknownTypeFailsAtTheFirstLook) {
  for (const int32_t type : {0, 40, 128, 130, 999, -16}) {
    arrange("");
    Bytes record(2200, doubles::kUntouched);
    EXPECT_EQ(lmainte_chk_fru_install(0, type, 3, 3, record.data()), 8) << type;
    EXPECT_EQ(machine().calls, doubles::joined({kOpen, {"sleep 5"}, kClose})) << type;
    EXPECT_EQ(check_trace(), (Lines{"100 110C06C0", "805 110C16C1 8", "100 110C06C1"})) << type;
    EXPECT_EQ(record, Bytes(2200, doubles::kUntouched)) << type;
  }
}

TEST_F(LmainteChkFruInstall, IndexThatNoRecordHoldsFailsAtTheFirstLook) {
  for (const int32_t index : {-2, 60, INT32_MIN, INT32_MAX}) {
    arrange("");
    EXPECT_EQ(lmainte_chk_fru_install(0, 161, index, 3, &psu_), 8) << index;
    EXPECT_EQ(slept(), " 5") << index;
  }
}

// ---- databases that fail

TEST_F(LmainteChkFruInstall, OpenThatFailsClosesWhatIsOpen) {
  for (size_t n = 0; n < kOpen.size(); ++n) {
    arrange("");
    machine().fail(kOpen[n]);
    EXPECT_EQ(check(0), 8);
    Lines expected(kOpen.begin(), kOpen.begin() + static_cast<ptrdiff_t>(n) + 1);
    expected.insert(expected.end(), kClose.end() - static_cast<ptrdiff_t>(n), kClose.end());
    EXPECT_EQ(machine().calls, expected);
    EXPECT_EQ(own_trace(), (Lines{kInstallEntry, "805 110C16B2 " + std::to_string(n + 1) + " -1", kInstallExit}));
  }
}

TEST_F(LmainteChkFruInstall, CloseThatFailsSpoilsEveryResult) {
  for (const char *looks : {"IIIII", "-----", "I-"}) {
    for (const auto &close : kClose) {
      doubles::in_a_process_of_its_own([this, looks, close] {
        arrange(looks);
        machine().fail(close);
        EXPECT_EQ(check(0), 8) << close;
        EXPECT_EQ(machine().calls_of({"close"}), kClose);
        EXPECT_EQ(own_trace(), (Lines{kInstallEntry, "805 110C16B5 " + close.substr(6) + " -1", kInstallExit}));
      });
    }
  }
}

TEST_F(LmainteChkFruInstall, LookThatFailsEndsTheCheck) {
  struct Failing {
    const char *says, *looks;
    int nth;
    const char *slept;
  };
  for (const auto &row : {Failing{"the first", "I", 1, " 5"},
                          {"one before the unit comes", "---", 3, " 5 1 1"},
                          {"the last before it would be too late", "-----", 5, " 5 1 1 1 1"},
                          {"the first after the unit came", "II", 2, " 5"},
                          {"the last", "IIIII", 5, " 5 1 1 1"}}) {
    arrange(row.looks);
    machine().fail(kLook[1], row.nth);
    EXPECT_EQ(check(0), 8) << row.says;
    EXPECT_EQ(slept(), row.slept) << row.says;
    EXPECT_EQ(check_trace(), (Lines{"100 110C06C0", "805 110C16C1 8", "100 110C06C1"})) << row.says;
    EXPECT_EQ(own_trace(), (Lines{kInstallEntry, kInstallExit})) << row.says;
    EXPECT_EQ(machine().calls_of({"close"}), kClose) << row.says;
  }
}

TEST_F(LmainteChkFruInstall, WorksInsideTheCallersOwnSessions) {
  doubles::within_sessions({1, 2, 3, 4}, [this] { EXPECT_EQ(check(0), 0); });
}

}  // namespace
