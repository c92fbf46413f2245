#include "host/base/quoted.h"
#include "tests/host/spbox/spbox_test.h"

namespace {

class BoxAtHand : public SpboxTest {
 protected:
  void SetUp() override {
    make_box("qa");
    done({"create", "other", "--model", "qb1"});
  }

  // Runs spbox in this folder, with SPBOX set where a box is given.
  Done spbox_in(const std::string &folder, const std::string &named, const Words &words) const {
    std::string line = "cd " + base::quoted((scratch_.path() / folder).string()) + " && " +
                       (named.empty() ? "" : "SPBOX=" + base::quoted(named) + " ") + "exec " SPBOX;
    for (const std::string &word : words) line += " " + base::quoted(word);
    return run_to_end({"/bin/sh", "-c", line + " 2>&1"});
  }
  std::string done_in(const std::string &folder, const std::string &named, const Words &words) const {
    const Done result = spbox_in(folder, named, words);
    EXPECT_EQ(result.exit_status, 0) << result.output;
    return result.output;
  }
  std::string state_of(const std::string &box, const std::string &unit) const {
    const std::string text = done({"units", box, unit});
    return text.find("Not installed") != std::string::npos ? "out" : "in";
  }
};

TEST_F(BoxAtHand, IsTheOneInWhoseFolderOneStandsOrBelowIt) {
  for (const char *folder : {"box", "box/tmp", "box/mgb/cli/etc"}) {
    EXPECT_NE(done_in(folder, "", {"units"}).find("Model qa,"), std::string::npos) << folder;
  }
  done_in("box/mgb", "", {"pull", "/PSU#1"});
  EXPECT_EQ(state_of("box", "/PSU#1"), "out");
}

TEST_F(BoxAtHand, IsTheOneThatTheVariableNamesWhereverOneStands) {
  EXPECT_NE(done_in(".", "other", {"units"}).find("Model qb1,"), std::string::npos);
  EXPECT_NE(done_in("box", "../other", {"units"}).find("Model qb1,"), std::string::npos);
  EXPECT_NE(done_in("box", (scratch_ / "other").string(), {"show", "/PSU#0"}).find("power supply"), std::string::npos);
}

TEST_F(BoxAtHand, GivesWayToAFolderThatIsNamed) {
  EXPECT_NE(done_in(".", "other", {"units", "box"}).find("Model qa,"), std::string::npos);
  done_in(".", "other", {"pull", "box", "/PSU#0"});
  EXPECT_EQ(state_of("box", "/PSU#0"), "out");
  EXPECT_EQ(state_of("other", "/PSU#0"), "in");
  EXPECT_EQ(spbox_in(".", "other", {"units", ""}).output,
            "spbox: DIR is empty. Is a variable not set? The current folder is a dot. `spbox help units` says more.\n");
  EXPECT_EQ(spbox_in(".", "other", {"show", "gone", "/PSU#0"}).output,
            "spbox: gone is no box. `spbox create gone --model MODEL` makes one.\n");
}

TEST_F(BoxAtHand, ServesEachFormOfALine) {
  EXPECT_EQ(done_in(".", "other", {"run", "echo", "-n", "hand"}), "hand");
  EXPECT_EQ(done_in(".", "other", {"run", "--no-pager", "--", "echo", "-n", "hand"}), "hand");
  EXPECT_NE(done_in(".", "other", {"program", "ctlled"}).find("never ran"), std::string::npos);
  EXPECT_NE(done_in(".", "other", {"trace", "--last", "3"}).find("empty"), std::string::npos);
  done_in(".", "other", {"dump", "kept.dump"});
  done_in(".", "new", {"load", "kept.dump"});
  EXPECT_NE(done({"units", "new"}).find("Model qb1,"), std::string::npos);
  done_in(".", "made", {"create", "--model", "qe1"});
  EXPECT_NE(done({"units", "made"}).find("Model qe1,"), std::string::npos);
}

TEST_F(BoxAtHand, IsToldByNameWhereItIsNone) {
  const Done gone = spbox_in(".", "gone", {"units"});
  EXPECT_EQ(gone.exit_status, 1);
  EXPECT_EQ(gone.output, "spbox: gone is no box. `spbox create gone --model MODEL` makes one.\n");
  const Done none = spbox_in(".", "", {"units"});
  EXPECT_EQ(none.exit_status, 2);
  EXPECT_EQ(none.output,
            "spbox: no box is named. Give its folder, set SPBOX to it, or go there. `spbox help units` says more.\n");
  EXPECT_NE(spbox_in(".", "other", {"units", "gone"}).output.find("gone"), std::string::npos);
}

}  // namespace
