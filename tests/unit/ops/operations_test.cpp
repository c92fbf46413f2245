// All operations alike: a row for each says what it runs, and what the exit statuses mean.

#include <csignal>
#include <cstring>
#include <functional>
#include <map>

#include <gtest/gtest.h>

#include "tests/unit/doubles/library_test.h"

namespace {

using doubles::Lines;
using doubles::machine;

using Call = std::function<int32_t(int32_t mode, int32_t time_limit)>;

UnitRecord a_unit() {
  UnitRecord unit;
  std::memset(&unit, 0x5A, sizeof unit);
  unit.type = 161;
  unit.number = 7;
  std::strcpy(unit.name, "/PSU#7");
  return unit;
}

const UnitRecord kUnit = a_unit();

struct Operation {
  std::string name;
  Call call;
  std::string path;
  int32_t command_id;
  std::map<int32_t, std::string> lines;  // arguments by mode, one a line
  std::map<int32_t, int32_t> meanings;   // results of exit statuses, 0 among them
  int32_t otherwise;                     // of every other status
  uint32_t entry;                        // its entry record, 0 for those without a trace
  bool names_unit;                       // records the unit
  std::vector<int32_t> refused_modes;
};

void PrintTo(const Operation &operation, std::ostream *out) {
  *out << operation.name;
}

const std::vector<Operation> &operations() {
  static const std::vector<Operation> kRows = {
      {"control_mainte",
       lmainte_control_mainte,
       "/mgb/bin/ctlmainte",
       0,
       {{1, "-c\nlock\n"}, {0, "-c\nunlock\n"}},
       {{0, 0}, {128, 128}, {200, 200}},
       8,
       0x110C02F0,
       false,
       {2, -1, 256, INT32_MIN, INT32_MAX}},
      {"report_vanta",
       lmainte_report_vanta,
       "/mgb/bin/vantamainte",
       11,
       {{0, "-s\n"}, {1, "-e\n"}},
       {{0, 0}, {8, 8}, {127, 8}},
       202,
       0x110C0300,
       false,
       {2, -1, 256}},
      {"control_fan",
       [](int32_t mode, int32_t limit) { return lmainte_control_fan(mode, limit, nullptr); },
       "/mgb/bin/ctlfan",
       1,
       {{0, "-c\nlow\n"}, {1, "-c\nhigh\n"}},
       {{0, 0}, {128, 219}, {219, 219}},
       8,
       0x110C0310,
       false,
       {3, -1, 256}},
      {"control_fan of a unit",
       [](int32_t mode, int32_t limit) { return lmainte_control_fan(mode, limit, "/FAN_A#2"); },
       "/mgb/bin/ctlfan",
       1,
       {{0, "-u\n/FAN_A#2\n-c\nlow\n"}, {1, "-u\n/FAN_A#2\n-c\nhigh\n"}, {2, "-u\n/FAN_A#2\n-c\nfull\n"}},
       {{0, 0}, {128, 219}, {219, 219}},
       8,
       0x110C0310,
       false,
       {3, -1, 256}},
      {"control_led",
       [](int32_t mode, int32_t limit) { return lmainte_control_led(mode, limit, &kUnit); },
       "/mgb/bin/ctlled",
       5,
       {{1, "-u\n/PSU#7\n-c\non\n"},
        {0, "-u\n/PSU#7\n-c\noff\n"},
        {2, "-u\n/PSU#7\n-c\nblink\n"},
        {3, "-u\n/PSU#7\n-c\nsync\n"}},
       {{0, 0}, {128, 206}, {206, 206}},
       8,
       0x110C0330,
       true,
       {4, -1, 256}},
      {"set_mainteflag",
       [](int32_t mode, int32_t limit) { return lmainte_set_mainteflag(mode, limit, &kUnit); },
       "/mgb/bin/setmainteflag",
       7,
       {{0, "-u\n/PSU#7\n-c\nstart\n"}, {1, "-u\n/PSU#7\n-c\nend\n"}},
       {{0, 0}, {128, 128}, {204, 204}},
       8,
       0x110C0340,
       true,
       {2, -1, 256}},
      {"control_ioxled",
       [](int32_t mode, int32_t limit) { return lmainte_control_ioxled(mode, limit, &kUnit); },
       "/mgb/cli/usr/bin/ioadm",
       9,
       {{1, "-u\n/PSU#7\n-c\non\n"}, {0, "-u\n/PSU#7\n-c\noff\n"}, {2, "-u\n/PSU#7\n-c\nblink\n"}},
       {{0, 0}, {128, 217}},
       8,
       0,
       false,
       {3, -1, 256}},
      {"control_ioxpower",
       [](int32_t mode, int32_t limit) { return lmainte_control_ioxpower(mode, limit, &kUnit); },
       "/mgb/cli/usr/bin/ioadm",
       9,
       {{1, "poweron\n/PSU#7\n"}, {0, "poweroff\n/PSU#7\n"}},
       {{0, 0}, {128, 218}},
       8,
       0,
       false,
       {2, -1, 256}},
  };
  return kRows;
}

class Operations : public doubles::LibraryTest, public ::testing::WithParamInterface<Operation> {
 protected:
  const Operation &op() { return GetParam(); }
  bool traced() { return op().entry != 0; }
  int32_t a_mode() { return op().lines.begin()->first; }

