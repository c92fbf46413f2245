// The operations on units and boards, from the library through the control programs into the box and back in its state.

#include "host/box/partitions.h"
#include "host/box/unit_name.h"
#include "lmainte.h"
#include "tests/end_to_end/box_test.h"

namespace end_to_end {
namespace {

class Operations : public BoxTest {
 protected:
  void SetUp() override { make_box("qe1"); }

  std::string act(const Words &words) const {
    Words command{ACT};
    command.insert(command.end(), words.begin(), words.end());
    return run_to_end(in_box(command)).output;
  }

  struct Row {
    const char *says;
    Words words;
    int result;
  };
  void expect(const std::vector<Row> &rows) const {
    for (const Row &row : rows) EXPECT_EQ(act(row.words), "result " + std::to_string(row.result) + "\n") << row.says;
  }

  box::Xsb xsb(std::size_t number) const { return box::xsbs_of(box::Place(box()), LMAINTE_MODEL_QE1).at(number); }
};

TEST_F(Operations, AReplacementInTheOrderOfItsSteps) {
  expect({{"it may be taken", {"judge", "1", "/PSU#3"}, 0},
          {"out of operation", {"detach", "/PSU#3"}, 0},
          {"where it is already", {"detach", "/PSU#3"}, 0}});
  EXPECT_NE(spbox({"units"}).output.find("detached"), std::string::npos);
  spbox({"pull", "/PSU#3"});
  expect({{"nothing to test", {"test", "/PSU#3"}, 208}, {"a place for one", {"judge", "0", "/PSU#3"}, 0}});
  spbox({"insert", "/PSU#3"});
  expect({{"it may be added", {"judge", "0", "/PSU#3"}, 0},
          {"it passes", {"test", "/PSU#3"}, 0},
          {"it is in operation", {"judge", "0", "/PSU#3"}, 203}});
  EXPECT_EQ(spbox({"units"}).output.find("detached"), std::string::npos);
}

TEST_F(Operations, ABoardLeavesItsDomainAndComesBack) {
  expect({{"a domain runs on it", {"clear_xsb", "1", "0"}, 210},
          {"so it is not tested", {"test_board", "0"}, 208},
          {"nor divided", {"set_xsb", "4", "0", "0"}, 209},
          {"out of operation", {"detach", "/CMU#0"}, 0},
          {"its domain has no other board now", {"judge", "1", "/CMU#1"}, 232},
          {"tested", {"test_board", "0"}, 0},
          {"unlinked", {"link", "0", "16", "/CMU#0"}, 0},
          {"divided in four", {"set_xsb", "4", "0", "0"}, 0}});
  EXPECT_FALSE(xsb(0).active);
  EXPECT_EQ(xsb(0).setup_domain, 0U);
  expect({{"linked", {"link", "1", "16", "/CMU#0"}, 0}});
  EXPECT_TRUE(xsb(0).active);
}

TEST_F(Operations, ADetachedBoardsPartsAreGivenUp) {
  expect({{"out of operation", {"detach", "/CMU#3"}, 0}, {"all four", {"clear_xsb", "4", "3"}, 0}});
  for (const std::size_t number : {12U, 13U, 14U, 15U}) EXPECT_EQ(xsb(number).setup_domain, 0xFFU) << number;
}

TEST_F(Operations, FansAndSlots) {
  spbox({"fault", "/FAN_A#0", "/IOU#0/PCI#1"});
  expect({{"a faulted tray", {"fan_speed", "/FAN_A#0"}, 225},
          {"its neighbour", {"fan_speed", "/FAN_A#1"}, 0},
          {"a slot", {"clear_slot", "/IOU#0/PCI#1"}, 0},
          {"no slot", {"clear_slot", "/IOU#9/PCI#1"}, 220}});
  EXPECT_NE(spbox({"show", "/IOU#0/PCI#1"}).output.find("Normal"), std::string::npos);
}

TEST_F(Operations, AnEventIsInTheLogInWords) {
  const box::UnitId id = *box::unit_id(LMAINTE_MODEL_QE1, "/PSU#3");
  expect({{"replaced", {"send_event", "0", "3", std::to_string(id[0]), std::to_string(id[1])}, 0},
          {"kind 4 cannot be removed", {"send_event", "2", "4", "1", "2"}, 8}});
  const std::string log = spbox({"log"}).output;
  EXPECT_NE(log.find("unit replaced"), std::string::npos) << log;
  EXPECT_NE(log.find("/PSU#3"), std::string::npos) << log;
}

class OperationsInRealTime : public Operations {
 protected:
  OperationsInRealTime() { stay_in_real_time(); }
};

TEST_F(OperationsInRealTime, ADaemonAnswersOrFailsAsItIsBent) {
  EXPECT_EQ(act({"ask", "10"}), "reply 1 of model 3\nresult 0\n");
  spbox({"daemon", "silent"});
  expect({{"silent", {"ask", "1"}, 128}});
  spbox({"daemon", "dead"});
  expect({{"dead", {"ask", "5"}, 8}});
  spbox({"daemon", "garbled"});
  expect({{"garbled", {"ask", "5"}, 8}});
  spbox({"daemon", "late", "1"});
  EXPECT_EQ(act({"ask", "20"}), "reply 1 of model 3\nresult 0\n") << "late, and still in time";
}

TEST_F(Operations, ALateReplyIsNotTakenForTheNextOne) {
  spbox({"daemon", "late", "2"});
  EXPECT_EQ(act({"ask_again"}), "first 128\nreply 2 of model 3\nresult 0\n");
}

}  // namespace
}  // namespace end_to_end
