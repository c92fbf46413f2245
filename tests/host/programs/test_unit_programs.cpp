// What the programs for one unit do to it, and when they refuse.
#include "host/box/breakage.h"
#include "host/box/inventory_records.h"
#include "host/box/partitions.h"
#include "tests/host/programs/control_program.h"

namespace {

using box::Change;

class UnitPrograms : public ControlProgram {
 protected:
  std::uint32_t unit_status(const std::string &name) const { return box::Inventory(place_).unit(name).status; }
  static bool is_marked(std::uint32_t status) { return (status & 0x8000) != 0; }
};

class UnitProgramsOfTheEntryModel : public ControlProgram {
 protected:
  UnitProgramsOfTheEntryModel() : ControlProgram(LMAINTE_MODEL_QA) {}
};

TEST_F(UnitPrograms, AReplacementGoesThroughThemStepByStep) {
  expect({{"it may be taken", "judgectlfru", "-u /PSU#3 -c del", 0},
          {"a unit in operation is not added", "judgectlfru", "-u /PSU#3 -c add", 128},
          {"a unit in operation is detached", "detachfru", "-u /PSU#3", 0, "detached /PSU#3", "yes"},
          {"a detached unit may be detached again", "detachfru", "-u /PSU#3", 0, "detached /PSU#3", "yes"}});
  change(Change::kPull, {"/PSU#3"});
  expect({{"an empty place may get one", "judgectlfru", "-u /PSU#3 -c add", 0},
          {"nothing is removed from an empty place", "judgectlfru", "-u /PSU#3 -c del", 128},
          {"nothing is tested in an empty place", "testfru", "-u /PSU#3", 128, "detached /PSU#3", "yes"},
          {"nothing is detached in an empty place", "detachfru", "-u /PSU#3", 128}});
  change(Change::kInsert, {"/PSU#3"});
  expect({{"the new one may be added", "judgectlfru", "-u /PSU#3 -c add", 0},
          {"a unit that passes its test is in operation", "testfru", "-u /PSU#3", 0, "detached /PSU#3", ""},
          {"a unit that passed is not added again", "judgectlfru", "-u /PSU#3 -c add", 128}});
}

TEST_F(UnitPrograms, AFaultedUnitFailsItsTest) {
  change(Change::kFault, {"/PSU#3"});
  expect({{"faulted, it may be added anew", "judgectlfru", "-u /PSU#3 -c add", 0},
          {"detached", "detachfru", "-u /PSU#3", 0, "detached /PSU#3", "yes"},
          {"a unit that fails its test stays detached", "testfru", "-u /PSU#3", 208, "detached /PSU#3", "yes"}});
  change(Change::kRepair, {"/PSU#3"});
  expect({{"repaired", "testfru", "-u /PSU#3", 0, "detached /PSU#3", ""}});
  change(Change::kDegrade, {"/PSU#4"});
  expect({{"degraded units pass", "testfru", "-u /PSU#4", 0}});
}

TEST_F(UnitPrograms, AUnitFailsItsTestForWhatSitsOnIt) {
  change(Change::kFault, {"/CMU#0/MEM#03A"});
  expect({{"the unit", "testfru", "-u /CMU#0", 208}, {"its neighbour", "testfru", "-u /CMU#1", 0}});
}

TEST_F(UnitProgramsOfTheEntryModel, TheLastOneThatWorksIsNotTaken) {
  expect({{"one of two", "judgectlfru", "-u /PSU#0 -c del", 0}});
  change(Change::kFault, {"/PSU#1"});
  expect({{"the other one is faulted", "judgectlfru", "-u /PSU#0 -c del", 232},
          {"the last working unit is not detached", "detachfru", "-u /PSU#0", 128, "detached /PSU#0", ""},
          {"the faulted unit may be removed", "judgectlfru", "-u /PSU#1 -c del", 0}});
  change(Change::kRepair, {"/PSU#1"});
  expect({{"the other one is detached", "detachfru", "-u /PSU#1", 0},
          {"the only unit in operation may not be removed", "judgectlfru", "-u /PSU#0 -c del", 232},
          {"the other unit passes its test", "testfru", "-u /PSU#1", 0},
          {"then the first unit may be removed", "judgectlfru", "-u /PSU#0 -c del", 0}});
}

TEST_F(UnitPrograms, TheLastOneThatWorksIsNotTakenWhateverItsKind) {
  change(Change::kFault, {"/EMGBU_B#1", "/DDC_A#1"});
  expect({{"a service processor unit", "judgectlfru", "-u /EMGBU_B#0 -c del", 232},
          {"a DDC unit", "judgectlfru", "-u /DDC_A#0 -c del", 232},
          {"one of many fan trays may be removed", "judgectlfru", "-u /FAN_A#0 -c del", 0}});
  change(Change::kFault, {"/FAN_A#1", "/FAN_A#2", "/FAN_A#3", "/FAN_B#0", "/FAN_B#1", "/FAN_B#2", "/FAN_B#3",
                          "/FAN_B#4", "/FAN_B#5", "/FAN_B#6", "/FAN_B#7"});
  expect({{"the last fan tray", "judgectlfru", "-u /FAN_A#0 -c del", 232}});
}

TEST_F(UnitProgramsOfTheEntryModel, AUnitThatIsOutStaysOutWhateverTheOthersAre) {
  expect({{"one of two", "detachfru", "-u /PSU#1", 0}});
  change(Change::kFault, {"/PSU#0"});
  expect({{"it is detached again, although no other one works", "detachfru", "-u /PSU#1", 0}});
}

TEST_F(UnitProgramsOfTheEntryModel, ACardMayBeAddedAndTheOnlyBoardMayNot) {
  change(Change::kFault, {"/MBU_A/PCI#0"});
  expect({{"a faulted card", "judgectlfru", "-u /MBU_A/PCI#0 -c add", 0},
          {"the board", "judgectlfru", "-u /MBU_A -c add", 128}});
}

TEST_F(UnitProgramsOfTheEntryModel, TheOnlyBoardIsNotTakenNorWhatSitsOnIt) {
  expect({{"the board", "judgectlfru", "-u /MBU_A -c del", 232},
          {"a memory module", "judgectlfru", "-u /MBU_A/MEM#0A -c del", 232},
          {"the only board is not detached", "detachfru", "-u /MBU_A", 128},
          {"the card of a PCI slot may be removed", "judgectlfru", "-u /MBU_A/PCI#0 -c del", 0}});
}

TEST_F(UnitPrograms, AModuleMayGoOnceNoDomainRunsOnItsBoard) {
  expect({{"a domain runs", "judgectlfru", "-u /CMU#0/MEM#03A -c del", 232},
          {"the board is detached", "detachfru", "-u /CMU#0", 0},
          {"a module on a detached board may be removed", "judgectlfru", "-u /CMU#0/MEM#03A -c del", 0}});
  change(Change::kPull, {"/CMU#0"});
  expect({{"no module without a board", "judgectlfru", "-u /CMU#0/MEM#03A -c add", 128},
          {"the board may be added again", "judgectlfru", "-u /CMU#0 -c add", 0}});
}

// A unit under maintenance is marked in its status word, and the server in its own while any unit is.
TEST_F(UnitPrograms, UnitsUnderMaintenanceAreMarkedInTheDatabase) {
  const auto expect_marks = [&](bool psu, bool slot, bool server) {
    EXPECT_EQ(is_marked(unit_status("/PSU#3")), psu);
    EXPECT_EQ(is_marked(unit_status("/IOU#0/PCI#1")), slot);
    EXPECT_EQ(is_marked(box::server_of(place_).status), server);
    EXPECT_FALSE(is_marked(unit_status("/PSU#4")));
  };
  expect_marks(false, false, false);
  expect({{"one", "setmainteflag", "-u /PSU#3 -c start", 0}});
  expect_marks(true, false, true);
  expect({{"one on a board", "setmainteflag", "-u /IOU#0/PCI#1 -c start", 0}});
  expect_marks(true, true, true);
  expect({{"the first one is done", "setmainteflag", "-u /PSU#3 -c end", 0}});
  expect_marks(false, true, true);
  expect({{"nothing to end", "setmainteflag", "-u /PSU#3 -c end", 204}});
  expect_marks(false, true, true);
  expect({{"one without a record", "setmainteflag", "-u /FANBP_C#0 -c start", 0, "flag /FANBP_C#0", "start"},
          {"the second one is done", "setmainteflag", "-u /IOU#0/PCI#1 -c end", 0}});
  expect_marks(false, false, true);
  expect({{"the last one is done", "setmainteflag", "-u /FANBP_C#0 -c end", 0, "flag /FANBP_C#0", ""}});
  expect_marks(false, false, false);
}

TEST_F(UnitPrograms, AMarkForReplacementChangesNoDecision) {
  change(Change::kFault, {"/PSU#4"});
  expect({{"of a unit that works", "setmainteflag", "-u /PSU#3 -c start", 0},
          {"of a faulted one", "setmainteflag", "-u /PSU#4 -c start", 0},
          {"a unit under maintenance is not added", "judgectlfru", "-u /PSU#3 -c add", 128},
          {"a unit under maintenance may be removed", "judgectlfru", "-u /PSU#3 -c del", 0},
          {"sync leaves the LED of a normal unit off", "ctlled", "-u /PSU#3 -c sync", 0, "led /PSU#3", "off"},
          {"a unit under maintenance passes its test", "testfru", "-u /PSU#3", 0},
          {"a faulted unit fails its test", "testfru", "-u /PSU#4", 208}});
}

// The flag, the unit's mark and that of the server: all three change or none does.
TEST_F(UnitPrograms, AFlagWhoseRecordsCannotBeChangedStays) {
  for (const char *record : {"current_psu_info", "current_system_info"}) {
    SCOPED_TRACE(record);
    for (const box::Breakage how : {box::Breakage::kMissing, box::Breakage::kShort, box::Breakage::kLong}) {
      box::break_records(place_, {{2, record}}, how);
      expect({{"is not set", "setmainteflag", "-u /PSU#3 -c start", 8, "flag /PSU#3", ""}});
      EXPECT_EQ(last_run("setmainteflag")->status, 8);
      box::mend_records(place_, {{2, record}});
      EXPECT_EQ(unit_status("/PSU#3"), 0x80000000u);
      EXPECT_EQ(box::server_of(place_).status, 0x80000000u);

      expect({{"is set", "setmainteflag", "-u /PSU#3 -c start", 0}});
      box::break_records(place_, {{2, record}}, how);
      expect({{"is not taken", "setmainteflag", "-u /PSU#3 -c end", 8, "flag /PSU#3", "start"}});
      box::mend_records(place_, {{2, record}});
      EXPECT_EQ(unit_status("/PSU#3"), 0x80008000u);
      EXPECT_EQ(box::server_of(place_).status, 0x80008000u);
      expect({{"is taken", "setmainteflag", "-u /PSU#3 -c end", 0}});
    }
  }
}

TEST_F(UnitProgramsOfTheEntryModel, AUnitThatIsWrittenDownInSeveralRecordsIsMarkedInEach) {
  expect({{"the board", "setmainteflag", "-u /MBU_A -c start", 0}});
  const box::Contents contents = box::contents_of(place_);
  for (const char *record : {"current_cmu_info_00", "current_iou_info_00", "current_mgb_info"}) {
    EXPECT_EQ(box::word_at(contents.records[2].at(record), 8), 0x80008000u) << record;
  }
}

TEST_F(UnitPrograms, TheFansOfATrayAreChecked) {
  expect({{"all turn", "chkfanspeed", "-u /FAN_B#7", 0}, {"a power supply has none", "chkfanspeed", "-u /PSU#0", 225}});
  change(Change::kFault, {"/FAN_B#7"});
  expect({{"the tray is faulted", "chkfanspeed", "-u /FAN_B#7", 225}});
  change(Change::kPull, {"/FAN_B#7"});
  expect({{"the tray is gone", "chkfanspeed", "-u /FAN_B#7", 128}});
}

TEST_F(UnitPrograms, AFanThatStandsStillFailsTheCheckOfItsTray) {
  const auto units = box::Inventory(place_).units();
  const auto fan = std::find_if(units.begin(), units.end(),
                                [](const box::Unit &unit) { return unit.place.name.starts_with("/FAN_A#0/"); });
  ASSERT_NE(fan, units.end());
  change(Change::kFault, {fan->place.name});
  expect({{"one of its fans", "chkfanspeed", "-u /FAN_A#0", 225}});
}

TEST_F(UnitPrograms, ClearingASlotMakesItNormal) {
  change(Change::kFault, {"/IOU#0/PCI#1"});
  change(Change::kDegrade, {"/IOU#0/PCI#2"});
  const auto state = [this](const char *unit) { return std::string(state_word(box::Inventory(place_).unit(unit))); };
  expect({{"one", "clearpci", "-u /IOU#0/PCI#1", 0}});
  EXPECT_EQ(state("/IOU#0/PCI#1"), "Normal");
  EXPECT_EQ(state("/IOU#0/PCI#2"), "Degraded");
  expect({{"another, among words that are no units", "clearpci", "slot 2 /IOU#0/PCI#2", 0},
          {"one that is normal", "clearpci", "-u /IOU#0/PCI#3", 0},
          {"an expansion unit has nothing to clear", "clearpci", "-u /IOX@0A21", 0}});
  EXPECT_EQ(state("/IOU#0/PCI#2"), "Normal");
  change(Change::kPull, {"/IOU#0/PCI#1"});
  expect({{"an empty one", "clearpci", "-u /IOU#0/PCI#1", 128}});
}

}  // namespace
