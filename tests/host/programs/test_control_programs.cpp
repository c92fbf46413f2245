#include <map>

#include "host/box/breakage.h"
#include "tests/host/programs/control_program.h"

namespace {

using EveryProgram = ControlProgram;

TEST_F(EveryProgram, SwitchesMaintenanceModeOnceEachWay) {
  expect({{"a box is not in maintenance mode", "ctlmainte", "-c unlock", 200, "maintenance", "unlock"},
          {"maintenance mode is switched on", "ctlmainte", "-c lock", 0, "maintenance", "lock"},
          {"maintenance mode is not switched on twice", "ctlmainte", "-c lock", 128, "maintenance", "lock"},
          {"maintenance mode is switched off", "ctlmainte", "-c unlock", 0, "maintenance", "unlock"},
          {"an unknown mode is refused", "ctlmainte", "-c open", 1, "maintenance", "unlock"},
          {"a missing mode is refused", "ctlmainte", "", 1},
          {"a mode without its option is refused", "ctlmainte", "lock", 1},
          {"an option that comes twice is refused", "ctlmainte", "-c lock -c lock", 1, "maintenance", "unlock"}});
}

TEST_F(EveryProgram, SetsTheFans) {
  expect({{"all fans", "ctlfan", "-c high", 0, "fan", "high"},
          {"all fans run slowly", "ctlfan", "-c low", 0, "fan", "low"},
          {"full speed for all fans is refused", "ctlfan", "-c full", 1, "fan", "low"},
          {"one unit", "ctlfan", "-u /FAN_A#0 -c full", 0, "fan /FAN_A#0", "full"},
          {"a unit of another model", "ctlfan", "-u /FAN_A#9 -c low", 219, "fan /FAN_A#9", ""},
          {"an unknown speed is refused", "ctlfan", "-u /FAN_A#0 -c slow", 1, "fan /FAN_A#0", "full"}});
}

TEST_F(EveryProgram, SwitchesLeds) {
  expect({{"blink", "ctlled", "-u /PSU#3 -c blink", 0, "led /PSU#3", "blink"},
          {"on", "ctlled", "-u /PSU#3 -c on", 0, "led /PSU#3", "on"},
          {"off", "ctlled", "-u /PSU#3 -c off", 0, "led /PSU#3", "off"},
          {"a unit on another unit", "ctlled", "-u /CMU#0/MEM#03A -c on", 0, "led /CMU#0/MEM#03A", "on"},
          {"a unit without a record", "ctlled", "-u /FANBP_C#0 -c on", 0, "led /FANBP_C#0", "on"},
          {"a unit that the model does not have", "ctlled", "-u /PSU#9 -c on", 206, "led /PSU#9", ""},
          {"no unit is named", "ctlled", "-c on", 1},
          {"an unknown state", "ctlled", "-u /PSU#3 -c dim", 1, "led /PSU#3", "off"},
          {"one word too many", "ctlled", "-u /PSU#3 -c on now", 1, "led /PSU#3", "off"},
          {"an unknown option", "ctlled", "-u /PSU#3 -x -c on", 1, "led /PSU#3", "off"}});
}

TEST_F(EveryProgram, LightsTheLedOfAUnitThatWantsServiceOnSync) {
  const box::Inventory inventory(place_);
  inventory.change(box::Change::kFault, {"/PSU#3"});
  inventory.change(box::Change::kDegrade, {"/CMU#1"});
  expect({{"faulted", "ctlled", "-u /PSU#3 -c sync", 0, "led /PSU#3", "on"},
          {"degraded", "ctlled", "-u /CMU#1 -c sync", 0, "led /CMU#1", "on"},
          {"normal", "ctlled", "-u /PSU#4 -c sync", 0, "led /PSU#4", "off"}});
  inventory.change(box::Change::kRepair, {"/PSU#3"});
  expect({{"repaired", "ctlled", "-u /PSU#3 -c sync", 0, "led /PSU#3", "off"}});
}

TEST_F(EveryProgram, SetsMaintenanceFlagsOnceEachWay) {
  expect({{"not under maintenance", "setmainteflag", "-u /PSU#3 -c end", 204, "flag /PSU#3", ""},
          {"start", "setmainteflag", "-u /PSU#3 -c start", 0, "flag /PSU#3", "start"},
          {"a flag that is set is not set again", "setmainteflag", "-u /PSU#3 -c start", 128, "flag /PSU#3", "start"},
          {"another unit", "setmainteflag", "-u /PSU#4 -c start", 0, "flag /PSU#4", "start"},
          {"end", "setmainteflag", "-u /PSU#3 -c end", 0, "flag /PSU#3", ""},
          {"a unit that the model lacks", "setmainteflag", "-u /PSU#9 -c start", 204, "flag /PSU#9", ""},
          {"no such flag", "setmainteflag", "-u /PSU#3 -c stop", 1}});
}

TEST_F(EveryProgram, ReportsMaintenance) {
  expect({{"start", "vantamainte", "-s", 0, "report", "start"},
          {"end", "vantamainte", "-e", 0, "report", "end"},
          {"start and end at once are refused", "vantamainte", "-s -e", 1, "report", "end"},
          {"neither start nor end is refused", "vantamainte", "", 1}});
}

TEST_F(EveryProgram, DrivesExpansionUnits) {
  expect({{"power off", "ioadm", "poweroff /IOX@0A21", 0, "power /IOX@0A21", "off"},
          {"power on", "ioadm", "poweron /IOX@0A21", 0, "power /IOX@0A21", "on"},
          {"LED", "ioadm", "-u /IOX@0A22 -c blink", 0, "led /IOX@0A22", "blink"},
          {"a part of a unit", "ioadm", "-u /IOX@0A22/PSU#0 -c on", 0, "led /IOX@0A22/PSU#0", "on"},
          {"no such unit", "ioadm", "poweron /IOX@FFFF", 128, "power /IOX@FFFF", ""},
          {"no expansion unit", "ioadm", "-u /PSU#0 -c on", 128},
          {"no such LED mode", "ioadm", "-u /IOX@0A22 -c sync", 1},
          {"LED and power at once are refused", "ioadm", "-c on poweron /IOX@0A22", 1}});
}

TEST_F(EveryProgram, RefusesLinesThatMakeNoSense) {
  expect({{"judge what", "judgectlfru", "-u /PSU#0", 1},
          {"no unit to judge", "judgectlfru", "-c add", 1},
          {"no unit to test", "testfru", "", 1},
          {"one word too many for a test", "testfru", "-u /PSU#0 twice", 1},
          {"no unit to detach", "detachfru", "", 1},
          {"no unit whose speed is checked", "chkfanspeed", "", 1},
          {"an unknown direction of a link", "linkboard", "-u /CMU#0 -c left", 1},
          {"no unit to link", "linkboard", "-c up", 1},
          {"no board to test", "testsb", "-q", 1},
          {"no board to divide", "setupfru", "-m n -x 1 sb", 1},
          {"a division into three", "setupfru", "-m n -x 3 sb 0", 1},
          {"mirrored memory and four parts", "setupfru", "-m y -x 4 sb 3", 1},
          {"a division of something that is no board", "setupfru", "-m n -x 1 cmu 0", 1},
          {"a part number above 3", "deleteboard", "-q y -c unassign 03-4", 1},
          {"a board number that is no number", "deleteboard", "-q y -c unassign 0x-0", 1},
          {"no part to delete", "deleteboard", "-q y -c unassign", 1},
          {"an unknown way to delete", "deleteboard", "-q y -c remove 03-0", 1},
          {"no slot to clear", "clearpci", "", 1},
          {"one word too many for waitmgbready", "waitmgbready", "now", 1},
          {"ready", "waitmgbready", "", 0}});
}

TEST_F(EveryProgram, HasAStatusForAUnitThatTheModelLacks) {
  expect({{"judge", "judgectlfru", "-u /PSU#9 -c add", 203},
          {"test", "testfru", "-u /PSU#9", 208},
          {"detach", "detachfru", "-u /NOPE", 205},
          {"fan speed", "chkfanspeed", "-u /FAN_B#99", 225},
          {"link", "linkboard", "-u /CMU#9 -c up", 226},
          {"clear", "clearpci", "-u /IOU#9/PCI#1", 220},
          {"test a board", "testsb", "-q -y 4", 208},
          {"test a board whose number is no number", "testsb", "-q -y 3x", 208},
          {"divide a board", "setupfru", "-m n -x 4 sb 4", 136},
          {"delete a board", "deleteboard", "-q y -c unassign 04-0", 131}});
}

TEST_F(EveryProgram, LeavesARecordOfItsLastRun) {
  EXPECT_FALSE(last_run("ctlled"));
  run("ctlled", "-u /PSU#3 -c blink");
  run("ctlled", "-u /PSU#9 -c on");
  const auto last = last_run("ctlled");
  ASSERT_TRUE(last);
  EXPECT_EQ(last->arguments, "-u /PSU#9 -c on");
  EXPECT_EQ(last->status, 206);
  EXPECT_GT(last->pid, 0);
  EXPECT_FALSE(last_run("ctlfan"));
}

// Several at a time: one enters maintenance mode, the others are told that they come second.
TEST_F(EveryProgram, SwitchesOnceWhoeverElseDoes) {
  const struct {
    const char *says, *name, *line;
    int second;
  } rows[] = {{"mode is entered", "ctlmainte", "-c lock", 128},
              {"mode is left", "ctlmainte", "-c unlock", 200},
              {"a flag is set", "setmainteflag", "-u /PSU#3 -c start", 128},
              {"a flag is taken", "setmainteflag", "-u /PSU#3 -c end", 204}};
  for (int times = 0; times < 10; ++times) {
    for (const auto &row : rows) {
      std::vector<pid_t> racing(6);
      for (pid_t &pid : racing) pid = start(row.name, row.line);
      std::map<int, int> ends;
      for (const pid_t pid : racing) ++ends[base::exit_status_of(pid)];
      EXPECT_EQ(ends, (std::map<int, int>{{0, 1}, {row.second, 5}})) << row.says;
    }
  }
}

// What each of them needs, it does not take for missing, for well or for faulted.
TEST_F(EveryProgram, FailsWhereARecordThatDecidesCannotBeRead) {
  const auto rows = {Row{"judge what is added", "judgectlfru", "-u /PSU#3 -c add", 8},
                     Row{"judge what is taken", "judgectlfru", "-u /PSU#3 -c del", 8},
                     Row{"test", "testfru", "-u /PSU#3", 8, "detached /PSU#3", ""},
                     Row{"detach", "detachfru", "-u /PSU#3", 8, "detached /PSU#3", ""},
                     Row{"detach a board", "detachfru", "-u /CMU#0", 8, "detached /CMU#0", ""},
                     Row{"light", "ctlled", "-u /PSU#3 -c sync", 8, "led /PSU#3", ""},
                     Row{"flag", "setmainteflag", "-u /PSU#3 -c start", 8, "flag /PSU#3", ""},
                     Row{"clear", "clearpci", "-u /IOU#0/PCI#1", 8},
                     Row{"fan speed", "chkfanspeed", "-u /FAN_B#7", 8},
                     Row{"divide", "setupfru", "-m n -x 4 sb 0", 8, "mirror 0", ""},
                     Row{"delete", "deleteboard", "-q y -c unassign 00-0", 8},
                     Row{"test a board", "testsb", "-q -y 0", 8},
                     Row{"link", "linkboard", "-u /CMU#0 -c up", 8, "link /CMU#0", ""},
                     Row{"unlink", "linkboard", "-u /CMU#0 -c down", 8, "link /CMU#0", ""}};
  for (const box::Breakage how : {box::Breakage::kMissing, box::Breakage::kShort, box::Breakage::kLong}) {
    for (const char *record : {"current_psu_info", "current_fantray_info", "current_cmu_info_00", "current_iou_info_00",
                               "current_xsb_info_00"}) {
      box::break_records(place_, {{2, record}}, how);
    }
    expect(rows);
    EXPECT_EQ(last_run("linkboard")->status, 8);
  }
}

TEST_F(EveryProgram, NeedsNoRecordThatDecidesNothing) {
  for (const char *record : {"current_psu_info", "current_cmu_info_00"}) {
    box::break_records(place_, {{2, record}}, box::Breakage::kMissing);
  }
  expect({{"mode", "ctlmainte", "-c lock", 0, "maintenance", "lock"},
          {"fans", "ctlfan", "-u /PSU#3 -c full", 0, "fan /PSU#3", "full"},
          {"report", "vantamainte", "-s", 0, "report", "start"},
          {"expansion unit", "ioadm", "poweroff /IOX@0A21", 0, "power /IOX@0A21", "off"},
          {"ready", "waitmgbready", "", 0},
          {"flag", "setmainteflag", "-u /CMU#3 -c start", 0, "flag /CMU#3", "start"},
          {"LED", "ctlled", "-u /PSU#3 -c on", 0, "led /PSU#3", "on"},
          {"fan tray", "chkfanspeed", "-u /FAN_B#7", 0},
          {"another board", "judgectlfru", "-u /CMU#3 -c add", 128}});
}

TEST_F(EveryProgram, FailsWhereThereIsNoBox) {
  std::filesystem::remove_all(place_.root() / "mgb");
  EXPECT_EQ(run("ctlled", "-u /PSU#3 -c blink"), 8);
}

TEST_F(EveryProgram, DoesNotRunUnderAnUnknownName) {
  EXPECT_EQ(run("ctlother", "-c on"), 1);
}

TEST(ControlPrograms, AreLinkedWhereTheLibraryLooks) {
  const Scratch scratch;
  const box::Place place(scratch / "box");
  box::create_box(place, LMAINTE_MODEL_QA);
  int links = 0;
  for (const char *folder : {"mgb/bin", "mgb/cli/usr/bin"}) {
    for (const auto &entry : std::filesystem::directory_iterator(place.root() / folder)) {
      EXPECT_EQ(std::filesystem::read_symlink(entry.path()), "/mgb/lib/control_program");
      ++links;
    }
  }
  EXPECT_EQ(links, 16);
  EXPECT_TRUE(std::filesystem::is_symlink(place.root() / "mgb/bin/linkboard"));
  EXPECT_TRUE(std::filesystem::is_symlink(place.root() / "mgb/cli/usr/bin/ioadm"));
}

}  // namespace
