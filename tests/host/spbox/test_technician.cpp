#include "host/spbox/technician.h"

#include <gtest/gtest.h>

#include <fstream>

#include "host/box/contents.h"
#include "host/box/hardware.h"
#include "host/box/trace_ring.h"
#include "tests/host/spbox/spbox_test.h"

namespace {

using namespace std::chrono_literals;
using std::chrono::milliseconds;

struct Wrong {
  const char *script;
  const char *says;  // what the message has in it
};

TEST(TechnicianScript, HasAStepForEachLineOrSemicolon) {
  const auto steps = spbox::parse_technician("# first\nafter 1.5\n\n  pull  /PSU#3 /PSU#4 ; when mode lock;;\n");
  ASSERT_EQ(steps.size(), 3U);
  EXPECT_EQ(steps[0].kind, spbox::Step::Kind::kAfter);
  EXPECT_EQ(steps[0].time, 1500ms);
  EXPECT_EQ(steps[1].change, box::Change::kPull);
  EXPECT_EQ(steps[1].words, (Words{"/PSU#3", "/PSU#4"}));
  EXPECT_EQ(steps[1].text, "pull /PSU#3 /PSU#4");
  EXPECT_EQ(steps[2].number, 3);
  EXPECT_EQ(steps[2].words, (Words{"mode", "lock"}));
}

TEST(TechnicianScript, HasCommentsBehindItsSteps) {
  const auto steps = spbox::parse_technician(
      "pull /PSU#3  # the faulted one; insert /PSU#3\n"
      "when text /tmp/a Replace /PSU#3 now;# and then\n"
      "\t# after 5\n"
      "after 2\t#; after 3");
  ASSERT_EQ(steps.size(), 3U);
  EXPECT_EQ(steps[0].words, (Words{"/PSU#3"}));
  EXPECT_EQ(steps[0].text, "pull /PSU#3");
  EXPECT_EQ(steps[1].words, (Words{"text", "/tmp/a", "Replace", "/PSU#3", "now"}));
  EXPECT_EQ(steps[2].time, 2s);
}

// The script that the documentation shows between its fences.
TEST(TechnicianScript, CanBeCopiedFromTheDocumentation) {
  std::ifstream file(std::string(GOLDEN) + "/../../../../docs/host-platform.md");
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  const std::string fence = "```text hands.txt\n";
  const std::size_t first = text.find(fence) + fence.size();
  ASSERT_GE(first, fence.size());
  const auto steps = spbox::parse_technician(text.substr(first, text.find("```", first) - first));
  ASSERT_EQ(steps.size(), 5U);
  EXPECT_EQ(steps[0].words, (Words{"flag", "/PSU#3", "start"}));
  EXPECT_EQ(steps[2].words, (Words{"/PSU#3"}));
  EXPECT_EQ(steps[3].words, (Words{"trace", "lmainte_chk_fru_install", "entry"}));
  EXPECT_EQ(steps[4].times, 5U);
}

TEST(TechnicianScript, HasAVerbForEveryChange) {
  const auto steps = spbox::parse_technician("pull /A;insert /A;fault /A;degrade /A;repair /A");
  ASSERT_EQ(steps.size(), 5U);
  const box::Change changes[] = {box::Change::kPull, box::Change::kInsert, box::Change::kFault, box::Change::kDegrade,
                                 box::Change::kRepair};
  for (std::size_t i = 0; i < 5; ++i) EXPECT_EQ(steps[i].change, changes[i]) << steps[i].text;
}

TEST(TechnicianScript, NamesTheStepThatMakesNoSenseAndTheWayOut) {
  const Wrong rows[] = {
      {"", "Write one, such as: pull /PSU#3"},
      {"# only this", "Write one"},
      {"pull /A; push /B", "step 2, `push /B`: there is no such step. There are after, when"},
      {"pull", "which unit?"},
      {"after", "after 3."},
      {"after soon", "soon is no number of seconds"},
      {"after -1", "-1 is no number of seconds"},
      {"after 3s", "3s is no number of seconds"},
      {"when", "it waits for led, flag"},
      {"when moon full", "it waits for led, flag"},
      {"when led /A dim", "when led /PSU#3 blink"},
      {"when led blink", "when led /PSU#3 blink"},
      {"when mode", "when mode lock"},
      {"when text file", "when text screen.txt Replace"},
      {"flicker /A", "flicker /PSU#3 5 0.5"},
      {"flicker /A 0 1", "0 is no number of times"},
      {"flicker /A x 1", "x is no number of times"},
  };
  for (const Wrong &row : rows) {
    try {
      spbox::parse_technician(row.script);
      ADD_FAILURE() << row.script << " is taken";
    } catch (const spbox::ScriptError &error) {
      EXPECT_NE(std::string(error.what()).find(row.says), std::string::npos) << row.script << ": " << error.what();
    }
  }
}

// A technician whose clock is the test's: while they sleep, the things happen that are planned for that time.
class TechnicianTest : public testing::Test {
 protected:
  TechnicianTest() { box::create_box(place_, LMAINTE_MODEL_QE1); }

