// The work on one unit: what its steps switched is switched back at every way out, and what stays is told and logged.

#include "procedure/work.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "procedure/maintenance_mode.h"
#include "tests/unit/doubles/library_test.h"
#include "tests/unit/doubles/units.h"

namespace {

using doubles::exits;
using doubles::hangs;
using doubles::Lines;
using doubles::machine;
using doubles::printed_by;

// An undoing writes its argument down, and gives what it is told.
Lines g_undone;
int32_t g_undo_result;

int32_t undo(lmainte_work * /*work*/, void *argument) {
  g_undone.emplace_back(static_cast<const char *>(argument));
  return g_undo_result;
}

int32_t other_undo(lmainte_work *work, void *argument) {
  g_undone.emplace_back("other");
  return undo(work, argument);
}

char g_led[] = "led";
char g_fans[] = "fans";

constexpr int32_t kPsus = 161;
constexpr uint32_t kNumber = 3;

class ProcedureWork : public doubles::LibraryTest {
 protected:
  void SetUp() override {
    LibraryTest::SetUp();
    put_server();
    doubles::put_units();
    ASSERT_EQ(server_.read(), LMAINTE_OK);
    g_undone.clear();
    g_undo_result = LMAINTE_OK;
    const auto *const kind = lmainte::procedure::kind_of_type(kPsus);
    ASSERT_NE(kind, nullptr);
    unit_.record = {kPsus, kNumber, 0, {0x01020304, 0x05060708}, "/PSU#3"};
    unit_.status = LMAINTE_STATUS_INSTALLED;
    work_ = std::make_unique<lmainte_work>(server_, procedure_, *kind, unit_, record_);
  }
  void TearDown() override {
    work_.reset();
    LibraryTest::TearDown();
  }

  // A server of the model qa, on which a control program may take a minute.
  static void put_server() {
    machine().markers.insert("/tmp/.qa");
    doubles::Bytes times;
    for (int i = 0; i < 64; ++i) times.insert(times.end(), {0, 0, 0, 60});
    machine().files["/mgb/cli/etc/controltime_qa"] = times;
    machine().files["/mgb/cli/etc/cmdtime_qa"] = times;
    machine().records[{0, "gen_system_info"}] = {doubles::RecordBytes(1408)};
    machine().records[{1, "setup_system_info"}] = {doubles::RecordBytes(248)};
    machine().records[{2, "current_system_info"}] = {doubles::RecordBytes(176)};
  }

  // What the operator is told at the way out, and whether all was put in order.
  std::string way_out(bool is_good = true) {
    return printed_by([&] { EXPECT_EQ(work_->take_back(), is_good); });
  }
  // What a child beside the operation shows, then the control programs of the operation.
  static void programs(const std::vector<doubles::Program> &all) {
    machine().programs.push_back(exits(0));
    machine().programs.insert(machine().programs.end(), all.begin(), all.end());
  }
  // About the unit of the work.
  static doubles::Bytes event_of(uint8_t form, uint8_t code) {
    doubles::Bytes event(48, 0);
    event[8] = 215;
    event[9] = form;
    event[11] = code;
    for (uint8_t i = 0; i < 8; ++i) event[size_t{19} + i] = static_cast<uint8_t>(i + 1);
    return event;
  }
  static Lines left() {
    Lines all;
    for (const doubles::Saved &saved : machine().saved) all.push_back(std::to_string(saved.event.at(11)));
    return all;
  }

