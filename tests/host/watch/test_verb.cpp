// spbox watch as people run it.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "host/terminal/terminal.h"
#include "tests/host/box/scratch.h"
#include "tests/run.h"

namespace {

using Words = std::vector<std::string>;

class WatchVerb : public testing::Test {
 protected:
  // spbox in a folder where the box is called "box", with this locale.
  Words command(const Words &words, const std::string &locale = "C.UTF-8") const {
    Words command{"/usr/bin/env", "-C", scratch_.path(), "LC_ALL=" + locale, SPBOX};
    command.insert(command.end(), words.begin(), words.end());
    return command;
  }
  Done spbox(const Words &words) const { return run_to_end(command(words)); }
  void make_box(const std::string &model) const {
    ASSERT_EQ(spbox({"create", "box", "--model", model, "--force"}).exit_status, 0);
  }

  Scratch scratch_;
};

std::string golden(const std::string &name) {
  std::ostringstream text;
  text << std::ifstream(std::string(GOLDEN) + "/" + name).rdbuf();
  return text.str();
}

TEST_F(WatchVerb, PrintsAPictureOfEachModel) {
  for (const char *model : {"qa", "qb1", "qb2", "qe1", "qe2", "qe3"}) {
    make_box(model);
    const Done done = spbox({"watch", "box", "--once"});
    EXPECT_EQ(done.exit_status, 0);
    EXPECT_EQ(done.output, golden(std::string("once_") + model + ".txt")) << model;
  }
}

TEST_F(WatchVerb, PrintsWhatWasDoneToTheBox) {
  make_box("qe2");
  for (const Words &words :
       {Words{"fault", "box", "/PSU#3", "/CMU#2/MEM#03A"}, Words{"pull", "box", "/FAN_A#4"},
        Words{"degrade", "box", "/IOU#1"}, Words{"run", "box", "/mgb/bin/ctlled", "-u", "/PSU#3", "-c", "blink"},
        Words{"run", "box", "/mgb/bin/ctlled", "-u", "/PSU#4", "-c", "on"},
        Words{"run", "box", "/mgb/bin/setmainteflag", "-u", "/PSU#3", "-c", "start"},
        Words{"program", "box", "ctlled", "--exit", "206"}, Words{"daemon", "box", "late", "5"},
        Words{"break", "box", "/EMGBU_B#0", "--fru", "--short"},
        Words{"deviate", "box", "read", "current_psu_info", "--at", "2", "--missing"}}) {
    spbox(words);
  }
  const Done done = run_to_end(command({"watch", "box", "--once"}, "C"));
  EXPECT_EQ(done.exit_status, 0);
  EXPECT_EQ(done.output, golden("once_bent.txt"));
}

TEST_F(WatchVerb, SaysWhoIsAtWork) {
  make_box("qa");
  terminal::Terminal other;
  other.start(command({"run", "box", "--", "sh", "-c", "echo begun; read x"}));
  ASSERT_TRUE(other.wait_for("begun", std::chrono::seconds(10)));
  EXPECT_NE(spbox({"watch", "box", "--once"}).output.find("At work  sh -c echo begun; read x\n"), std::string::npos);
}

TEST_F(WatchVerb, SaysWhyThereIsNoPicture) {
  EXPECT_EQ(spbox({"watch", "box", "--once"}).output,
            "spbox: box is no box. `spbox create box --model MODEL` makes one.\n");
  make_box("qa");
  std::ofstream(scratch_ / "box/mgb/db/data.mdb", std::ios::trunc) << "nothing";
  const Done done = spbox({"watch", "box", "--once"});
  EXPECT_EQ(done.exit_status, 1);
  EXPECT_TRUE(done.output.starts_with("spbox: databases in box/mgb/db: cannot ")) << done.output;
}

}  // namespace