  // A record of the operation, in the form of doubles::trace().
  std::string event(const char *level, uint32_t offset, const std::string &values = "") {
    char text[32];
    std::snprintf(text, sizeof text, "%s %08X", level, op().entry + offset);
    return text + values;
  }
  std::string entry() { return event("100", 0); }
  std::string exit() { return event("100", 1); }

  // What stands between the entry and the running of the program: the command, the mode and the unit.
  Lines opening(int32_t mode) {
    Lines lines = {entry(), event("100", 2, " " + std::to_string(op().command_id) + " " + std::to_string(mode))};
    if (op().names_unit) lines.push_back(event("100", 3, " 161 7"));
    return lines;
  }
  static Lines runner_trace() { return doubles::trace_of(0x110C0020); }
  Lines own_trace() { return doubles::trace_of(op().entry); }

  // The arguments that were refused come first, the mode next, the status last.
  uint32_t mode_error() { return 0x1002 + (op().names_unit ? 1 : 0); }
  uint32_t status_point() { return op().names_unit ? 4 : 3; }
  uint32_t status_error() { return op().command_id == 1 || op().names_unit ? 0x1004 : 0x1003; }
};

INSTANTIATE_TEST_SUITE_P(All, Operations, ::testing::ValuesIn(operations()), [](const auto &row) {
  auto name = row.param.name;
  for (auto &c : name)
    if (c == ' ') c = '_';
  return name;
});

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

TEST_P(Operations, EveryExitStatusHasItsMeaning) {
  for (int status = 0; status < 256; ++status) {
    machine().start();
    machine().programs = {doubles::exits(status)};
    const auto meaning = op().meanings.find(status);
    EXPECT_EQ(op().call(a_mode(), 10), meaning != op().meanings.end() ? meaning->second : op().otherwise) << status;
  }
}

TEST_P(Operations, SuccessIsRecorded) {
  EXPECT_EQ(op().call(a_mode(), 10), 0);
  if (!traced()) {
    EXPECT_EQ(doubles::trace(), runner_trace());
    return;
  }
  Lines expected = opening(a_mode());
  expected.push_back(event("100", status_point(), " 0"));
  expected.push_back(exit());
  EXPECT_EQ(own_trace(), expected);
  EXPECT_EQ(doubles::trace().front(), entry());
  EXPECT_EQ(doubles::trace().back(), exit());
}

TEST_P(Operations, EveryStatusThatFailsIsRecordedWithTheMode) {
  for (const int status : {1, 8, 127, 128, 200, 202, 204, 206, 219, 255}) {
    for (const auto &[mode, line] : op().lines) {
      machine().start();
      machine().programs = {doubles::exits(status)};
      op().call(mode, 10);
      if (!traced()) {
        EXPECT_EQ(doubles::trace(), runner_trace());
        continue;
      }
      Lines expected = opening(mode);
      expected.push_back(event("100", status_point(), " " + std::to_string(status)));
      expected.push_back(event("805", status_error(), " " + std::to_string(mode) + " " + std::to_string(status)));
      expected.push_back(exit());
      EXPECT_EQ(own_trace(), expected) << status;
    }
  }
}

TEST_P(Operations, UnknownModeRunsNothing) {
  for (const int32_t mode : op().refused_modes) {
    machine().start();
    EXPECT_EQ(op().call(mode, 10), 8) << mode;
    EXPECT_EQ(machine().calls, Lines{}) << mode;
    if (!traced()) continue;
    Lines expected = opening(mode);
    expected.push_back(event("805", mode_error(), " " + std::to_string(mode)));
    expected.push_back(exit());
    EXPECT_EQ(doubles::trace(), expected) << mode;
  }
}

TEST_P(Operations, TimeLimitThatIsNotAboveZeroRunsNothing) {
  for (const int32_t limit : {0, -1, INT32_MIN}) {
    machine().start();
    EXPECT_EQ(op().call(a_mode(), limit), 8) << limit;
    EXPECT_EQ(machine().calls, Lines{}) << limit;
    if (!traced()) continue;
    EXPECT_EQ(doubles::trace(), (Lines{entry(), event("805", 0x1001), exit()})) << limit;
  }
}

TEST_P(Operations, TimeLimitGoesToTheRunner) {
  machine().programs = {doubles::exits(0, 3)};
  EXPECT_EQ(op().call(a_mode(), 3), 0);
  EXPECT_EQ(machine().clock, 3);
  machine().programs = {doubles::hangs()};
  EXPECT_EQ(op().call(a_mode(), 2), 8);
  EXPECT_EQ(machine().clock, 5);
}

TEST_P(Operations, ProgramThatDoesNotRunGives8) {
  machine().fail("fork");
  EXPECT_EQ(op().call(a_mode(), 10), 8);
}

TEST_P(Operations, ProgramThatIsKilledGives8) {
  machine().programs = {doubles::dies_of(SIGKILL)};
  EXPECT_EQ(op().call(a_mode(), 10), 8);
}

TEST_P(Operations, ProgramThatAnswersTheStopWithItsOwnStatusIsJudgedByIt) {
  machine().programs = {doubles::hangs_until_sigterm_and_exits(1)};
  EXPECT_EQ(op().call(a_mode(), 1), op().otherwise);
}

// ---- units

using UnitCall = int32_t (*)(int32_t, int32_t, const UnitRecord *);

struct UnitRow {
  UnitCall call;
  uint32_t entry;
};

constexpr UnitRow kUnitRows[] = {{lmainte_control_led, 0x110C0330},
                                 {lmainte_set_mainteflag, 0x110C0340},
                                 {lmainte_control_ioxled, 0},
                                 {lmainte_control_ioxpower, 0}};

class UnitOperations : public doubles::LibraryTest {};

TEST_F(UnitOperations, MissingUnitRunsNothing) {
  for (const auto &row : kUnitRows) {
    machine().start();
    EXPECT_EQ(row.call(0, 10, nullptr), 8);
    EXPECT_EQ(machine().calls, Lines{});
    EXPECT_EQ(doubles::trace().size(), row.entry == 0 ? 0u : 3u);
  }
}

TEST_F(UnitOperations, MissingUnitIsTheSecondError) {
  lmainte_control_led(0, 10, nullptr);
  lmainte_set_mainteflag(0, 10, nullptr);
  EXPECT_EQ(doubles::trace(),
            (Lines{"100 110C0330", "805 110C1332", "100 110C0331", "100 110C0340", "805 110C1342", "100 110C0341"}));
}

TEST_F(UnitOperations, TimeLimitIsCheckedBeforeTheUnit) {
  lmainte_control_led(9, 0, nullptr);
  EXPECT_EQ(doubles::trace().at(1), "805 110C1331");
}

TEST_F(UnitOperations, NameIsReadUpToItsEndFromTheTwentiethByte) {
  struct {
    int32_t words[5];
    char name[8];
  } shorter = {{16, -1, 0, 0, 0}, "/CMU#1"};
  machine().children_are_real = true;
  EXPECT_EQ(lmainte_control_led(1, 10, reinterpret_cast<const UnitRecord *>(&shorter)), 0);
  EXPECT_STREQ(machine().executed().arguments, "/mgb/bin/ctlled\n-u\n/CMU#1\n-c\non\n");
  EXPECT_EQ(doubles::trace_of(0x110C0330).at(2), "100 110C0333 16 -1");
}

TEST_F(UnitOperations, PercentInANameIsNoConversion) {
  UnitRecord unit = a_unit();
  std::strcpy(unit.name, "/%s%n");
  machine().children_are_real = true;
  EXPECT_EQ(lmainte_set_mainteflag(0, 10, &unit), 0);
  EXPECT_STREQ(machine().executed().arguments, "/mgb/bin/setmainteflag\n-u\n/%s%n\n-c\nstart\n");
}

TEST_F(UnitOperations, EmptyNameIsPassedOn) {
  UnitRecord unit = a_unit();
  unit.name[0] = '\0';
  machine().children_are_real = true;
  EXPECT_EQ(lmainte_control_led(0, 10, &unit), 0);
  EXPECT_STREQ(machine().executed().arguments, "/mgb/bin/ctlled\n-u\n-c\noff\n");
}

TEST_F(UnitOperations, NegativeTimeLimitOfAnExpansionUnitReachesTheRunner) {
  EXPECT_EQ(lmainte_control_ioxled(0, -1, &kUnit), 8);
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C0020", "805 110C1021", "100 110C0021"}));
  machine().start();
  EXPECT_EQ(lmainte_control_ioxpower(0, -1, &kUnit), 8);
  EXPECT_EQ(doubles::trace().size(), 3u);
}

TEST_F(UnitOperations, TimeLimitOfZeroOfAnExpansionUnitDoesNot) {
  EXPECT_EQ(lmainte_control_ioxled(0, 0, &kUnit), 8);
  EXPECT_EQ(lmainte_control_ioxpower(0, 0, &kUnit), 8);
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
