#include <cstring>
#include <nlohmann/json.hpp>

#include "host/box/database.h"
#include "tests/host/spbox/spbox_test.h"

namespace {

using nlohmann::json;

class Changes : public SpboxTest {
 protected:
  void SetUp() override { make_box("qe1"); }

  std::uint32_t psu_status(std::size_t number) const { return word(record(2, "current_psu_info"), 56 * number + 8); }
  std::uint8_t psu_flags(std::size_t number) const { return record(2, "current_psu_info").at(56 * number + 20); }
  std::uint32_t cmu_status() const { return word(record(2, "current_cmu_info_01"), 8); }
  std::string state(const std::string &unit) const {
    return json::parse(done({"show", "box", unit, "--json"}))["state"];
  }
};

TEST_F(Changes, ToAPowerSupplyAreInItsFlagByte) {
  EXPECT_EQ(done({"fault", "box", "/PSU#3"}), "/PSU#3  Faulted\n");
  EXPECT_EQ(psu_status(3), 0x80000000u);
  EXPECT_EQ(psu_flags(3), 0x20);
  EXPECT_EQ(done({"degrade", "box", "/PSU#3"}), "/PSU#3  Degraded\n");
  EXPECT_EQ(psu_flags(3), 0x10);
  EXPECT_EQ(done({"repair", "box", "/PSU#3"}), "/PSU#3  Normal\n");
  EXPECT_EQ(psu_flags(3), 0);
  EXPECT_EQ(psu_flags(2), 0);
}

TEST_F(Changes, ToABoardAreInItsStatusWord) {
  EXPECT_EQ(done({"fault", "box", "/CMU#1"}), "/CMU#1  Faulted\n");
  EXPECT_EQ(cmu_status(), 0xA0000000u);
  EXPECT_EQ(done({"degrade", "box", "/CMU#1"}), "/CMU#1  Degraded\n");
  EXPECT_EQ(cmu_status(), 0x90000000u);
  EXPECT_EQ(done({"repair", "box", "/CMU#1"}), "/CMU#1  Normal\n");
  EXPECT_EQ(cmu_status(), 0x80000000u);
  EXPECT_EQ(state("/CMU#1/CPUM#0"), "Normal");
}

TEST_F(Changes, LeaveTheOtherBitsOfAStatusWord) {
  box::Database current(place().database(2));
  box::Bytes psus = record(2, "current_psu_info");
  const std::uint32_t marked = 0x80008000;
  constexpr std::size_t kThird = 168;
  std::memcpy(psus.data() + kThird + 8, &marked, 4);
  psus.at(kThird + 20) = 0x41;
  current.put("current_psu_info", psus);
  done({"fault", "box", "/PSU#3"});
  EXPECT_EQ(psu_status(3), 0x80008000u);
  EXPECT_EQ(psu_flags(3), 0x61);
  done({"pull", "box", "/PSU#3"});
  EXPECT_EQ(psu_status(3), 0x00008000u);
  EXPECT_EQ(psu_flags(3), 0x41);
}

TEST_F(Changes, ToFansAndTraysAreSeparate) {
  done({"fault", "box", "/FAN_B#0"});
  done({"degrade", "box", "/FAN_B#1/FAN#1"});
  const box::Bytes trays = record(2, "current_fantray_info");
  EXPECT_EQ(trays.at(20), 0x20);
  EXPECT_EQ(trays.at(44), 0x00);
  EXPECT_EQ(trays.at(216 + 20), 0x00);
  EXPECT_EQ(trays.at(216 + 44 + 56), 0x10);
}

TEST_F(Changes, TakeAPowerSupplyOutAndPutAnotherIn) {
  done({"fault", "box", "/PSU#40"});
  EXPECT_EQ(done({"pull", "box", "/PSU#40"}), "/PSU#40  Not installed\n");
  EXPECT_EQ(psu_status(9), 0u);
  EXPECT_EQ(psu_flags(9), 0);
  EXPECT_FALSE(has_record(4, "fru_psu_qe_info_09"));
  EXPECT_TRUE(has_record(4, "fru_psu_qe_info_08"));
  EXPECT_EQ(done({"insert", "box", "/PSU#40"}), "/PSU#40  Normal\n");
  EXPECT_EQ(psu_status(9), 0x80000000u);
  EXPECT_EQ(record(4, "fru_psu_qe_info_09").size(), 320u);
}

TEST_F(Changes, TakeAFanTrayOutWithItsFans) {
  done({"pull", "box", "/FAN_A#0"});
  EXPECT_FALSE(has_record(4, "fru_fan_qe_info_02"));
  EXPECT_EQ(state("/FAN_A#0/FAN#2"), "Not installed");
  EXPECT_EQ(state("/FAN_A#1/FAN#2"), "Normal");
  done({"insert", "box", "/FAN_A#0"});
  EXPECT_TRUE(has_record(4, "fru_fan_qe_info_02"));
  EXPECT_EQ(state("/FAN_A#0/FAN#2"), "Normal");
}

TEST_F(Changes, TakeABoardOutWithWhatSitsOnIt) {
  done({"pull", "box", "/CMU#1"});
  EXPECT_EQ(state("/CMU#1/CPUM#3"), "Not installed");
  EXPECT_EQ(state("/CMU#1/MEM#30B"), "Not installed");
  EXPECT_EQ(state("/CMU#2/MEM#30B"), "Normal");
  EXPECT_TRUE(has_record(4, "fru_cmu_info_01")) << "the readers need a board's identity record, board or not";
  EXPECT_EQ(refused({"insert", "box", "/CMU#1/CPUM#3"}),
            "spbox: box: /CMU#1/CPUM#3 has nothing to sit on: /CMU#1 is not installed. Insert that one.\n");
  done({"insert", "box", "/CMU#1"});
  EXPECT_EQ(state("/CMU#1/MEM#30B"), "Normal");
}

TEST_F(Changes, ThatCannotBeAreRefused) {
  EXPECT_EQ(refused({"insert", "box", "/PSU#0"}), "spbox: box: /PSU#0 is installed already. Pull it first.\n");
  done({"pull", "box", "/PSU#0"});
  for (const char *verb : {"pull", "fault", "degrade", "repair"}) {
    EXPECT_EQ(refused({verb, "box", "/PSU#0"}), "spbox: box: /PSU#0 is not installed. Insert it first.\n") << verb;
  }
}

TEST_F(Changes, AreAllMadeOrNone) {
  refused({"pull", "box", "/PSU#0", "/PSU#99"});
  EXPECT_EQ(psu_status(0), 0x80000000u);
  refused({"pull", "box", "/PSU#0", "/PSU#1", "/PSU#0"});
  EXPECT_EQ(psu_status(0), 0x80000000u);
  EXPECT_EQ(psu_status(1), 0x80000000u);
  EXPECT_TRUE(has_record(4, "fru_psu_qe_info_00"));
  EXPECT_EQ(done({"fault", "box", "PSU#0", "/PSU#1"}), "/PSU#0  Faulted\n/PSU#1  Faulted\n");
}

TEST_F(Changes, WaitForACommandThatHoldsTheDatabase) {
  box::Database current(place().database(2));
  ASSERT_TRUE(current.lock());
  EXPECT_EQ(refused({"pull", "box", "/PSU#0"}),
            "spbox: box/mgb/db/2 is locked by another process. Try again when the command in the box has done its "
            "step.\n");
  ASSERT_TRUE(current.unlock());
  done({"pull", "box", "/PSU#0"});
}

}  // namespace