  void at(milliseconds when, std::function<void()> what) { plan_.emplace(when, std::move(what)); }

  Words work(const std::string &script, milliseconds limit = 60s) {
    Words told;
    const spbox::Clock clock{[this] { return now_; },
                             [this](milliseconds time) {
                               now_ += time;
                               while (!plan_.empty() && plan_.begin()->first <= now_) {
                                 const auto what = plan_.begin()->second;
                                 plan_.erase(plan_.begin());
                                 what();
                               }
                             }};
    spbox::Technician technician(place_, clock, [&](const std::string &line) { told.push_back(line); });
    technician.work(spbox::parse_technician(script), limit);
    return told;
  }

  void record(std::uint32_t event) const {
    box::TraceRing ring;
    ASSERT_TRUE(ring.map(place_.trace().c_str()));
    const std::array<std::uint32_t, 2> words{1, 2};
    ring.append(14, 256, 15, event, words.data(), 2);
  }
  std::string state(const char *unit) const { return std::string(state_word(box::Inventory(place_).unit(unit))); }
  void set(const std::string &key, const std::string &value) const { box::Hardware(place_).set(key, value); }

  Scratch scratch_;
  box::Place place_{scratch_ / "box"};
  milliseconds now_{1000s};

 private:
  std::multimap<milliseconds, std::function<void()>> plan_;
};

TEST_F(TechnicianTest, PullsAndInsertsAtGivenTimes) {
  at(1001s, [this] { EXPECT_EQ(state("/PSU#3"), "Normal"); });
  at(1002s + 499ms, [this] { EXPECT_EQ(state("/PSU#3"), "Not installed"); });
  const Words told = work("after 2; pull /PSU#3; after 0.5; after 0.5; insert /PSU#3");
  EXPECT_EQ(state("/PSU#3"), "Normal");
  EXPECT_EQ(told, (Words{"    2.0 s  pull /PSU#3", "    3.0 s  insert /PSU#3"}));
}

TEST_F(TechnicianTest, WaitsForWhatTheOperatorsCommandDoes) {
  const struct {
    const char *condition;
    std::function<void()> cause;
  } rows[] = {
      {"led /PSU#3 blink", [this] { set("led /PSU#3", "blink"); }},
      {"flag /PSU#3 start", [this] { set("flag /PSU#3", "start"); }},
      {"flag /PSU#3 end", [this] { box::Hardware(place_).clear("flag /PSU#3"); }},
      {"detached /PSU#3 yes", [this] { set("detached /PSU#3", "yes"); }},
      {"detached /PSU#3 no", [this] { box::Hardware(place_).clear("detached /PSU#3"); }},
      {"mode lock", [this] { set("maintenance", "lock"); }},
      {"mode unlock", [this] { set("maintenance", "unlock"); }},
      {"trace lmainte_chk_fru_install entry", [this] { record(0x110C06B0); }},
      {"trace lmainte_chk_fru_install:await", [this] { record(0x110C06C0); }},
  };
  for (const auto &row : rows) {
    const milliseconds start = now_;
    at(start + 7s, row.cause);
    work(std::string("when ") + row.condition);
    EXPECT_GE(now_ - start, 7s) << row.condition;
    EXPECT_LE(now_ - start, 8s) << row.condition;
  }
}

TEST_F(TechnicianTest, WaitsForATextInAFile) {
  const std::string file = scratch_ / "screen.txt";
  at(now_ + 1s, [&] { std::ofstream(file) << "Wait a moment.\n"; });
  at(now_ + 3s, [&] { std::ofstream(file, std::ios::app) << "Replace /PSU#3 now.\n"; });
  work("when text " + file + " Replace /PSU#3");
  EXPECT_GE(now_, 1003s);
  EXPECT_LE(now_, 1004s);
}

TEST_F(TechnicianTest, LooksAtTheTraceFromTheStartOfTheTechnician) {
  record(0x110C06B0);
  EXPECT_THROW(work("when trace lmainte_chk_fru_install entry", 5s), spbox::ScriptError) << "long ago";
  at(now_ + 1s, [this] { record(0x110C06B0); });
  work("after 3; when trace lmainte_chk_fru_install entry");  // while they waited for something else
  EXPECT_THROW(work("when trace lmainte_chk_fru_install exit", 5s), spbox::ScriptError);
}

TEST_F(TechnicianTest, LooksAtTheTraceFromWhatTheLastSuchStepFound) {
  at(now_ + 1s, [this] {
    record(0x110C06B1);
    record(0x110C06B0);
  });
  EXPECT_THROW(work("after 3; when trace lmainte_chk_fru_install entry; when trace lmainte_chk_fru_install exit", 5s),
               spbox::ScriptError)
      << "it was left before it was entered";
  at(now_ + 1s, [this] {
    record(0x110C06B0);
    record(0x110C06B1);
  });
  work("after 3; when trace lmainte_chk_fru_install entry; after 2; when trace lmainte_chk_fru_install exit");
}

TEST_F(TechnicianTest, LooksUpEveryUnitBeforeTheFirstStep) {
  const struct {
    const char *step, *says;
  } rows[] = {
      {"when led /PSU#99 on", "step 2, `when led /PSU#99 on`: "},
      {"when led PSU#99 on", " has no unit /PSU#99 (model qe1). `spbox units "},
      {"when flag /NOPE start", " has no unit /NOPE (model qe1)."},
      {"when detached /PSU#99 yes", " has no unit /PSU#99 (model qe1)."},
      {"when led /IOX@FFFF on", " has no unit /IOX@FFFF (model qe1)."},
      {"when flag /IOX@0A21 start", " has no unit /IOX@0A21 (model qe1)."},
      {"when led /FAN_A#0/FAN#0 on", "/FAN_A#0/FAN#0 has no LED and no flag of its own."},
      {"insert /PSU#99", " has no unit /PSU#99 (model qe1)."},
      {"fault /FANBP_C#0", "/FANBP_C#0 has no record."},
      {"flicker /PSU#99 2 1", " has no unit /PSU#99 (model qe1)."},
  };
  for (const auto &row : rows) {
    const milliseconds start = now_;
    try {
      work(std::string("pull /PSU#40;") + row.step);
      ADD_FAILURE() << row.step << " is taken";
    } catch (const spbox::ScriptError &error) {
      EXPECT_NE(std::string(error.what()).find(row.says), std::string::npos) << row.step << ": " << error.what();
    }
    EXPECT_EQ(now_, start) << row.step;
    EXPECT_EQ(state("/PSU#40"), "Normal") << row.step << ": the step before was done";
  }
}

TEST_F(TechnicianTest, KnowsUnitsWithoutARecordAndNamesWithoutTheirSlash) {
  set("led /FANBP_C#0", "on");
  set("led /IOX@0A21", "blink");
  set("flag /PSU#40", "start");
  EXPECT_EQ(work("when led /FANBP_C#0 on; when led IOX@0A21 blink; when flag PSU#40 start; pull PSU#40", 1s),
            (Words{"    0.0 s  led /FANBP_C#0 on", "    0.0 s  led /IOX@0A21 blink", "    0.0 s  flag /PSU#40 start",
                   "    0.0 s  pull /PSU#40"}));
}

TEST_F(TechnicianTest, LetsAUnitFlicker) {
  const Words told = work("flicker /PSU#3 3 0.5");
  EXPECT_EQ(told, (Words{"    0.0 s  pull /PSU#3", "    0.5 s  insert /PSU#3", "    1.0 s  pull /PSU#3"}));
  EXPECT_EQ(state("/PSU#3"), "Not installed");
}

TEST_F(TechnicianTest, GivesUpAndSaysWhatHasNotCome) {
  try {
    work("pull /PSU#3; when mode lock", 30s);
    ADD_FAILURE() << "waits no more";
  } catch (const spbox::ScriptError &error) {
    EXPECT_EQ(std::string(error.what()).find("step 2, `when mode lock`: it has not come in 30 s."), 0U) << error.what();
  }
  EXPECT_GE(now_, 1030s);
  EXPECT_LE(now_, 1031s);
}

TEST_F(TechnicianTest, StopsWhereAUnitCannotBeChangedSo) {
  EXPECT_THROW(work("insert /PSU#3; pull /PSU#4"), box::InventoryError);
  EXPECT_EQ(state("/PSU#4"), "Normal");
}

class TechnicianVerb : public SpboxTest {
 protected:
  void SetUp() override { make_box("qa"); }
};

TEST_F(TechnicianVerb, WorksThroughStepsOnTheLineOrInAFile) {
  EXPECT_NE(done({"technician", "box", "--do", "pull /PSU#0"}).find("pull /PSU#0\n"), std::string::npos);
  std::ofstream(scratch_ / "hands.txt") << "insert /PSU#0\nfault /PSU#1\n";
  done({"technician", "box", "hands.txt"});
  EXPECT_EQ(state_word(box::Inventory(place()).unit("/PSU#0")), "Normal");
  EXPECT_EQ(state_word(box::Inventory(place()).unit("/PSU#1")), "Faulted");
}

TEST_F(TechnicianVerb, RefusesWhatCannotBeDone) {
  EXPECT_NE(refused({"technician", "box", "--do", "pull /PSU#9"}).find("no unit /PSU#9"), std::string::npos);
  EXPECT_NE(refused({"technician", "box", "--do", "push /PSU#0"}).find("no such step"), std::string::npos);
  EXPECT_NE(refused({"technician", "box", "nowhere.txt"}).find("cannot be read"), std::string::npos);
  EXPECT_NE(refused({"technician", "box", "--limit", "1", "--do", "when mode lock"}).find("in 1 s"), std::string::npos);
  EXPECT_EQ(spbox({"technician", "box"}).exit_status, 2);
  EXPECT_EQ(spbox({"technician", "box", "hands.txt", "--do", "after 1"}).exit_status, 2);
}

}  // namespace
