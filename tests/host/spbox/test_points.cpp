#include "host/box/points.h"

#include "tests/host/spbox/read_json.h"
#include "tests/host/spbox/spbox_test.h"

namespace {

class PointsVerb : public SpboxTest {
 protected:
  void SetUp() override { make_box("qa"); }
};

constexpr char kForget[] = "`spbox points box --forget` lets all happen as usual.\n";

TEST_F(PointsVerb, ShowsWhatWasReachedAndWhatHappensThere) {
  EXPECT_EQ(done({"points", "box"}), "Points are not counted. `spbox points box --count` begins.\n");
  EXPECT_EQ(done({"points", "box", "--count"}), "The points of commands are counted from now on.\n");
  EXPECT_EQ(done({"points", "box"}), "No command has come to a point yet.\n");
  EXPECT_EQ(done({"deviate", "box", "program", "ctlled", "--at", "2", "--exit", "206"}),
            std::string("At program ctlled 2 this happens: exit 206.\n") + kForget);
  EXPECT_EQ(done({"deviate", "box", "trace", "lmainte_exec", "entry", "--signal", "KILL"}),
            std::string("At trace lmainte_exec entry 1 this happens: signal SIGKILL.\n") + kForget);
  shell("for light in blink off; do /mgb/bin/ctlled -u /PSU#0 -c $light; done");
  const std::string pid = std::to_string(box::points_of(place())->deviations[0].happened);
  EXPECT_EQ(done({"points", "box"}),
            "Kind     Name    Times\n"
            "program  ctlled  2\n\n"
            "Deviation                   What            Happened\n"
            "program ctlled 2            exit 206        in process " +
                pid +
                "\n"
                "trace lmainte_exec entry 1  signal SIGKILL  not yet\n");
  const ReadJson json(done({"points", "box", "--json"}));
  EXPECT_EQ(json["counts"][0]["count"], 2);
  EXPECT_EQ(json["deviations"][1]["name"], "lmainte_exec entry");
  EXPECT_EQ(done({"points", "box", "--forget"}), "The points are forgotten, and all happens as usual.\n");
  EXPECT_EQ(done({"points", "box", "--forget"}), "No points were counted.\n");
}

TEST_F(PointsVerb, RefusesWhatMakesNoSense) {
  const std::vector<std::pair<Words, const char *>> rows{
      {{"chair", "--refused"}, "there is no kind of point `chair`. Give program, open,"},
      {{"read", "--missing"}, "which one? `read` needs a name: RECORD."},
      {{"read", "a", "b", "--missing"}, "`b` is a word too many."},
      {{"log", "a", "--refused"}, "`a` is a word too many."},
      {{"open", "main", "--refused"}, "`main` is no database. It is one of general, setup, current"},
      {{"program", "ls", "--hang"}, "`ls` is no control program."},
      {{"trace", "no", "entry", "--refused"}, "`no` is no function that records events."},
      {{"trace", "lmainte_get_psu_data", "no", "--refused"},
       "which event? Those of `lmainte_get_psu_data` are entry, exit,"},
      {{"file", "x", "--refused"}, "`x` is no call at such a point. It is one of open, read, write, close, make."},
      {{"message", "open", "--refused"}, "`open` is no call at such a point. It is one of send, receive, select."},
      {{"pager", "more", "--missing"}, "`more` is a word too many."},
      {{"pager", "--full"}, "`pager` takes no --full."},
      {{"log"}, "what is to happen?"},
      {{"read", "a", "--short", "--long"}, "what is to happen?"},
      {{"log", "--missing"}, "`log` takes no --missing."},
      {{"log", "--signal", "HELLO"}, "there is no signal `HELLO`."},
      {{"log", "--at", "0", "--refused"}, "--at"},
      {{"program", "ctlled", "--exit", "256"}, "--exit"},
  };
  for (const auto &[words, says] : rows) {
    Words all{"deviate", "box"};
    all.insert(all.end(), words.begin(), words.end());
    const Done result = spbox(all);
    EXPECT_EQ(result.exit_status, 2) << result.output;
    EXPECT_NE(result.output.find(says), std::string::npos) << result.output;
  }
  EXPECT_EQ(spbox({"points", "box", "--count", "--forget"}).exit_status, 2);
  EXPECT_FALSE(box::points_of(place())) << "nothing was done";
}

TEST_F(PointsVerb, TellsOfARecordThatIsNotThere) {
  const std::string told = "The box has no record current_psu_inf now. Is the name right?\n";
  EXPECT_EQ(done({"deviate", "box", "read", "current_psu_inf", "--missing"}),
            "At read current_psu_inf 1 this happens: missing.\n" + told + kForget);
  EXPECT_EQ(done({"deviate", "box", "write", "current_psu_info", "--refused"}),
            std::string("At write current_psu_info 1 this happens: refused.\n") + kForget);
}

TEST_F(PointsVerb, SaysThatItCannotBeDone) {
  const auto refuse_log = [](std::size_t at) {
    return Words{"deviate", "box", "log", "--refused", "--at", std::to_string(at)};
  };
  for (std::size_t at = 1; at <= box::kMostDeviations; ++at) done(refuse_log(at));
  EXPECT_EQ(refused(refuse_log(2)),
            "spbox: something else is to happen there already: refused. `spbox points box --forget` lets all happen as "
            "usual.\n");
  EXPECT_EQ(refused(refuse_log(9)),
            "spbox: a box keeps no more than 8 deviations, those that have happened, too. `spbox points box --forget` "
            "begins anew.\n");
  write("box/mgb/db/points", "something else");
  EXPECT_NE(refused({"points", "box"})
                .find("the file is damaged, or is none of points. `spbox points box --count` makes it anew."),
            std::string::npos);
  EXPECT_EQ(done({"points", "box", "--count"}), "The points of commands are counted from now on.\n");
}

}  // namespace
