#include "tests/host/spbox/spbox_test.h"

namespace {

class Status : public SpboxTest {
 protected:
  // The rest of the line behind this word of the picture.
  std::string told(const std::string &word) const {
    const std::string text = "\n" + done({"status", "box"});
    const std::size_t at = text.find("\n" + word);
    if (at == std::string::npos) return "not told in " + text;
    const std::size_t begin = text.find_first_not_of(' ', at + 1 + word.size());
    return text.substr(begin, text.find('\n', begin) - begin);
  }
  bool tells(const std::string &text) const { return done({"status", "box"}).find(text) != std::string::npos; }
};

TEST_F(Status, OfANewBoxIsAllAsUsual) {
  make_box("qe1");
  EXPECT_EQ(done({"status", "box"}),
            "Model    qe1\n"
            "Server   no maintenance mode, fans low, on service processor unit 0\n"
            "At work  nobody\n"
            "Units    all normal\n"
            "Bent     nothing\n");
}

// What is bent stands in three verbs; each is told in their words.
TEST_F(Status, TellsAllThatIsNotAsUsualAndHealPutsItRight) {
  make_box("qe1");
  done({"pull", "box", "/PSU#3"});
  done({"fault", "box", "/PSU#1"});
  done({"program", "box", "ctlled", "--exit", "206"});
  done({"daemon", "box", "late", "5"});
  done({"break", "box", "/CMU#0", "--short"});
  done({"deviate", "box", "question", "--at", "2", "--end"});
  EXPECT_EQ(told("Units"), "/CMU#0: unreadable: record current_cmu_info_00 is 1759 bytes, should be 1760");
  for (const char *text :
       {"/PSU#3: Not installed", "/PSU#1: Faulted", "Program ctlled exits with 206", "The daemon answers after 5 s",
        "Record current_cmu_info_00 (database 2) is 1759 bytes, should be 1760", "question"}) {
    EXPECT_TRUE(tells(text)) << text;
  }
  const std::string healed = done({"heal", "box"});
  for (const char *line : {"Record current_cmu_info_00: restored\n", "Program ctlled: straight\n", "Daemon: answers\n",
                           "/PSU#3: in\n", "/PSU#1: normal\n"}) {
    EXPECT_NE(healed.find(line), std::string::npos) << line << " in " << healed;
  }
  EXPECT_EQ(told("Units"), "all normal");
  EXPECT_EQ(told("Bent"), "nothing");
  EXPECT_EQ(done({"heal", "box"}), "Nothing was to be put right.\n");
}

TEST_F(Status, TellsWhatAProcedureLeftAndHealTakesItBack) {
  make_box("qe1");
  for (const Words &left : {Words{"/mgb/bin/ctlmainte", "-c", "lock"}, Words{"/mgb/bin/ctlfan", "-c", "high"},
                            Words{"/mgb/bin/ctlled", "-u", "/PSU#3", "-c", "blink"},
                            Words{"/mgb/bin/setmainteflag", "-u", "/PSU#3", "-c", "start"}}) {
    ASSERT_EQ(in_box(left).exit_status, 0) << left.front();
  }
  EXPECT_EQ(told("Server"), "in maintenance mode, fans high, on service processor unit 0");
  EXPECT_EQ(told("Units"), "/PSU#3: Normal, LED blink, maintenance");
  const box::Bytes before = record(2, "current_psu_info");
  done({"heal", "box"});
  EXPECT_EQ(told("Server"), "no maintenance mode, fans low, on service processor unit 0");
  EXPECT_EQ(told("Units"), "all normal");
  EXPECT_NE(record(2, "current_psu_info"), before) << "the flag stands in the record, too";
}

TEST_F(Status, IsForScriptsToo) {
  make_box("qa");
  done({"pull", "box", "/PSU#1"});
  const std::string text = done({"status", "box", "--json"});
  EXPECT_NE(text.find("\"at_work\": []"), std::string::npos) << text;
  EXPECT_NE(text.find("\"name\": \"/PSU#1\""), std::string::npos) << text;
  EXPECT_NE(done({"heal", "box", "--json"}).find("\"/PSU#1: in\""), std::string::npos);
}

// The procedure at work would find its own flags gone.
TEST_F(Status, NamesWhoIsAtWorkAndHealLeavesTheirFlags) {
  make_box("qa");
  const std::string spbox = SPBOX, wait_for_mode = "for i in $(seq 500); do " + spbox +
                                                   " status box | grep -q 'in maintenance mode' && break; done; ";
  const Done both = run_to_end(
      {"/bin/sh", "-c",
       "cd " + scratch_.path().string() + " && mkfifo hold && { " + spbox +
           " run box -- sh -c '/mgb/bin/ctlmainte -c lock; read line' < hold & } && exec 3> hold; " + wait_for_mode +
           spbox + " status box; " + spbox + " heal box; " + spbox + " status box; echo > hold; wait"});
  EXPECT_NE(both.output.find("At work  sh -c /mgb/bin/ctlmainte -c lock"), std::string::npos) << both.output;
  EXPECT_NE(both.output.find("A command is at work: the maintenance mode, flags, LEDs and fans stay as they are."),
            std::string::npos)
      << both.output;
  EXPECT_NE(both.output.rfind("in maintenance mode"), both.output.find("in maintenance mode")) << both.output;
}

}  // namespace
