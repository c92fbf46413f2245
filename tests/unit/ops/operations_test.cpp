// All operations alike: what each runs, what it makes of the exit statuses, and what it refuses.

#include <csignal>
#include <cstring>

#include <gtest/gtest.h>

#include "tests/unit/doubles/library_test.h"
#include "tests/unit/ops/operations.h"

namespace {

using doubles::Lines;
using doubles::machine;
using doubles::Operation;

class Operations : public doubles::LibraryTest, public ::testing::WithParamInterface<Operation> {
 protected:
  const Operation &op() { return GetParam(); }
  bool traced() { return op().entry != 0; }
  int32_t a_mode() { return op().lines.begin()->first; }
  int32_t result_of(int32_t status) {
    const auto meaning = op().meanings.find(status);
    return meaning != op().meanings.end() ? meaning->second : op().otherwise;
  }

  // A record of the operation, in the form of doubles::trace(). `what` is its number and its values.
  std::string record(const char *level, uint32_t offset, const std::string &what, int32_t mode, int32_t status = 0) {
    size_t used = 0;
    const auto number = static_cast<uint32_t>(std::stoul(what, &used));
    char event[32];
    std::snprintf(event, sizeof event, "%s %08X", level, op().entry + offset + number);
    std::string text = event;
    for (const char c : what.substr(used)) {
      if (c == 'M')
        text += std::to_string(mode);
      else if (c == 'S')
        text += std::to_string(status);
      else
        text += c;
    }
    return text;
  }
  std::string point(const std::string &what, int32_t mode, int32_t status = 0) {
    return record("100", 0, what, mode, status);
  }
  std::string error(const std::string &what, int32_t mode, int32_t status = 0) {
    const bool second_space = (op().entry & 0x8000) != 0;
    return record("805", second_space ? 0x3000 : 0x1000, what, mode, status);
  }

  // What stands between the entry and the running of the program.
  Lines opening(int32_t mode) {
    Lines lines = {point("0", mode)};
    for (const auto &what : op().opening) lines.push_back(point(what, mode));
    return lines;
  }
  Lines own_trace() { return doubles::trace_of(op().entry); }

