#include <gtest/gtest.h>

#include <unistd.h>

#include <chrono>
#include <fstream>
#include <memory>

#include "host/box/database.h"
#include "host/play/leftovers.h"
#include "tests/host/box/child.h"
#include "tests/host/play/play_test.h"

namespace {

using Sentences = std::vector<std::string>;

class LeftoversTest : public PlayTest {
 protected:
  LeftoversTest() { make_box("qe2"); }

  // What a play finds that ends with in_order: the lines between the first one and the screen. "no error" where it finds
  // nothing, and the whole error where another step fails.
  std::string found_after(const std::string &text, const std::string &in_order = "in_order\n") {
    auto error = error_of(text + in_order);
    const auto begin = error.find('\n') + 1;
    if (!error.substr(0, begin).ends_with(": not all is in order:\n")) return error;
    return error.substr(begin, error.find("+--") - begin);
  }
};

// A process that stays, and is what it will be before the command goes on.
const std::string kLeavesAProcess = "sleep 30 & until grep -qx sleep /proc/$$!/comm; do :; done; ";

constexpr const char *kNow = "patience 0\nin_order\n";

struct LeftoverRow {
  const char *says;
  const char *key, *value;
  Sentences found;
};

const LeftoverRow kLeftovers[] = {
    {"an LED blinks", "led /PSU#3", "blink", {"the LED of /PSU#3 blinks"}},
    {"an LED is on", "led /FAN_A#1", "on", {"the LED of /FAN_A#1 is on"}},
    {"an LED is off", "led /PSU#3", "off", {}},
    {"a unit has its maintenance flag", "flag /CMU#0", "start", {"/CMU#0 is under maintenance"}},
    {"all fans are fast", "fan", "high", {"the fans run at speed \"high\""}},
    {"one tray's fans are fast", "fan /FAN_A#1", "high", {"the fans of /FAN_A#1 run at speed \"high\""}},
    {"one tray's fans are slow", "fan /FAN_A#1", "low", {}},
    {"the server is in maintenance mode", "maintenance", "lock", {"maintenance mode is on"}},
    {"a unit is out of operation", "detached /PSU#3", "yes", {"/PSU#3 is detached"}},
};

TEST_F(LeftoversTest, NamesEverySettingThatACommandHasToTakeBack) {
  EXPECT_EQ(play::left_in_hardware(place(), {}), Sentences{});
  for (const LeftoverRow &row : kLeftovers) {
    box::TextDatabase hardware(place());
    const auto before = hardware.all();
    hardware.set(row.key, row.value);
    EXPECT_EQ(play::left_in_hardware(place(), {}), row.found) << row.says;
    for (const auto &[key, value] : before) hardware.set(key, value);
    hardware.clear(before.contains(row.key) ? "none" : row.key);
  }
}

TEST_F(LeftoversTest, WantsTheNamedUnitsDetached) {
  box::Hardware hardware(place());
  hardware.set_detached("/PSU#3", true);
  hardware.set_detached("/PSU#4", true);
  hardware.set_led("/PSU#3", "on");
  EXPECT_EQ(play::left_in_hardware(place(), {"PSU#3", "/PSU#4"}), Sentences{"the LED of /PSU#3 is on"});
  EXPECT_EQ(play::left_in_hardware(place(), {"/PSU#4"}), (Sentences{"/PSU#3 is detached", "the LED of /PSU#3 is on"}));
  hardware.set_detached("/PSU#3", false);
  EXPECT_EQ(play::left_in_hardware(place(), {"PSU#3", "/PSU#4"}),
            (Sentences{"the LED of /PSU#3 is on", "/PSU#3 is not detached"}));
}

TEST_F(LeftoversTest, NamesAUnitThatTheBoxDoesNotHave) {
  EXPECT_EQ(reason_of("start true\nexit 0\nin_order but PSU#99\n"),
            "walk.play:3: `in_order but PSU#99`: a server of model qe2 has no unit /PSU#99");
}

TEST_F(LeftoversTest, WaitsAsLongAsItsPatienceForWhatDiesWithTheCommand) {
  EXPECT_EQ(found_after("start sh -c \"sleep 1.5 & exit 0\"\nexit 0\n"), "no error");
}

TEST_F(LeftoversTest, NamesALockedDatabase) {
  box::Database current(place().database(2));
  ASSERT_TRUE(current.lock());
  EXPECT_EQ(play::locked_databases(place()), Sentences{"database 2 is locked"});
  ASSERT_TRUE(current.unlock());
  EXPECT_EQ(play::locked_databases(place()), Sentences{});
}

TEST_F(LeftoversTest, NamesLockedDatabasesWithoutWaitingForTheirLocks) {
  const Child locker([this](const auto &say_ready) {
    std::vector<std::unique_ptr<box::Database>> databases;
    for (std::uint32_t id = 0; id < 6; ++id) {
      databases.push_back(std::make_unique<box::Database>(place().database(id)));
      if (!databases.back()->lock()) return 1;
    }
    say_ready();
    for (;;) pause();
  });
  ASSERT_TRUE(locker.is_ready());
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(found_after("start true\nexit 0\n", kNow),
            "    database 0 is locked\n    database 1 is locked\n    database 2 is locked\n"
            "    database 3 is locked\n    database 4 is locked\n    database 5 is locked\n");
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(3)) << "six locks, each for some seconds";
}

