// Which deviations there are in a play, and how a play brings them about.
#include <gtest/gtest.h>

#include "host/play/script_writer.h"
#include "tests/host/sweep/sweep_test.h"

namespace {

using Lines = std::vector<std::string>;

class Deviations : public testing::Test {
 protected:
  const sweep::Deviation &named(const std::string &name) const {
    const auto found = std::ranges::find(all_, name, [](const auto &one) { return sweep::name_of(one); });
    if (found == all_.end()) throw std::runtime_error("there is no deviation " + name);
    return *found;
  }
  bool has(const std::string &name) const {
    const Lines names = names_of(all_);
    return std::ranges::find(names, name) != names.end();
  }

  std::vector<play::Step> steps_ = steps_of(kPlay);
  std::vector<sweep::Deviation> all_ = sweep::all_deviations(steps_, good_play());
};

TEST_F(Deviations, AreAtEachPointOfTheirKind) {
  for (const char *name : {"program ctlled 2: exit 206",
                           "program ctlled 1: exit 77",
                           "program ctlled 1: exit 127",
                           "program ctlled 2: signal SIGSEGV",
                           "program ctlled 1: hang",
                           "read current_psu_info 1: missing",
                           "read current_psu_info 1: short",
                           "log 1: refused",
                           "log 1: signal SIGKILL",
                           "trace lmainte_detach_fru entry 2: signal SIGTERM",
                           "answer 1 at swap.play:4: q",
                           "answer 2 at swap.play:7: cut",
                           "answer 1 at swap.play:4: Ctrl-Z",
                           "file make 2: full",
                           "pager 1: missing",
                           "pager 1: refused",
                           "pager 1: signal SIGKILL",
                           "pager 1: midway",
                           "file make 1: signal SIGKILL",
                           "pull 1 at swap.play:5: never",
                           "insert 1 at swap.play:6: vanishes"}) {
    EXPECT_TRUE(has(name)) << name;
  }
  EXPECT_FALSE(has("program ctlled 3: exit 206")) << "the good play did not come there";
  EXPECT_FALSE(has("program ctlled 1: exit 208")) << "its page does not know it";
  EXPECT_FALSE(has("log 1: missing"));
  EXPECT_FALSE(has("file read 1: full")) << "reading needs no room";
  EXPECT_FALSE(has("pager 1: signal SIGTERM")) << "it dies in one way";
}

TEST_F(Deviations, AreNotAtEachRecordOfTheTraceWhereItWouldBeTheSame) {
  EXPECT_TRUE(has("trace lmainte_detach_fru entry 1: refused"));
  EXPECT_FALSE(has("trace lmainte_detach_fru entry 2: refused"));
  const Lines names = names_of(all_);
  EXPECT_TRUE(std::ranges::none_of(names, [](const std::string &name) {
    return name.starts_with("trace lmainte_scdb") && name.find("signal") != std::string::npos;
  })) << "the calls of the database are points themselves";
}

TEST_F(Deviations, AreNoneOfAControlProgramThatThePlayStarts) {
  auto lines = kPlay;
  lines[1] = {"start", "/mgb/bin/ctlled", "-u", "/PSU#0", "-c", "off"};
  EXPECT_EQ(names_of(sweep::all_deviations(steps_of(lines), good_play())), Lines{});
}

TEST_F(Deviations, AreWrittenAsStepsOfAPlay) {
  EXPECT_EQ(sweep::lines_of(named("program ctlled 2: exit 206")),
            Lines{"spbox deviate program ctlled --at 2 --exit 206"});
  EXPECT_EQ(sweep::lines_of(named("trace lmainte_detach_fru entry 1: signal SIGKILL")),
            Lines{"spbox deviate trace lmainte_detach_fru entry --at 1 --signal KILL"});
  EXPECT_EQ(sweep::lines_of(named("log 1: refused")), Lines{"spbox deviate log --at 1 --refused"});
  EXPECT_EQ(sweep::lines_of(named("file make 2: full")), Lines{"spbox deviate file make --at 2 --full"});
  EXPECT_EQ(sweep::lines_of(named("pager 1: midway")), Lines{"spbox deviate pager --at 1 --midway"});
  EXPECT_EQ(sweep::lines_of(named("answer 1 at swap.play:4: nonsense")),
            (Lines{"type \"nonsense\\n\"", "pause 1", "type \"1\\n\""}));
  EXPECT_EQ(sweep::lines_of(named("answer 2 at swap.play:7: cut")), Lines{"hangup"});
  EXPECT_EQ(sweep::lines_of(named("answer 2 at swap.play:7: resized")),
            (Lines{"resize 30 100", "pause 1", "type \"1\\n\""}));
  EXPECT_EQ(sweep::lines_of(named("pull 1 at swap.play:5: never")), Lines{});
  EXPECT_EQ(sweep::lines_of(named("pull 1 at swap.play:5: another")), Lines{"spbox pull /PSU#1"});
  EXPECT_EQ(sweep::lines_of(named("insert 1 at swap.play:6: vanishes")),
            (Lines{"spbox insert /PSU#0", "hands \"after 3; pull /PSU#0\""}));
  EXPECT_EQ(sweep::lines_of(named("insert 1 at swap.play:6: faulty")),
            (Lines{"spbox insert /PSU#0", "spbox fault /PSU#0"}));
}

TEST_F(Deviations, AreTheSameEachTime) {
  EXPECT_EQ(names_of(all_), names_of(sweep::all_deviations(steps_, good_play())));
}

TEST_F(Deviations, KeepADollarThatIsOne) {
  EXPECT_EQ(play::written_step({"type", "$5"}), "type \"$$5\"");
}

}  // namespace
