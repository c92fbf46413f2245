// Commands that are good where all goes well, and forget one duty where something goes wrong: the sweep finds each.
#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "tests/host/box/scratch.h"
#include "tests/run.h"

namespace {

struct Forgetful {
  const char *forgets;    // the word of a duty
  const char *deviation;  // at which it shows
  const char *fault;      // as the sweep names it
};

const Forgetful kForgetful[] = {
    {"led", "program detachfru 1: exit 205", "the LED of /PSU#0 blinks, and the screen does not say so"},
    {"echo", "read current_psu_info 1: signal SIGTERM",
     "the terminal has another mode than before: echo off, lines on, interrupt on"},
    {"flag", "answer 2 at swap_psu.play:10: q", "/PSU#0 is under maintenance, and the screen does not say so"},
    {"status", "program testfru 1: exit 208", "exit status 0, but the server is not as the play wants it"},
    {"lock", "question 1: signal SIGKILL", "the file /tmp/swap_psu.lock is left"},
    {"file", "program detachfru 1: exit 205", "the file /tmp/swap_psu.notes is left"},
    {"child", "program detachfru 1: exit 205", "swap_psu still runs"},
    {"event", "answer 2 at swap_psu.play:10: q",
     "the log says \"unit replaced  power supply  /PSU#0\", which is not true"},
    {"sentence", "program detachfru 1: exit 205", "exit status 1, and the screen does not say why"},
    {"limit", "program ctlled 1: hang", "the command did not end in time"},
    {"answer", "answer 1 at swap_psu.play:7: q", "the operator gave up, and the command went on as if they had not"},
    {"truth", "program detachfru 1: exit 205", "the LED of /PSU#0 blinks, and the screen does not say so"},
    {"record", "read current_psu_info 1: missing", "the command died of SIGSEGV"},
};

class Sweep : public testing::Test {
 protected:
  Done sweep(const std::string &forgets, const std::string &deviation) const {
    return run_to_end({"/usr/bin/env", "-C", scratch_.path(), std::string("PATH=") + COMMANDS + ":/usr/bin:/bin",
                       "ASAN_OPTIONS=handle_segv=0", SPBOX, "sweep", PLAY, "forgets=" + forgets, "--every", "--only",
                       deviation, "--findings", "found"});
  }

  Scratch scratch_;
};

class SweepOfACommandThatForgets : public Sweep, public testing::WithParamInterface<Forgetful> {};

TEST_P(SweepOfACommandThatForgets, NamesTheFaultAndWhereItShows) {
  const Forgetful &row = GetParam();
  const Done wrong = sweep(row.forgets, row.deviation);
  EXPECT_EQ(wrong.exit_status, 1) << wrong.output;
  const std::string named = std::string("failed  ") + row.deviation + "\n    " + row.fault;
  EXPECT_NE(wrong.output.find(named), std::string::npos) << wrong.output;
  EXPECT_FALSE(std::filesystem::is_empty(scratch_ / "found"));
  EXPECT_EQ(wrong.output.find("did not fail"), std::string::npos) << wrong.output;
}

INSTANTIATE_TEST_SUITE_P(Sweep, SweepOfACommandThatForgets, testing::ValuesIn(kForgetful),
                         [](const auto &row) { return std::string(row.param.forgets); });

TEST_F(Sweep, PassesTheSameCommandWhereItForgetsNothing) {
  std::set<std::string> deviations;
  for (const Forgetful &row : kForgetful) deviations.insert(row.deviation);
  for (const std::string &deviation : deviations) {
    const Done good = sweep("nothing", deviation);
    EXPECT_EQ(good.exit_status, 0) << good.output;
    EXPECT_NE(good.output.find(": 1 passed, 0 failed, 0 unplayed."), std::string::npos) << deviation << good.output;
  }
}

}  // namespace
