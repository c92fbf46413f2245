#include "host/technician/technician.h"

#include <gtest/gtest.h>

#include <fstream>

#include "host/box/contents.h"
#include "host/box/hardware.h"
#include "host/box/trace_ring.h"
#include "tests/host/box/scratch.h"

namespace {

using namespace std::chrono_literals;
using std::chrono::milliseconds;
using technician::Words;

struct Wrong {
  const char *script;
  const char *says;
};

TEST(TechnicianScript, HasAStepForEachLineOrSemicolon) {
  const auto steps = technician::read_script("# first\nafter 1.5\n\n  pull  /PSU#3 /PSU#4 ; when mode lock;;\n", "");
  ASSERT_EQ(steps.size(), 3U);
  EXPECT_EQ(steps[0].row->verb, "after");
  EXPECT_EQ(steps[0].words, Words{"1.5"});
  EXPECT_EQ(steps[1].row->verb, "pull");
  EXPECT_EQ(steps[1].words, (Words{"/PSU#3", "/PSU#4"}));
  EXPECT_EQ(steps[1].text, "pull  /PSU#3 /PSU#4");
  EXPECT_EQ(steps[2].row->verb, "when mode");
  EXPECT_EQ(steps[2].words, Words{"lock"});
}

TEST(TechnicianScript, HasWordsInQuotesAsPlaysHave) {
  const auto steps =
      technician::read_script(R"(when text "/tmp/a b" "two  words; \"so\"" ; pull "/PSU#3" # "out")", "");
  ASSERT_EQ(steps.size(), 2U);
  EXPECT_EQ(steps[0].words, (Words{"/tmp/a b", "two  words; \"so\""}));
  EXPECT_EQ(steps[1].words, Words{"/PSU#3"});
}

// Scripts from before there were quotes.
TEST(TechnicianScript, TakesAQuoteThatIsNoneForAPartOfItsWord) {
  const auto steps = technician::read_script("when text f \"open\nwhen text f 19\" rack\nwhen text f \"a\\q\"", "");
  ASSERT_EQ(steps.size(), 3U);
  EXPECT_EQ(steps[0].words, (Words{"f", "\"open"}));
  EXPECT_EQ(steps[1].words, (Words{"f", "19\"", "rack"}));
  EXPECT_EQ(steps[2].words, (Words{"f", "\"a\\q\""}));
}

// The script that the documentation shows between its fences.
TEST(TechnicianScript, CanBeCopiedFromTheDocumentation) {
  std::ifstream file(DOCUMENTATION);
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  const std::string fence = "```text hands.txt\n";
  const std::size_t first = text.find(fence) + fence.size();
  ASSERT_GE(first, fence.size());
  const auto steps = technician::read_script(text.substr(first, text.find("```", first) - first), "hands.txt");
  ASSERT_EQ(steps.size(), 5U);
  EXPECT_EQ(steps[0].words, (Words{"/PSU#3", "start"}));
  EXPECT_EQ(steps[2].words, (Words{"/PSU#3"}));
  EXPECT_EQ(steps[3].words, (Words{"lmainte_chk_fru_install", "entry"}));
  EXPECT_EQ(steps[3].place, "hands.txt:4");
  EXPECT_EQ(steps[4].row->verb, "flicker");
}

TEST(TechnicianScript, NamesTheStepThatMakesNoSenseAndTheWayOut) {
  const Wrong rows[] = {
      {"", "the script has no step. Write one, such as: pull /PSU#3"},
      {"# only this", "the script has no step. Write one, such as: pull /PSU#3"},
      {"pull /A; push /B",
       "step 2: `push /B`: there is no step \"push\"; there are after, when led, when flag, when detached, when mode, "
       "when trace, when text, pull, insert, fault, degrade, repair and flicker"},
      {"when moon full",
       "step 1: `when moon full`: there is no step \"when\"; there are after, when led, when flag, when detached, when "
       "mode, when trace, when text, pull, insert, fault, degrade, repair and flicker"},
      {"pull", "step 1: `pull`: write it as: pull UNIT..."},
      {"after", "step 1: `after`: write it as: after 3"},
      {"after soon", "step 1: `after soon`: \"soon\" is not a number of seconds from 0 to 86400; write 3 or 0.5"},
      {"when led /A dim", "step 1: `when led /A dim`: \"dim\" never comes; wait for off, on or blink"},
      {"when flag /A off", "step 1: `when flag /A off`: \"off\" never comes; wait for start or end"},
      {"when detached /A on", "step 1: `when detached /A on`: \"on\" never comes; wait for yes or no"},
      {"when mode on", "step 1: `when mode on`: \"on\" never comes; wait for lock or unlock"},
      {"when led blink", "step 1: `when led blink`: write it as: when led /PSU#3 blink"},
      {"when mode", "step 1: `when mode`: write it as: when mode lock"},
      {"when trace", "step 1: `when trace`: write it as: when trace FUNCTION [EVENT]"},
      {"when trace lmainte_chk_fru_instal entry",
       "step 1: `when trace lmainte_chk_fru_instal entry`: the library has no function \"lmainte_chk_fru_instal\" that "
       "records anything; docs/trace-events.md lists the names"},
      {"when trace lmainte_put_pinfo:process-id (odd",
       "step 1: `when trace lmainte_put_pinfo:process-id (odd`: lmainte_put_pinfo:process-id never records \"(odd\"; "
       "its "
       "events are entry, exit"},
      {"when text file", "step 1: `when text file`: write it as: when text FILE TEXT"},
      {"flicker /A", "step 1: `flicker /A`: write it as: flicker /PSU#3 5 0.5"},
      {"flicker /A 0 1", "step 1: `flicker /A 0 1`: \"0\" is not a number of times"},
      {"flicker /A x 1", "step 1: `flicker /A x 1`: \"x\" is not a number of times"},
      {"flicker /A 1 x", "step 1: `flicker /A 1 x`: \"x\" is not a number of seconds from 0 to 86400; write 3 or 0.5"},
  };
  for (const Wrong &row : rows) {
    try {
      technician::read_script(row.script, "");
      ADD_FAILURE() << row.script << " is taken";
    } catch (const script::Error &error) {
      EXPECT_STREQ(error.what(), row.says);
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
    const technician::Clock clock{[this] { return now_; },
                                  [this](milliseconds time) {
                                    now_ += time;
                                    while (!plan_.empty() && plan_.begin()->first <= now_) {
                                      const auto what = plan_.begin()->second;
                                      plan_.erase(plan_.begin());
                                      what();
                                    }
                                  }};
    technician::Technician hands(place_, clock, [&](const std::string &line) { told.push_back(line); });
    hands.work(technician::read_script(script, ""), limit);
    return told;
  }

  void record(std::uint32_t event) const {
    box::TraceRing ring;
    ASSERT_TRUE(ring.map(place_.trace().c_str()));
    const std::array<std::uint32_t, 2> words{1, 2};
    ring.append(14, 256, 15, event, words.data(), 2);
  }
  std::string state(const char *unit) const { return std::string(state_word(box::Inventory(place_).unit(unit))); }
  void set(const std::string &key, const std::string &value) const { box::TextDatabase(place_).set(key, value); }

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
      {"flag /PSU#3 end", [this] { box::TextDatabase(place_).clear("flag /PSU#3"); }},
      {"detached /PSU#3 yes", [this] { set("detached /PSU#3", "yes"); }},
      {"detached /PSU#3 no", [this] { box::TextDatabase(place_).clear("detached /PSU#3"); }},
      {"mode lock", [this] { set("maintenance", "lock"); }},
      {"mode unlock", [this] { set("maintenance", "unlock"); }},
      {"trace lmainte_chk_fru_install entry", [this] { record(0x110C06B0); }},
      {"trace lmainte_chk_fru_install:await", [this] { record(0x110C06C0); }},
      {"trace lmainte_chk_fru_install (await)", [this] { record(0x110C06C0); }},  // as it was written once
      {"trace lmainte_chk_fru_install:await exit", [this] { record(0x110C06C1); }},
      {"trace lmainte_chk_fru_install (await) exit", [this] { record(0x110C06C1); }},
      {"trace lmainte_get_sb_data (CPU modules) entry", [this] { record(0x110C0050); }},
      {"trace lmainte_exec ended", [this] { record(0x110C0027); }},
      {"trace lmainte_exec the program ended", [this] { record(0x110C0027); }},  // as `spbox trace` says it
      {"trace lmainte_show_ioxpsu_list no-lines", [this] { record(0x110C1151); }},
      {"trace lmainte_show_ioxpsu_list", [this] { record(0x110C1151); }},
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
  EXPECT_THROW(work("when trace lmainte_chk_fru_install entry", 5s), technician::Failure) << "long ago";
  at(now_ + 1s, [this] { record(0x110C06B0); });
  work("after 3; when trace lmainte_chk_fru_install entry");  // while they waited for something else
  EXPECT_THROW(work("when trace lmainte_chk_fru_install exit", 5s), technician::Failure);
}

TEST_F(TechnicianTest, LooksAtTheTraceFromWhatTheLastSuchStepFound) {
  at(now_ + 1s, [this] {
    record(0x110C06B1);
    record(0x110C06B0);
  });
  EXPECT_THROW(work("after 3; when trace lmainte_chk_fru_install entry; when trace lmainte_chk_fru_install exit", 5s),
               technician::Failure)
      << "it was left before it was entered";
  at(now_ + 1s, [this] {
    record(0x110C06B0);
    record(0x110C06B1);
  });
  work("after 3; when trace lmainte_chk_fru_install entry; after 2; when trace lmainte_chk_fru_install exit");
}

// The ring has 64 bytes of head and a slot of 64 for each record: its number, n, stands doubled in the first eight bytes,
// as 2n + 1 while it is written and as 2n + 2 afterwards.
TEST_F(TechnicianTest, LooksAtARecordThatWasStillWrittenWhenALaterOneCame) {
  record(0x110C06B0);
  const auto set_state = [&](std::uint64_t number, std::uint64_t state) {
    std::fstream ring(place_.trace(), std::ios::binary | std::ios::in | std::ios::out);
    ring.seekp(static_cast<std::streamoff>(64 + 64 * number));
    ring.write(reinterpret_cast<const char *>(&state), 8);
  };
  at(now_ + 1s, [&] {
    record(0x110C06B0);
    set_state(1, 3);
    record(0x110C0010);
  });
  at(now_ + 5s, [&] { set_state(1, 4); });
  work("when trace lmainte_chk_fru_install entry");
  EXPECT_GE(now_, 1005s);
  EXPECT_LE(now_, 1006s);
}

TEST_F(TechnicianTest, LooksUpEveryUnitBeforeTheFirstStep) {
  const struct {
    const char *step, *says;
  } rows[] = {
      {"when led /PSU#99 on", "step 2: `when led /PSU#99 on`: "},
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
    } catch (const technician::Failure &error) {
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

TEST_F(TechnicianTest, HasAStepForEveryChange) {
  const struct {
    const char *steps, *state;
  } rows[] = {
      {"fault /PSU#3", "Faulted"},      {"degrade /PSU#3", "Degraded"}, {"repair /PSU#3", "Normal"},
      {"pull /PSU#3", "Not installed"}, {"insert /PSU#3", "Normal"},
  };
  for (const auto &row : rows) {
    EXPECT_EQ(work(row.steps), Words{std::string("    0.0 s  ") + row.steps});
    EXPECT_EQ(state("/PSU#3"), row.state) << row.steps;
  }
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
  } catch (const technician::Failure &error) {
    const std::string box = place_.root().string();
    EXPECT_EQ(error.what(), "step 2: `when mode lock`: it has not come in 30 s. See `spbox units " + box +
                                "` and `spbox trace " + box + "`, or give a higher --limit.");
  }
  EXPECT_GE(now_, 1030s);
  EXPECT_LE(now_, 1031s);
}

TEST_F(TechnicianTest, StopsWhereAUnitCannotBeChangedSo) {
  EXPECT_THROW(work("insert /PSU#3; pull /PSU#4"), box::BoxError);
  EXPECT_EQ(state("/PSU#4"), "Normal");
}

}  // namespace
