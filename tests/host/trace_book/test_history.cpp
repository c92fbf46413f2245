#include "host/trace_book/history.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "include/lmainte.h"
#include "tests/host/trace_book/made_rings.h"

namespace {

using box::CallEntry;
using box::CallKind;
using trace_book::History;
using trace_book::Moment;

class HistoryTest : public testing::Test, protected MadeRings {
 protected:
  History history() const { return {records, calls, LMAINTE_MODEL_QE3}; }

  std::vector<std::string> texts() const {
    std::vector<std::string> lines;
    const History all = history();
    for (const Moment &moment : all.moments()) {
      if (!moment.is_void) lines.push_back(std::string(2 * moment.depth, ' ') + moment.function + ": " + moment.text);
    }
    return lines;
  }
};

using Lines = std::vector<std::string>;

TEST_F(HistoryTest, PutsCallsWhereTheyBeganAndProgramsBelowTheirStart) {
  call(CallKind::kBegin, "/srv/replace_unit cmu").second = 7;
  record(0x110C0020);
  record(0x110C0024, {10, kChild});
  record(0x110C0023, {5, 4}, kChild);
  call(CallKind::kProgram, "ctlled -c on -u /CMU#2", kCommand, 0, kChild);
  record(0x110C0027, {206});
  CallEntry &end = call(CallKind::kProgramEnd, "ctlled", kCommand, 206, kChild);
  end.time_ns = records.back().time_ns - 3000;
  end.duration_ns = 2000;
  end.position = 3;
  record(0x110C0021);
  call(CallKind::kEnd, "/srv/replace_unit cmu", 0, 1);
  EXPECT_EQ(texts(), (Lines{"replace_unit: begins as run 7: /srv/replace_unit cmu", "lmainte_exec: entry",
                            "  lmainte_exec: a child was started: time limit 10, child 101",
                            "  lmainte_exec: the child runs the program: command 5 (ctlled), arguments 4",
                            "  ctlled: starts: ctlled -c on -u /CMU#2", "  ctlled: ends with exit status 206",
                            "  lmainte_exec: the program ended: exit status 206", "lmainte_exec: exit",
                            "replace_unit: ends with exit status 1"}));
  const History all = history();
  ASSERT_EQ(all.runs().size(), 1u);
  EXPECT_EQ(all.runs()[0].number, 7u);
  EXPECT_EQ(all.runs()[0].name(), "replace_unit");
  EXPECT_EQ(all.runs()[0].status, 1);
  EXPECT_TRUE(all.runs()[0].end_ns);
  for (const Moment &moment : all.moments()) EXPECT_EQ(moment.run, 0u) << moment.text;
  EXPECT_EQ(all.moments()[1].duration_ns, all.moments()[7].time_ns - all.moments()[1].time_ns);
  EXPECT_EQ(all.moments()[4].outcome, "exit status 206");
}

TEST_F(HistoryTest, TellsABrokenRecordAsWhatItIs) {
  call(CallKind::kRead, "gen_system_info", 0, -4);
  record(0x110CB082, {0xFFFFFFFC, 0});  // not-read
  record(0x110CB083, {1408, 0});        // other-size
  call(CallKind::kRead, "setup_system_info", 1, 0).second = 247;
  record(0x110CB082, {0, 1});
  record(0x110CB083, {248, 247});
  EXPECT_EQ(
      texts(),
      (Lines{"scdb_get: record gen_system_info of general (0): LMAINTE_HOST_DB_ABSENT (-4)",
             "lmainte_scdb_get: record gen_system_info of database general (0) is absent: LMAINTE_HOST_DB_ABSENT (-4)",
             "scdb_get: record setup_system_info of setup (1): 247 bytes",
             "lmainte_scdb_get: record setup_system_info of database setup (1) has another size: 248 bytes expected, "
             "247 found"}));
}

TEST_F(HistoryTest, TellsQuestionsAndAnswers) {
  call(CallKind::kQuestion, "Which one?\n", 3);
  call(CallKind::kAnswer, "x\x1b", 0, box::kNoAnswer);
  call(CallKind::kAnswer, "2", 2);
  call(CallKind::kAnswer, "q", 0, LMAINTE_ASK_GAVE_UP);
  EXPECT_EQ(texts(), (Lines{"cli_ask_select: \"Which one?\"",
                            "cli_ask_select: the operator types \"x\x1b\", and is asked again: this is no answer",
                            "cli_ask_select: the operator types \"2\": choice 2",
                            "cli_ask_select: the operator types \"q\", and gives up (LMAINTE_ASK_GAVE_UP)"}));
}

TEST_F(HistoryTest, PutsAChildOfTheOnlyRunThatIsUnderWayThere) {
  call(CallKind::kBegin, "list_units").second = 1;
  record(0x110C02E0);
  record(0x110C02E2, {}, kChild);
  call(CallKind::kBegin, "list_units", 0, 0, 200).second = 2;
  record(0x110C02E2, {}, 300);
  const History all = history();
  EXPECT_EQ(all.moments()[2].run, 0u);
  EXPECT_EQ(all.moments()[2].depth, 1u);
  EXPECT_EQ(all.moments()[4].run, trace_book::kNoRun) << "it may be of either";
}

TEST_F(HistoryTest, TellsTheNamesOfAListTogether) {
  const auto name = [&](const std::string &text, pid_t pid, std::int32_t result = 0) {
    call(CallKind::kName, text, 1, result, pid);
  };
  name("/CMU#0", kCommand);
  name("/CMU#1", kCommand);
  name("/CMU#2", kCommand);
  name("/CMU#3", kChild);
  name("", kChild, -1);
  name("/CMU#4", kChild);
  const History all = history();
  const auto lines = [&](trace_book::UnitNames names) {
    std::vector<const Moment *> moments;
    for (const Moment &moment : all.moments()) moments.push_back(&moment);
    Lines texts;
    for (const auto &line : trace_book::told(moments, names)) texts.push_back(line.text);
    return texts;
  };
  EXPECT_EQ(lines(trace_book::UnitNames::kTogether),
            (Lines{"3 units: /CMU#0 to /CMU#2", "unit id 00000001 00000000: /CMU#3",
                   "unit id 00000001 00000000: no name", "unit id 00000001 00000000: /CMU#4"}));
  EXPECT_EQ(lines(trace_book::UnitNames::kEach).size(), 6u);
}

TEST_F(HistoryTest, BearsRingsThatBeginInTheMiddle) {
  record(0x110C0021);
  call(CallKind::kProgramEnd, "ctlled", kCommand, 0, kChild);
  call(CallKind::kEnd, "replace_unit", 0, 0);
  record(0xFFFFFFFF);
  EXPECT_EQ(history().moments().size(), 4u);
  EXPECT_TRUE(history().runs().empty());
  EXPECT_TRUE(History({}, {}, LMAINTE_MODEL_NONE).moments().empty());
}

}  // namespace