TEST_F(LeftoversTest, IsContentWithACommandThatLeavesNothing) {
  EXPECT_EQ(found_after("start sh -c \"stty -echo; stty echo; : >" + path("box/tmp/empty") + "\"\nexit 0\n"),
            "no error");
}

TEST_F(LeftoversTest, NamesTheModeOfTheTerminal) {
  EXPECT_EQ(found_after("start stty -echo -icanon\nexit 0\n", kNow),
            "    the terminal has another mode than before: echo off, lines off, interrupt on\n");
}

TEST_F(LeftoversTest, AsksNothingOfATerminalWhoseLineIsCut) {
  EXPECT_EQ(found_after("start sh -c \"stty -echo; echo up; exec sleep 30\"\nwait \"up\"\nhangup\ndies 1\n"),
            "no error");
}

TEST_F(LeftoversTest, NamesTheProcessesOfTheCommand) {
  EXPECT_EQ(found_after("start sh -c \"" + kLeavesAProcess + "exit 0\"\nexit 0\n", kNow), "    sleep still runs\n");
  write("up", "up\n");
  EXPECT_EQ(found_after("start tail -f " + path("up") + "\nwait \"up\"\n", kNow), "    tail still runs\n");
}

TEST_F(LeftoversTest, HoldsAProcessThatAKilledCommandLeftAgainstTheNextOne) {
  const std::string leaves = "start sh -c \"setsid sh -c 'echo 1 >" + path("up") + "; sleep 5; true' x " + path("box") +
                             " & until [ -s " + path("up") + " ]; do :; done; ";
  EXPECT_EQ(found_after(leaves + "kill -KILL $$$$\"\ndies KILL\nstart true\nexit 0\n", kNow), "    sh still runs\n");
  write("up", "");
  EXPECT_EQ(found_after(leaves + "exit 0\"\nexit 0\nstart true\nexit 0\n", kNow), "no error")
      << "one that ended by itself meant to leave it";
}

TEST_F(LeftoversTest, NamesTheFilesOfTheCommandAndOfNobodyElse) {
  std::ofstream(path("box/tmp/mine")) << "there before";
  EXPECT_EQ(
      found_after("start sh -c \"mkdir " + path("box/tmp/a") + "; echo 1 >" + path("box/tmp/a/list") + "\"\nexit 0\n",
                  kNow),
      "    the file /tmp/a/list is left\n");
}

TEST_F(LeftoversTest, NamesAllThatIsNotInOrder) {
  box::Hardware(place()).set_led("/PSU#3", "blink");
  EXPECT_EQ(
      found_after("start sh -c \"" + kLeavesAProcess + "stty -echo; echo 1 >" + path("box/tmp/list") + "\"\nexit 0\n",
                  "patience 0\nin_order but /PSU#4\n"),
      "    the LED of /PSU#3 blinks\n"
      "    /PSU#4 is not detached\n"
      "    the terminal has another mode than before: echo off, lines on, interrupt on\n"
      "    sleep still runs\n"
      "    the file /tmp/list is left\n");
}

TEST_F(LeftoversTest, DoesNotTakeATechnicianForTheCommand) {
  EXPECT_EQ(error_of("start true\nexit 0\nhands \"pull /tomorrow\"\nin_order\nstart touch " + path("tomorrow") +
                     "\nexit 0\n"),
            "no error");
}

}  // namespace