  void expect_trace_of_status(int32_t mode, int32_t status) {
    if (!traced()) {
      EXPECT_EQ(doubles::trace(), doubles::trace_of(0x110C0020));
      return;
    }
    Lines expected = opening(mode);
    expected.push_back(point(op().status_point, mode, status));
    if (result_of(status) != 0) expected.push_back(error(op().status_error, mode, status));
    expected.push_back(point("1", mode));
    EXPECT_EQ(own_trace(), expected) << "mode " << mode << ", status " << status;
    EXPECT_EQ(doubles::trace().front(), expected.front());
    EXPECT_EQ(doubles::trace().back(), expected.back());
  }
};

INSTANTIATE_TEST_SUITE_P(All, Operations, ::testing::ValuesIn(doubles::operations()),
                         [](const auto &row) { return row.param.name; });

TEST_P(Operations, EveryModeRunsItsProgramWithItsLine) {
  for (const auto &[mode, line] : op().lines) {
    machine().start();
    machine().children_are_real = true;
    EXPECT_EQ(op().call(mode, 10), 0) << mode;
    std::string arguments = op().path;
    arguments += "\n";
    EXPECT_EQ(machine().executed().arguments, arguments + line) << mode;
    EXPECT_EQ(machine().executed().path, op().path) << mode;
  }
}

TEST_P(Operations, EveryExitStatusHasItsMeaningAndItsRecords) {
  for (const auto &[mode, line] : op().lines) {
    for (int status = 0; status < 256; ++status) {
      machine().start();
      machine().programs = {doubles::exits(status)};
      EXPECT_EQ(op().call(mode, 10), result_of(status)) << "mode " << mode << ", status " << status;
      expect_trace_of_status(mode, status);
    }
  }
}

TEST_P(Operations, UnknownModeRunsNothing) {
  for (const int32_t mode : op().refused_modes) {
    machine().start();
    EXPECT_EQ(op().call(mode, 10), 8) << mode;
    EXPECT_EQ(machine().calls, Lines{}) << mode;
    Lines expected;
    if (traced()) {
      expected = opening(mode);
      expected.push_back(error(op().mode_error, mode));
      expected.push_back(point("1", mode));
    }
    EXPECT_EQ(doubles::trace(), expected) << mode;
  }
}

TEST_P(Operations, TimeLimitThatIsNotAboveZeroRunsNothing) {
  for (const int32_t limit : {0, -1, INT32_MIN}) {
    machine().start();
    EXPECT_EQ(op().call(a_mode(), limit), 8) << limit;
    EXPECT_EQ(machine().calls, Lines{}) << limit;
    if (!traced()) continue;
    EXPECT_EQ(doubles::trace(), (Lines{point("0", 0), error("1", 0), point("1", 0)})) << limit;
  }
}

TEST_P(Operations, TimeLimitIsTheCallers) {
  machine().programs = {doubles::exits(0, 3)};
  EXPECT_EQ(op().call(a_mode(), 3), 0);
  EXPECT_EQ(machine().clock, 3);
  machine().programs = {doubles::hangs()};
  EXPECT_EQ(op().call(a_mode(), 2), 8);
  EXPECT_EQ(machine().clock, 5);
}

TEST_P(Operations, ProgramThatDoesNotRunGives8) {
  for (const char *call : {"fork", "calloc"}) {
    machine().start();
    machine().fail(call);
    EXPECT_EQ(op().call(a_mode(), 10), 8) << call;
    expect_trace_of_status(a_mode(), 127);
  }
}

TEST_P(Operations, ProgramThatIsKilledGives8) {
  machine().programs = {doubles::dies_of(SIGKILL)};
  EXPECT_EQ(op().call(a_mode(), 10), 8);
  expect_trace_of_status(a_mode(), 127);
}

TEST_P(Operations, ProgramThatAnswersTheStopWithItsOwnStatusIsJudgedByIt) {
  for (const int status : {0, 2, 6, 128}) {
    machine().start();
    machine().programs = {doubles::hangs_until_sigterm_and_exits(status)};
    EXPECT_EQ(op().call(a_mode(), 1), result_of(status)) << status;
  }
}

// ---- units

using UnitCall = int32_t (*)(const UnitRecord *unit, int32_t time_limit);

struct UnitRow {
  const char *says;
  UnitCall call;
  Lines refusal;  // of a missing unit
};

const std::vector<UnitRow> &unit_rows() {
  static const std::vector<UnitRow> kRows = {
      {"LED",
       [](const UnitRecord *unit, int32_t limit) { return lmainte_control_led(9, limit, unit); },
       {"100 110C0330", "805 110C1332", "100 110C0331"}},
      {"flag",
       [](const UnitRecord *unit, int32_t limit) { return lmainte_set_mainteflag(9, limit, unit); },
       {"100 110C0340", "805 110C1342", "100 110C0341"}},
      {"expansion LED",
       [](const UnitRecord *unit, int32_t limit) { return lmainte_control_ioxled(1, limit, unit); },
       {}},
      {"expansion power",
       [](const UnitRecord *unit, int32_t limit) { return lmainte_control_ioxpower(1, limit, unit); },
       {}},
      {"judgement",
       [](const UnitRecord *unit, int32_t limit) { return lmainte_judge_control_fru(9, limit, unit); },
       {"100 110C0350", "805 110C1352", "100 110C0351"}},
      {"detaching",
       [](const UnitRecord *unit, int32_t limit) { return lmainte_detach_fru(limit, unit); },
       {"100 110C0320", "805 110C1322", "100 110C0321"}},
      {"test",
       [](const UnitRecord *unit, int32_t limit) { return lmainte_test_fru(limit, unit); },
       {"100 110C0360", "805 110C1362", "100 110C0361"}},
      {"board test",
       [](const UnitRecord *unit, int32_t limit) { return lmainte_test_sb(limit, unit); },
       {"100 110C81C0", "805 110CB1C2", "100 110C81C1"}},
      {"board set-up",
       [](const UnitRecord *unit, int32_t limit) { return lmainte_set_xsb(9, 9, limit, unit); },
       {"100 110C81A0", "805 110CB1A2", "100 110C81A1"}},
      {"board deletion",
       [](const UnitRecord *unit, int32_t limit) { return lmainte_clear_xsb(9, limit, unit); },
       {"100 110C81B0", "805 110CB1B2", "100 110C81B1"}},
      {"link",
       [](const UnitRecord *unit, int32_t limit) { return lmainte_link_board(9, limit, unit); },
       {"100 110C81E0", "805 110CB1E2", "100 110C81E1"}},
      {"fan check",
       [](const UnitRecord *unit, int32_t limit) {
         return lmainte_check_fanspeed(limit, unit == nullptr ? nullptr : unit->name);
       },
       {"100 110C0540", "805 110C1542", "100 110C0541"}},
      {"slot status",
       [](const UnitRecord *, int32_t limit) { return lmainte_clear_status(limit, nullptr); },
       {"100 110C0470", "805 110C1472", "100 110C0471"}},
  };
  return kRows;
}

class UnitOperations : public doubles::LibraryTest {};

TEST_F(UnitOperations, MissingUnitRunsNothing) {
  for (const auto &row : unit_rows()) {
    machine().start();
    EXPECT_EQ(row.call(nullptr, 10), 8) << row.says;
    EXPECT_EQ(machine().calls, Lines{}) << row.says;
    EXPECT_EQ(doubles::trace(), row.refusal) << row.says;
  }
}

TEST_F(UnitOperations, TimeLimitIsCheckedBeforeTheUnit) {
  for (const auto &row : unit_rows()) {
    if (row.refusal.empty()) continue;
    machine().start();
    EXPECT_EQ(row.call(nullptr, 0), 8) << row.says;
    Lines expected = row.refusal;
    expected[1].back() = '1';
    EXPECT_EQ(doubles::trace(), expected) << row.says;
  }
}

TEST_F(UnitOperations, NameIsReadUpToItsEndFromTheTwentiethByte) {
  const struct {
    int32_t words[5];
    char name[8];
  } shorter = {{16, -1, 0, 0, 0}, "/CMU#1"};
  const auto &unit = reinterpret_cast<const UnitRecord &>(shorter);
  machine().children_are_real = true;
  EXPECT_EQ(lmainte_control_led(1, 10, &unit), 0);
  EXPECT_STREQ(machine().executed().arguments, "/mgb/bin/ctlled\n-u\n/CMU#1\n-c\non\n");
  EXPECT_EQ(doubles::trace_of(0x110C0330).at(2), "100 110C0333 16 -1");
  EXPECT_EQ(lmainte_detach_fru(10, &unit), 0);
  EXPECT_STREQ(machine().executed().arguments, "/mgb/bin/detachfru\n-u\n/CMU#1\n");
  EXPECT_EQ(doubles::trace_of(0x110C0320).at(1), "100 110C0322 16 -1");
  EXPECT_EQ(lmainte_link_board(0, 10, &unit), 0);
  EXPECT_STREQ(machine().executed().arguments, "/mgb/bin/linkboard\n-u\n/CMU#1\n-c\ndown\n");
}

TEST_F(UnitOperations, PercentInANameIsNoConversion) {
  const UnitRecord unit = doubles::a_unit(161, 7, "/%s%n");
  machine().children_are_real = true;
  EXPECT_EQ(lmainte_set_mainteflag(0, 10, &unit), 0);
  EXPECT_STREQ(machine().executed().arguments, "/mgb/bin/setmainteflag\n-u\n/%s%n\n-c\nstart\n");
  EXPECT_EQ(lmainte_judge_control_fru(1, 10, &unit), 0);
  EXPECT_STREQ(machine().executed().arguments, "/mgb/bin/judgectlfru\n-u\n/%s%n\n-c\ndel\n");
  EXPECT_EQ(lmainte_test_fru(10, &unit), 0);
  EXPECT_STREQ(machine().executed().arguments, "/mgb/bin/testfru\n-u\n/%s%n\n");
  EXPECT_EQ(lmainte_check_fanspeed(10, unit.name), 0);
  EXPECT_STREQ(machine().executed().arguments, "/mgb/bin/chkfanspeed\n-u\n/%s%n\n");
}

TEST_F(UnitOperations, EmptyNameIsPassedOn) {
  const UnitRecord unit = doubles::a_unit(161, 7, "");
  machine().children_are_real = true;
  EXPECT_EQ(lmainte_control_led(0, 10, &unit), 0);
  EXPECT_STREQ(machine().executed().arguments, "/mgb/bin/ctlled\n-u\n-c\noff\n");
}

TEST_F(UnitOperations, NegativeTimeLimitOfAnExpansionUnitReachesTheRunner) {
  EXPECT_EQ(lmainte_control_ioxled(0, -1, &doubles::the_unit()), 8);
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C0020", "805 110C1021", "100 110C0021"}));
  machine().start();
  EXPECT_EQ(lmainte_control_ioxpower(0, -1, &doubles::the_unit()), 8);
  EXPECT_EQ(doubles::trace().size(), 3u);
}

TEST_F(UnitOperations, TimeLimitOfZeroOfAnExpansionUnitRunsNothing) {
  EXPECT_EQ(lmainte_control_ioxled(0, 0, &doubles::the_unit()), 8);
  EXPECT_EQ(lmainte_control_ioxpower(0, 0, &doubles::the_unit()), 8);
  EXPECT_EQ(doubles::trace(), Lines{});
}

// ---- fans

TEST_F(UnitOperations, FullSpeedNeedsAUnit) {
  EXPECT_EQ(lmainte_control_fan(2, 10, nullptr), 8);
  EXPECT_EQ(machine().calls, Lines{});
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C0310", "100 110C0312 1 2", "805 110C1313 2", "100 110C0311"}));
}

TEST_F(UnitOperations, PercentInTheNameOfAFanIsNoConversion) {
  machine().children_are_real = true;
  EXPECT_EQ(lmainte_control_fan(2, 10, "%d"), 0);
  EXPECT_STREQ(machine().executed().arguments, "/mgb/bin/ctlfan\n-u\n%d\n-c\nfull\n");
}

// ---- the maintenance mode's events, one by one

TEST_F(UnitOperations, MaintenanceModeRecordsItsWholeStory) {
  machine().programs = {doubles::exits(200)};
  EXPECT_EQ(lmainte_control_mainte(1, 30), 200);
  EXPECT_EQ(doubles::trace(),
            (Lines{"100 110C02F0", "100 110C02F2 0 1", "100 110C0020", "805 110C0022 0 2", "8001 110C0024 30 500",
                   "8001 110C0027 200", "100 110C0021", "100 110C02F3 200", "805 110C12F3 1 200", "100 110C02F1"}));
}

TEST_F(UnitOperations, MaintenanceModeRefusesATimeLimitAndAMode) {
  EXPECT_EQ(lmainte_control_mainte(1, 0), 8);
  EXPECT_EQ(lmainte_control_mainte(5, 1), 8);
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C02F0", "805 110C12F1", "100 110C02F1", "100 110C02F0", "100 110C02F2 0 5",
                                     "805 110C12F2 5", "100 110C02F1"}));
}

}  // namespace
