#include <cctype>
#include <cstring>

#include "host/box/database.h"
#include "tests/host/spbox/read_json.h"
#include "tests/host/spbox/spbox_test.h"

namespace {

class Changes : public SpboxTest {
 protected:
  void SetUp() override { make_box("qe1"); }

  std::uint32_t psu_status(std::size_t number) const { return word(record(2, "current_psu_info"), 56 * number + 8); }
  std::uint8_t psu_flags(std::size_t number) const { return record(2, "current_psu_info").at(56 * number + 20); }
  std::uint32_t cmu_status() const { return word(record(2, "current_cmu_info_01"), 8); }
  std::string state(const std::string &unit) const {
    return ReadJson(done({"show", "box", unit, "--json"}))["state"].string();
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
  EXPECT_EQ(trays.at(44) & 0x30, 0x00);
  EXPECT_EQ(trays.at(216 + 20), 0x00);
  EXPECT_EQ(trays.at(216 + 44 + 56) & 0x30, 0x10);
}

TEST_F(Changes, TakeAPowerSupplyOutAndPutAnotherIn) {
  done({"fault", "box", "/PSU#40"});
  EXPECT_EQ(done({"pull", "box", "/PSU#40"}), "/PSU#40  Not installed\n");
  EXPECT_EQ(psu_status(9), 0u);
  EXPECT_EQ(psu_flags(9), 0);
  EXPECT_EQ(record(4, "fru_psu_qe_info_09"), box::Bytes(320))
      << "cleared, and there: a command may be about to read it";
  EXPECT_GT(record(4, "fru_psu_qe_info_08").at(79), 0);
  EXPECT_EQ(done({"insert", "box", "/PSU#40"}), "/PSU#40  Normal\n");
  EXPECT_EQ(psu_status(9), 0x80000000u);
  EXPECT_EQ(record(4, "fru_psu_qe_info_09").size(), 320u);
  EXPECT_GT(record(4, "fru_psu_qe_info_09").at(79), 0);
}

TEST_F(Changes, TakeAFanTrayOutWithItsFans) {
  done({"pull", "box", "/FAN_A#0"});
  EXPECT_EQ(record(4, "fru_fan_qe_info_02"), box::Bytes(256));
  EXPECT_EQ(state("/FAN_A#0/FAN#2"), "Not installed");
  EXPECT_EQ(state("/FAN_A#1/FAN#2"), "Normal");
  done({"insert", "box", "/FAN_A#0"});
  EXPECT_GT(record(4, "fru_fan_qe_info_02").at(43), 0);
  EXPECT_EQ(state("/FAN_A#0/FAN#2"), "Normal");
}

TEST_F(Changes, TakeABoardOutWithWhatSitsOnIt) {
  done({"pull", "box", "/CMU#1"});
  EXPECT_EQ(state("/CMU#1/CPUM#3"), "Not installed");
  EXPECT_EQ(state("/CMU#1/MEM#30B"), "Not installed");
  EXPECT_EQ(state("/CMU#2/MEM#30B"), "Normal");
  EXPECT_EQ(record(4, "fru_cmu_info_01"), box::Bytes(8192)) << "the readers need the record, board or not";
  EXPECT_EQ(refused({"insert", "box", "/CMU#1/CPUM#3"}),
            "spbox: box: /CMU#1/CPUM#3 has nothing to sit on: /CMU#1 is not installed. Insert that one.\n");
  done({"insert", "box", "/CMU#1"});
  EXPECT_EQ(state("/CMU#1/MEM#30B"), "Normal");
}

struct KindRow {
  const char *model, *unit;
};

// One unit of every kind that has a state.
constexpr KindRow kKindRows[] = {
    {"qe3", "/CMU#15"},      {"qe3", "/CMU#15/CPUM#3"},  {"qe3", "/CMU#0/MEM#30B"}, {"qe3", "/IOU#15"},
    {"qe3", "/IOU#9/PCI#7"}, {"qe3", "/EMGBU_B#1"},      {"qe3", "/EMGBU_C#1"},     {"qe3", "/PSU#74"},
    {"qe3", "/FAN_A#35"},    {"qe3", "/FAN_A#35/FAN#2"}, {"qe3", "/OPNL#0"},        {"qe1", "/BP_A#0"},
    {"qe1", "/DDC_A#1"},     {"qe1", "/FAN_B#7"},        {"qa", "/MBU_A"},          {"qa", "/MBU_A/PCI#3"},
    {"qb1", "/FAN_B#1"},     {"qb1", "/IOU#0/PCI#4"},    {"qb2", "/MBU_B"},         {"qb2", "/MBU_B/MEMB#7/MEM#0B"},
    {"qb2", "/EMGBU"},       {"qb2", "/OPNL"},
};

class ChangesOfKinds : public SpboxTest, public testing::WithParamInterface<KindRow> {
 protected:
  std::string state(const std::string &unit) const {
    return ReadJson(done({"show", "box", unit, "--json"}))["state"].string();
  }
};

TEST_P(ChangesOfKinds, FollowOneAnotherAndLeaveTheOtherUnits) {
  make_box(GetParam().model);
  const std::string unit = GetParam().unit;
  const std::pair<const char *, const char *> steps[] = {{"fault", "Faulted"},      {"degrade", "Degraded"},
                                                         {"repair", "Normal"},      {"degrade", "Degraded"},
                                                         {"pull", "Not installed"}, {"insert", "Normal"}};
  for (const auto &[verb, state_after] : steps) {
    EXPECT_EQ(done({verb, "box", unit}), unit + "  " + state_after + "\n");
    const ReadJson all(done({"units", "box", "--json"}));
    for (const ReadJson &other : all["units"].entries()) {
      const std::string name = other["name"].string();
      if (name == unit) continue;
      const bool goes_along = name.starts_with(unit + "/") && state_after == std::string("Not installed");
      EXPECT_EQ(other["state"], goes_along ? "Not installed" : "Normal") << name << " after " << verb << ' ' << unit;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Kinds, ChangesOfKinds, testing::ValuesIn(kKindRows), [](const auto &row) {
  std::string name = std::string(row.param.model) + row.param.unit;
  for (char &c : name) c = std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
  return name;
});

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
  EXPECT_EQ(refused({"pull", "box", "/PSU#0", "/PSU#1", "PSU#0"}), "spbox: /PSU#0 is given twice.\n");
  EXPECT_EQ(psu_status(0), 0x80000000u);
  EXPECT_EQ(psu_status(1), 0x80000000u);
  EXPECT_TRUE(has_record(4, "fru_psu_qe_info_00"));
  EXPECT_EQ(done({"fault", "box", "PSU#0", "/PSU#1"}), "/PSU#0  Faulted\n/PSU#1  Faulted\n");
}

TEST_F(Changes, OfAUnitWhoseRecordIsBrokenAreRefusedAndThoseOfOthersMade) {
  done({"break", "box", "current_cmu_info_01", "--short"});
  EXPECT_EQ(refused({"fault", "box", "/CMU#1"}),
            "spbox: box: record current_cmu_info_01 is 1759 bytes, should be 1760. `spbox mend box` mends what `spbox "
            "break` broke.\n");
  EXPECT_EQ(done({"fault", "box", "/CMU#2"}), "/CMU#2  Faulted\n");
  done({"break", "box", "/PSU#0", "--fru", "--missing"});
  EXPECT_EQ(done({"fault", "box", "/PSU#0"}), "/PSU#0  Faulted\n") << "the identity record is not touched";
  EXPECT_EQ(refused({"pull", "box", "/PSU#0"}),
            "spbox: box: record fru_psu_qe_info_00 is missing. `spbox mend box` mends what `spbox break` broke.\n");
  EXPECT_EQ(done({"pull", "box", "/PSU#1"}), "/PSU#1  Not installed\n");
}

TEST_F(Changes, WaitForACommandThatHoldsTheDatabase) {
  box::Database current(place().database(2));
  ASSERT_TRUE(current.lock());
  EXPECT_EQ(refused({"pull", "box", "/PSU#0"}),
            "spbox: database 2 in box/mgb/db is locked by another process. Try again when the command in the box has "
            "done its "
            "step.\n");
  ASSERT_TRUE(current.unlock());
  done({"pull", "box", "/PSU#0"});
}

}  // namespace
