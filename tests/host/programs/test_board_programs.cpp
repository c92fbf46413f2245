// What the programs for system boards do: on this model boards 0 and 1 are domain 0, boards 2 and 3 domain 1, and board 3
// is divided into four extended system boards, the last of which is nobody's.
#include <fcntl.h>

#include "host/base/child.h"
#include "host/base/descriptor.h"
#include "host/box/database.h"
#include "host/box/inventory_records.h"
#include "host/box/partitions.h"
#include "tests/host/box/child.h"
#include "tests/host/programs/control_program.h"

namespace {

using box::Change;

class BoardPrograms : public ControlProgram {
 protected:
  // "0 on", "1 off", "SP off": domain and activity of an extended system board.
  std::string xsb(const std::string &name) const {
    for (const box::Xsb &at : box::xsbs_of(place_, LMAINTE_MODEL_QE1)) {
      if (at.name != name) continue;
      const std::uint32_t domain = at.active ? at.domain : at.setup_domain;
      return (domain <= 23 ? std::to_string(domain) : "SP") + (at.active ? " on" : " off");
    }
    return "none";
  }

  // Writes down for board 0 which domain it is to run in.
  void set_up_for(std::uint32_t domain) const {
    box::Database setup(place_.database(1));
    box::Bytes record = setup.get("setup_xsb_info_00").value();
    box::put_word(record, 128, domain);
    setup.put("setup_xsb_info_00", record);
  }
};

TEST_F(BoardPrograms, ABoardLeavesItsDomainStepByStep) {
  expect({{"a domain runs on it", "testsb", "-q -y 0", 128},
          {"an active board is not deleted", "deleteboard", "-q y -c unassign 00-0", 133},
          {"an active board is not divided", "setupfru", "-m n -x 4 sb 0", 137},
          {"an active board is not unlinked", "linkboard", "-u /CMU#0 -c down", 128, "link /CMU#0", ""},
          {"the board is detached", "detachfru", "-u /CMU#0", 0, "detached /CMU#0", "yes"}});
  EXPECT_EQ(xsb("00-0"), "0 off");
  EXPECT_EQ(xsb("01-0"), "0 on");
  expect({{"it can be tested now", "testsb", "-q -y 0", 0},
          {"the detached board is unlinked", "linkboard", "-u /CMU#0 -c down", 0, "link /CMU#0", "down"},
          {"the detached board is deleted", "deleteboard", "-q y -c unassign 00-0", 0}});
  EXPECT_EQ(xsb("00-0"), "SP off");
}

TEST_F(BoardPrograms, ALinkedBoardRunsInItsDomainAgain) {
  expect({{"out", "detachfru", "-u /CMU#0", 0},
          {"the board is unlinked", "linkboard", "-u /CMU#0 -c down", 0},
          {"the test of the unit leaves it detached", "testfru", "-u /CMU#0", 0, "detached /CMU#0", "yes"},
          {"in", "linkboard", "-u /CMU#0 -c up", 0, "detached /CMU#0", ""}});
  EXPECT_EQ(hardware("link /CMU#0"), "up");
  EXPECT_EQ(xsb("00-0"), "0 on");
}

TEST_F(BoardPrograms, ADividedBoardRunsInTheDomainsOfItsParts) {
  expect({{"out", "detachfru", "-u /CMU#3", 0}, {"the last board is linked", "linkboard", "-u /CMU#3 -c up", 0}});
  EXPECT_EQ(xsb("03-0"), "1 on");
  EXPECT_EQ(xsb("03-3"), "SP off");
}

TEST_F(BoardPrograms, ABoardRunsInTheDomainThatItIsSetUpForIfThereIsOne) {
  expect({{"out", "detachfru", "-u /CMU#0", 0}});
  const std::pair<std::uint32_t, const char *> rows[] = {{255, "SP off"}, {24, "SP off"}, {23, "23 on"}};
  for (const auto &[domain, then] : rows) {
    set_up_for(domain);
    expect({{"in", "linkboard", "-u /CMU#0 -c up", 0}});
    EXPECT_EQ(xsb("00-0"), then) << domain;
  }
}

TEST_F(BoardPrograms, ABoardRunsWhenBothItsUnitsAreLinked) {
  expect({{"out", "detachfru", "-u /IOU#0", 0},
          {"one", "linkboard", "-u /CMU#0 -c down", 0},
          {"the second unit is unlinked", "linkboard", "-u /IOU#0 -c down", 0},
          {"the first unit is linked again", "linkboard", "-u /CMU#0 -c up", 0}});
  EXPECT_EQ(xsb("00-0"), "0 off");
  expect({{"the other again", "linkboard", "-u /IOU#0 -c up", 0}});
  EXPECT_EQ(xsb("00-0"), "0 on");
}

TEST_F(BoardPrograms, ADomainKeepsItsLastBoard) {
  expect({{"the second of two may be removed", "judgectlfru", "-u /CMU#1 -c del", 0},
          {"the first of two is detached", "detachfru", "-u /CMU#0", 0},
          {"the domain's last board may not be removed", "judgectlfru", "-u /CMU#1 -c del", 232},
          {"the domain's last board is not detached", "detachfru", "-u /CMU#1", 128, "detached /CMU#1", ""}});
  EXPECT_EQ(xsb("01-0"), "0 on");
}

TEST_F(BoardPrograms, AUnitBesideTheBoardsIsNoPartOfOne) {
  change(Change::kFault, {"/PSU#0"});
  change(Change::kPull, {"/PSU#1"});
  expect({{"out", "detachfru", "-u /CMU#0", 0},
          {"tested beside a faulted power supply", "testsb", "-q -y 0", 0},
          {"divided beside an empty place", "setupfru", "-m n -x 1 sb 0", 0}});
}

TEST_F(BoardPrograms, OnlyAWholeBoardInOrderIsLinkedTestedAndDivided) {
  expect({{"out", "detachfru", "-u /CMU#0", 0}});
  change(Change::kFault, {"/CMU#0/CPUM#1"});
  expect({{"a faulted module", "testsb", "-q -y 0", 208}, {"is not linked", "linkboard", "-u /CMU#0 -c up", 226}});
  change(Change::kPull, {"/CMU#0"});
  expect({{"a missing unit", "testsb", "-q -y 0", 128},
          {"a missing unit is not linked", "linkboard", "-u /CMU#0 -c up", 128},
          {"a board with a missing unit is not divided", "setupfru", "-m n -x 4 sb 0", 6}});
  EXPECT_EQ(xsb("00-0"), "0 off");
}

// A command may keep the databases locked for a whole step, in which it asks its control programs.
TEST_F(BoardPrograms, QuestionsAreAnsweredWhileTheDatabasesAreLocked) {
  Child command([&](const auto &say_ready) {
    box::Database setup(place_.database(1)), current(place_.database(2));
    if (!setup.lock() || !current.lock()) return 1;
    say_ready();
    pause();
    return 0;
  });
  ASSERT_TRUE(command.is_ready());
  expect({{"may a board go", "judgectlfru", "-u /CMU#0 -c del", 0},
          {"a module on a running board may not be removed", "judgectlfru", "-u /CMU#0/MEM#03A -c del", 232},
          {"a running board is not tested", "testsb", "-q -y 0", 128},
          {"a running board is not unlinked", "linkboard", "-u /CMU#0 -c down", 128},
          {"no unit is detached while the database is locked", "detachfru", "-u /CMU#0", 8, "detached /CMU#0", ""}});
}

// The process that has a database locked; 0 when none has.
pid_t holder_of(const box::Place &place, std::uint32_t db_id) {
  const base::Descriptor file(open((place.databases() / "locks").c_str(), O_RDWR | O_CLOEXEC));
  struct flock lock {};
  lock.l_type = F_WRLCK;
  lock.l_whence = SEEK_SET;
  lock.l_start = db_id;
  lock.l_len = 1;
  return fcntl(file.get(), F_GETLK, &lock) == 0 && lock.l_type != F_UNLCK ? lock.l_pid : 0;
}

// What is seen on both sides of a look at the other database was so while it was looked at.
bool holds_the_higher_alone(const box::Place &place) {
  const pid_t holder = holder_of(place, 2);
  return holder != 0 && holder_of(place, 1) == 0 && holder_of(place, 2) == holder;
}

TEST_F(BoardPrograms, TheLowerDatabaseIsUnlockedLast) {
  expect({{"out", "detachfru", "-u /CMU#0", 0}});
  int looks = 0;
  for (const char *line : {"-m n -x 4 sb 0", "-m n -x 1 sb 0", "-m n -x 4 sb 0", "-m n -x 1 sb 0"}) {
    const pid_t program = start("setupfru", line);
    for (siginfo_t ended{}; ended.si_pid == 0; ++looks) {
      EXPECT_FALSE(holds_the_higher_alone(place_)) << "at look " << looks;
      ASSERT_EQ(waitid(P_PID, static_cast<id_t>(program), &ended, WEXITED | WNOWAIT | WNOHANG), 0);
    }
    EXPECT_EQ(base::exit_status_of(program), 0);
  }
}

TEST_F(BoardPrograms, OnlyBoardUnitsAreLinked) {
  expect({{"a power supply", "linkboard", "-u /PSU#0 -c up", 226},
          {"a module is not linked", "linkboard", "-u /CMU#0/CPUM#1 -c up", 226}});
}

TEST_F(BoardPrograms, ABoardIsDividedAndPutTogether) {
  expect({{"out", "detachfru", "-u /CMU#0", 0},
          {"a board that is not divided has only part 0", "deleteboard", "-q y -c unassign 00-1", 132},
          {"a board is divided into four", "setupfru", "-m n -x 4 sb 0", 0, "mirror 0", "n"},
          {"all four parts are deleted", "deleteboard", "-q y -c unassign 00-0 00-1 00-2 00-3", 0},
          {"a board is made one, mirrored", "setupfru", "-m y -x 1 sb 0", 0, "mirror 0", "y"},
          {"parts that no longer exist are not deleted", "deleteboard", "-q y -c unassign 00-0 00-1", 132}});
}

TEST_F(BoardPrograms, PartsThatNoLongerExistBelongToNoDomain) {
  expect({{"out", "detachfru", "-u /CMU#3", 0}});
  EXPECT_EQ(xsb("03-1"), "1 off");
  expect({{"one", "setupfru", "-m n -x 1 sb 3", 0}});
  EXPECT_EQ(xsb("03-0"), "1 off");
  EXPECT_EQ(xsb("03-1"), "SP off");
}

TEST_F(BoardPrograms, NoPartIsDeletedWhenOneCannotBeDeleted) {
  expect({{"out", "detachfru", "-u /CMU#0", 0},
          {"no part is deleted when the second one is active", "deleteboard", "-q y -c unassign 00-0 01-0", 133}});
  EXPECT_EQ(xsb("00-0"), "0 off");
}

class BoardProgramsOfTheEntryModel : public ControlProgram {
 protected:
  BoardProgramsOfTheEntryModel() : ControlProgram(LMAINTE_MODEL_QA) {}
};

TEST_F(BoardProgramsOfTheEntryModel, HaveNothingToDivide) {
  expect({{"divide", "setupfru", "-m n -x 1 sb 0", 136},
          {"nothing is deleted", "deleteboard", "-q y -c unassign 00-0", 131},
          {"the board is not tested", "testsb", "-q -y 0", 128},
          {"the board is not unlinked", "linkboard", "-u /MBU_A -c down", 128},
          {"the board is linked", "linkboard", "-u /MBU_A -c up", 0, "link /MBU_A", "up"}});
}

}  // namespace
