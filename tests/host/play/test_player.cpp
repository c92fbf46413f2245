#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "host/terminal/player.h"

namespace {

using terminal::Player;
using terminal::ScriptError;

// A stand-in for spbox that runs commands where it stands, and says what else it was asked.
class PlayerTest : public testing::Test {
 protected:
  void SetUp() override {
    char name[] = "/tmp/test_player.XXXXXX";
    folder_ = mkdtemp(name);
    std::ofstream spbox(folder_ / "spbox");
    spbox << "#!/bin/sh\n"
             "if [ $1 = run ]; then shift 3; exec \"$@\"; fi\n"
             "echo asked: $*\n"
             "[ $1 != refuse ]\n";
    spbox.close();
    chmod((folder_ / "spbox").c_str(), 0755);
  }
  void TearDown() override { std::filesystem::remove_all(folder_); }

  std::string play(const std::string &text) {
    std::istringstream script(text);
    std::ostringstream out;
    Player({folder_ / "spbox", "the/box"}, out).play(script, "walk.play");
    return out.str();
  }

  std::string error_of(const std::string &text) {
    try {
      play(text);
    } catch (const ScriptError &error) {
      return error.what();
    }
    return "no error";
  }

  std::filesystem::path folder_;
};

TEST_F(PlayerTest, PrintsTheScreenThatTheOperatorSees) {
  EXPECT_EQ(play("start sh -c \"echo Which?; read n; echo you said $n\"\n"
                 "wait \"Which?\"\n"
                 "type \"3\\n\"\n"
                 "wait \"you said\"\n"
                 "screen \"the answer\"\n"
                 "exit 0\n"),
            "The operator starts: sh -c echo Which?; read n; echo you said $n\n"
            "\n"
            "The operator types: \"3\", Enter\n"
            "\n"
            "+-- the answer ---------------------------------------------------------------\n"
            "| Which?\n"
            "| 3\n"
            "| you said 3\n"
            "+-----------------------------------------------------------------------------\n"
            "\n"
            "The command ends with exit status 0.\n"
            "\n");
}

TEST_F(PlayerTest, LetsTheTechnicianWorkOnTheBox) {
  EXPECT_EQ(play("spbox pull /PSU#3"),
            "The technician: spbox pull /PSU#3\n"
            "    asked: pull the/box /PSU#3\n"
            "\n");
}

TEST_F(PlayerTest, PrintsTheScriptsOwnWords) {
  EXPECT_EQ(play("say \"Now the list.\""), "Now the list.\n\n");
}

TEST_F(PlayerTest, ShowsTheScreenWhenATextDoesNotComeUp) {
  EXPECT_EQ(error_of("\nstart echo hello\nwait \"Which?\"\n"),
            "walk.play:3: \"Which?\" did not come up. The screen:\n"
            "+-- screen -------------------------------------------------------------------\n"
            "| hello\n"
            "+-----------------------------------------------------------------------------\n"
            "\n");
}

TEST_F(PlayerTest, IsPatientAsLongAsItIsTold) {
  EXPECT_EQ(error_of("patience 0\nstart sleep 30\nwait \"Which?\"\n").substr(0, 37),
            "walk.play:3: \"Which?\" did not come up");
  EXPECT_EQ(error_of("patience 0\nstart sleep 30\nexit 0\n").substr(0, 38), "walk.play:3: the command does not end.");
}

TEST_F(PlayerTest, ChecksHowTheCommandEnds) {
  const auto error = error_of("start sh -c \"exit 4\"\nexit 0\n");
  EXPECT_EQ(error.substr(0, error.find(". The screen")),
            "walk.play:2: the command ended with exit status 4, not with exit status 0");
}

TEST_F(PlayerTest, StopsWhereTheTechnicianIsRefused) {
  EXPECT_EQ(error_of("spbox refuse /PSU#99"),
            "walk.play:1: spbox refuse /PSU#99 ended with exit status 1:\nasked: refuse the/box /PSU#99\n");
}

TEST_F(PlayerTest, SaysHowAStepIsWritten) {
  EXPECT_EQ(error_of("wait"), "walk.play:1: write it as: wait \"text\"");
  EXPECT_EQ(error_of("exit soon"), "walk.play:1: \"soon\" is no number");
  EXPECT_EQ(error_of("jump"),
            "walk.play:1: unknown step \"jump\"; the steps are start, wait, type, screen, exit, spbox, patience, say");
}

}  // namespace