  lmainte::procedure::Server server_;
  lmainte_step steps_[1] = {nullptr};
  lmainte_procedure procedure_ = {
      .name = "try_unit", .verb = "try", .done = "tried", .action = LMAINTE_ACTION_NONE, .steps = steps_};
  lmainte::procedure::Unit unit_;
  lmainte::procedure::AnyRecord record_{};
  std::unique_ptr<lmainte_work> work_;
};

TEST_F(ProcedureWork, UndoesTheLastFirst) {
  EXPECT_EQ(lmainte_work_undo_later(work_.get(), "The LED may blink", undo, g_led), LMAINTE_OK);
  EXPECT_EQ(lmainte_work_undo_later(work_.get(), "The fans may run", undo, g_fans), LMAINTE_OK);
  EXPECT_EQ(way_out(), "");
  EXPECT_EQ(g_undone, (Lines{"fans", "led"}));
  EXPECT_EQ(way_out(), "") << "once";
  EXPECT_EQ(g_undone.size(), 2u);
}

TEST_F(ProcedureWork, UndoesNowWhatIsNotToWait) {
  lmainte_work_undo_later(work_.get(), "The LED may blink", undo, g_led);
  lmainte_work_undo_later(work_.get(), "The LED may blink, too", other_undo, g_led);
  lmainte_work_undo_later(work_.get(), "The fans may run", undo, g_fans);
  EXPECT_EQ(lmainte_work_undo_now(work_.get(), undo, g_led), LMAINTE_OK);
  EXPECT_EQ(g_undone, (Lines{"led"}));
  EXPECT_EQ(lmainte_work_undo_now(work_.get(), undo, g_led), LMAINTE_FAILED) << "it is done";
  way_out();
  EXPECT_EQ(g_undone, (Lines{"led", "fans", "other", "led"}));
}

TEST_F(ProcedureWork, KeepsWhatIsToStay) {
  lmainte_work_undo_later(work_.get(), "The LED may blink", undo, g_led);
  lmainte_work_undo_later(work_.get(), "The fans may run", undo, g_fans);
  lmainte_work_keep(work_.get(), undo, g_led);
  lmainte_work_keep(work_.get(), other_undo, g_fans);
  way_out();
  EXPECT_EQ(g_undone, (Lines{"fans"}));
}

TEST_F(ProcedureWork, TellsAndLogsAnUndoingThatFails) {
  lmainte_work_undo_later(work_.get(), "The LED of /PSU#3 may blink", undo, g_led);
  g_undo_result = LMAINTE_LED_FAILED;
  EXPECT_EQ(way_out(false), "The LED of /PSU#3 may blink (result 206).\n");
  EXPECT_EQ(left(), (Lines{"8"}));
}

TEST_F(ProcedureWork, LogsWhatStaysWithTheUnitOfTheWork) {
  lmainte_work_undo_later(work_.get(), "It may blink", undo, g_led);
  g_undo_result = 219;
  EXPECT_EQ(printed_by([&] { EXPECT_EQ(lmainte_work_undo_now(work_.get(), undo, g_led), 219); }),
            "It may blink (result 219).\n");
  ASSERT_EQ(machine().saved.size(), 1u);
  EXPECT_EQ(machine().saved[0].event, event_of(3, 8));
  EXPECT_EQ(machine().saved[0].head, 0x00030000u);
}

TEST_F(ProcedureWork, TakesSixteenUndoingsAndNoMore) {
  for (int i = 0; i < 16; ++i) EXPECT_EQ(lmainte_work_undo_later(work_.get(), "x", undo, g_led), LMAINTE_OK);
  EXPECT_EQ(lmainte_work_undo_later(work_.get(), "x", undo, g_led), LMAINTE_FAILED);
  lmainte_work_keep(work_.get(), undo, g_led);
  EXPECT_EQ(lmainte_work_undo_later(work_.get(), "x", undo, g_led), LMAINTE_OK) << "there is room again";
  way_out();
  EXPECT_EQ(g_undone.size(), 16u);
}

// One that says itself again would never end.
int32_t undo_and_say_again(lmainte_work *work, void *argument) {
  g_undone.emplace_back("again");
  return lmainte_work_undo_later(work, "once more", undo_and_say_again, argument);
}

TEST_F(ProcedureWork, TakesNoUndoingFromAnUndoing) {
  lmainte_work_undo_later(work_.get(), "It may blink", undo_and_say_again, g_led);
  EXPECT_EQ(way_out(false), "It may blink (result 8).\n");
  EXPECT_EQ(g_undone, (Lines{"again"}));
}

TEST_F(ProcedureWork, RefusesAnUndoingThatSaysNothing) {
  EXPECT_EQ(lmainte_work_undo_later(work_.get(), nullptr, undo, g_led), LMAINTE_FAILED);
  EXPECT_EQ(lmainte_work_undo_later(work_.get(), "x", nullptr, g_led), LMAINTE_FAILED);
  EXPECT_EQ(lmainte_work_undo_later(work_.get(), "x", undo, nullptr), LMAINTE_OK) << "it may need no argument";
  lmainte_work_keep(work_.get(), undo, nullptr);
}

TEST_F(ProcedureWork, LeavesAUnitAsItIsThatNobodyTouched) {
  EXPECT_EQ(way_out(), "");
  EXPECT_EQ(machine().calls_of({"fork"}), Lines{});
}

TEST_F(ProcedureWork, PutsTheUnitBackThatItTookOut) {
  doubles::put_status(kPsus, kNumber, LMAINTE_STATUS_INSTALLED);
  ASSERT_EQ(work_->detach(), LMAINTE_OK);
  EXPECT_EQ(lmainte_work_condition(work_.get()), LMAINTE_CONDITION_OUT);
  programs({exits(0)});
  way_out();
  EXPECT_EQ(left(), Lines{});
  EXPECT_EQ(machine().calls_of({"fork"}).size(), 3u) << "the program that took it out, the child beside, the test";
}

// The marks go, and the unit stays as it is until the way out.
TEST_F(ProcedureWork, TakesTheMarksBackAlone) {
  lmainte_work_undo_later(work_.get(), "It may blink", undo, g_led);
  ASSERT_EQ(work_->detach(), LMAINTE_OK);
  EXPECT_EQ(printed_by([&] { EXPECT_EQ(lmainte_step_unmark(work_.get()), LMAINTE_OUTCOME_DONE); }),
            "The LED and the maintenance flag of /PSU#3 are off.\n\n");
  EXPECT_EQ(g_undone, Lines{});
  EXPECT_EQ(lmainte_work_condition(work_.get()), LMAINTE_CONDITION_OUT);
  EXPECT_NE(way_out().find("Putting"), 0u);
  EXPECT_EQ(lmainte_work_condition(work_.get()), LMAINTE_CONDITION_UNTOUCHED) << "it is back";
  EXPECT_EQ(g_undone, (Lines{"led"}));
}

struct MarkRow {
  const char *says;
  int32_t type;
  std::vector<doubles::Program> set;
  int32_t result;
  size_t taken_back;  // programs
};

// Each operation has a child beside it, and no program runs that nobody asked for.
TEST_F(ProcedureWork, MarksAUnitByItsFlagItsLedAndAFanTrayByItsFans) {
  const MarkRow rows[] = {
      {"a power supply", kPsus, {exits(0), exits(0)}, 0, 2},
      {"a fan tray", 180, {exits(0), exits(0), exits(0)}, 0, 3},
      {"one whose flag is refused", 180, {exits(204)}, 204, 0},
      {"one whose LED stays dark", 180, {exits(0), exits(206)}, 206, 1},
      {"one whose fans hang", 180, {exits(0), exits(0), hangs()}, 8, 3},
  };
  for (const MarkRow &row : rows) {
    SetUp();
    lmainte::procedure::Marks marks(server_, {row.type, 0, 0, {1, 2}, "/IT#0"});
    programs(row.set);
    EXPECT_EQ(marks.set(), row.result) << row.says;
    EXPECT_EQ(machine().calls_of({"fork"}).size(), 1 + row.set.size()) << row.says;
    EXPECT_EQ(printed_by([&] { EXPECT_TRUE(marks.take_back()); }), "") << row.says;
    const size_t beside = row.taken_back == 0 ? 1 : 2;
    EXPECT_EQ(machine().calls_of({"fork"}).size(), beside + row.set.size() + row.taken_back) << row.says;
    TearDown();
  }
  SetUp();
}

struct ModeRow {
  const char *says;
  std::vector<doubles::Program> begin;
  int32_t outcome;
  size_t ended;  // programs
};

TEST_F(ProcedureWork, TellsTheRemoteServiceOfAModeThatHasBegun) {
  const ModeRow rows[] = {
      {"begun and told", {exits(0), exits(0)}, LMAINTE_OUTCOME_DONE, 2},
      {"begun, and the service does not hear", {exits(0), exits(1)}, LMAINTE_OUTCOME_DONE, 2},
      {"refused", {exits(128)}, LMAINTE_OUTCOME_FAILED, 0},
      {"perhaps begun", {hangs()}, LMAINTE_OUTCOME_FAILED, 1},
  };
  for (const ModeRow &row : rows) {
    SetUp();
    lmainte::procedure::Maintenance mode(server_);
    programs(row.begin);
    printed_by([&] { EXPECT_EQ(mode.begin(false), row.outcome) << row.says; });
    EXPECT_EQ(machine().calls_of({"fork"}).size(), 1 + row.begin.size()) << row.says;
    EXPECT_EQ(printed_by([&] { EXPECT_TRUE(mode.end()); }), "") << row.says;
    const size_t beside = row.ended == 0 ? 1 : 2;
    EXPECT_EQ(machine().calls_of({"fork"}).size(), beside + row.begin.size() + row.ended) << row.says;
    TearDown();
  }
  SetUp();
}

TEST_F(ProcedureWork, TakesLongerForABoardWhichIsAlsoLinked) {
  EXPECT_EQ(work_->time_to_detach(), 60);
  EXPECT_EQ(work_->time_to_bring_up(), 120);
  const lmainte_work board(server_, procedure_, *lmainte::procedure::kind_of_type(16), unit_, record_);
  EXPECT_EQ(board.time_to_detach(), 120);
  EXPECT_EQ(board.time_to_bring_up(), 180);
}

TEST_F(ProcedureWork, AsksForNoUnitThatMayBeInOperation) {
  EXPECT_EQ(printed_by([&] { EXPECT_EQ(lmainte_step_take_out(work_.get()), LMAINTE_OUTCOME_FAILED); }),
            "/PSU#3 may be in operation, so it is not pulled out.\n");
  EXPECT_EQ(machine().asked.size(), 0u);
}

TEST_F(ProcedureWork, RecordsNoEventWhereThereIsNoAction) {
  EXPECT_EQ(printed_by([&] { EXPECT_EQ(lmainte_step_record(work_.get()), LMAINTE_OUTCOME_DONE); }),
            "/PSU#3 is tried.\n");
  EXPECT_EQ(machine().saved.size(), 0u);
}

struct LeftRow {
  const char *says;
  bool (*arrange)(lmainte_work &);  // whether the way out succeeds
  uint32_t status;
  const char *left;
  const char *told;
};

void take_out(lmainte_work &work) {
  ASSERT_EQ(work.detach(), LMAINTE_OK);
}

// A control program that the machine has not yet: the last one of an operation.
void next(const doubles::Program &program) {
  machine().programs.push_back(program);
}

const LeftRow kLeft[] = {
    {"perhaps out of operation",
     [](lmainte_work &work) {
       next(hangs());
       EXPECT_EQ(work.detach(), LMAINTE_FAILED);
       return false;
     },
     LMAINTE_STATUS_INSTALLED, "3", "/PSU#3 may be out of operation: "},
    {"out, and the test fails when it is put back",
     [](lmainte_work &work) {
       take_out(work);
       next(exits(0));
       next(exits(1));
       return false;
     },
     LMAINTE_STATUS_INSTALLED, "2", "/PSU#3 is still out of operation: "},
    {"exchanged and not tested",
     [](lmainte_work &work) {
       take_out(work);
       work.condition.is_exchanged();
       return true;
     },
     LMAINTE_STATUS_INSTALLED, "5", "/PSU#3 is in place and was not tested."},
    {"exchanged for nothing: the place is empty",
     [](lmainte_work &work) {
       take_out(work);
       work.condition.is_exchanged();
       return true;
     },
     0, "1", "The place of /PSU#3 stays empty."},
    {"exchanged, and the new one fails its test",
     [](lmainte_work &work) {
       take_out(work);
       work.condition.is_exchanged();
       next(exits(208));
       EXPECT_EQ(work.bring_up(), LMAINTE_TEST_FAILED);
       return true;
     },
     LMAINTE_STATUS_INSTALLED, "4", "/PSU#3 is in place and out of operation: it failed its test (result 208)."},
};

TEST_F(ProcedureWork, SaysAndLogsHowAUnitIsLeft) {
  for (const LeftRow &row : kLeft) {
    SetUp();
    doubles::put_status(kPsus, kNumber, row.status);
    const bool is_good = row.arrange(*work_);
    const std::string told = way_out(is_good);
    EXPECT_EQ(told.find(row.told), told.find(row.told[0] == '/' ? "/PSU#3" : "The place")) << row.says << ":\n" << told;
    EXPECT_NE(told.find(row.told), std::string::npos) << row.says << ":\n" << told;
    EXPECT_EQ(left(), Lines{row.left}) << row.says;
    TearDown();
  }
  SetUp();
}

TEST_F(ProcedureWork, ReadsTheUnitAnew) {
  doubles::put_status(kPsus, kNumber, LMAINTE_STATUS_INSTALLED | LMAINTE_STATUS_FAULTED);
  EXPECT_EQ(lmainte_work_read(work_.get()), LMAINTE_OK);
  EXPECT_EQ(lmainte_work_status(work_.get()), LMAINTE_STATUS_INSTALLED | LMAINTE_STATUS_FAULTED);
  EXPECT_STREQ(lmainte_work_unit(work_.get())->name, "/PSU#3");
  machine().records.erase({2, "current_psu_info"});
  EXPECT_NE(lmainte_work_read(work_.get()), LMAINTE_OK);
  EXPECT_EQ(lmainte_work_status(work_.get()), LMAINTE_STATUS_INSTALLED | LMAINTE_STATUS_FAULTED) << "as it was";
}

TEST_F(ProcedureWork, BringsNothingUpThatCannotBeRead) {
  machine().records.erase({2, "current_psu_info"});
  const std::string told = printed_by([&] { EXPECT_EQ(lmainte_step_bring_up(work_.get()), LMAINTE_OUTCOME_FAILED); });
  EXPECT_EQ(told.find("The state of /PSU#3 could not be read (result 8).\n"), 0u) << told;
  EXPECT_EQ(machine().calls_of({"fork"}), Lines{});
}

TEST_F(ProcedureWork, GivesAStepWhatTheAuthorGaveIt) {
  EXPECT_EQ(lmainte_work_data(work_.get()), nullptr);
  EXPECT_EQ(lmainte_work_limit(work_.get(), LMAINTE_CMD_TESTFRU), 60);
  EXPECT_EQ(lmainte_work_limit(work_.get(), 10000), 0);
  EXPECT_EQ(lmainte_work_server(work_.get()), &server_.data());
  EXPECT_EQ(lmainte_work_record(work_.get()), &work_->record);
}

TEST_F(ProcedureWork, SavesAnAuthorsOwnEvents) {
  EXPECT_EQ(lmainte_work_log(work_.get(), 128, 7), LMAINTE_OK);
  ASSERT_EQ(machine().saved.size(), 1u);
  EXPECT_EQ(machine().saved[0].event, event_of(128, 7));
  EXPECT_EQ(lmainte_work_log(work_.get(), 127, 7), LMAINTE_FAILED) << "this form is the library's";
  EXPECT_EQ(machine().saved.size(), 1u);
}

TEST_F(ProcedureWork, TellsThatTheLogIsFull) {
  machine().log_result = -1;
  EXPECT_EQ(printed_by([&] { EXPECT_EQ(lmainte_work_log(work_.get(), 255, 0), LMAINTE_FAILED); }),
            "The log has no record of this. Is the disk of the log full?\n");
}

}  // namespace
