#include <fstream>

#include "tests/host/spbox/spbox_test.h"

namespace {

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
  EXPECT_NE(refused({"technician", "box", "--limit", "1", "--do", "when mode lock"}).find("in 1 s"), std::string::npos);
}

TEST_F(TechnicianVerb, EndsWithTwoWhereTheScriptOrTheCommandLineMakesNoSense) {
  write("hands.txt", "pull /PSU#0\npush /PSU#0\n");
  write("nul.txt", std::string("pull \0", 6));
  const struct {
    Words words;
    const char *says;
  } rows[] = {
      {{"--do", "push /PSU#0"}, "spbox: step 1: `push /PSU#0`: there is no step \"push\"; "},
      {{"hands.txt"}, "spbox: hands.txt:2: `push /PSU#0`: there is no step \"push\"; "},
      {{"nul.txt"}, "spbox: nul.txt:1: `pull \\x00`: the byte \\x00 stands there, which is no text\n"},
      {{"/proc/self/mem"}, "spbox: /proc/self/mem: it cannot be read: Input/output error\n"},
      {{"nowhere.txt"}, "spbox: nowhere.txt: there is no such file\n"},
      {{}, "spbox: no steps are given. Name a SCRIPT, or give them with --do. "},
      {{"hands.txt", "--do", "after 1"}, "spbox: SCRIPT and --do cannot be given together. "},
      {{"hands.txt", "--ready-fd", "99"}, "spbox: --ready-fd 99: this descriptor is not open for writing. "},
  };
  for (const auto &row : rows) {
    Words words{"technician", "box"};
    words.insert(words.end(), row.words.begin(), row.words.end());
    const Done done = spbox(words);
    EXPECT_EQ(done.exit_status, 2) << done.output;
    EXPECT_TRUE(done.output.starts_with(row.says)) << done.output;
  }
  EXPECT_EQ(state_word(box::Inventory(place()).unit("/PSU#0")), "Normal");
}

}  // namespace
