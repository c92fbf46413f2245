#include "tests/host/spbox/spbox_test.h"

namespace {

class Break : public SpboxTest {
 protected:
  void SetUp() override { make_box("qe1"); }
};

TEST_F(Break, SaysWhatWasDoneAndHowToMendIt) {
  EXPECT_EQ(done({"break", "box", "/PSU#40", "--short"}),
            "Record current_psu_info (database 2) is 3359 bytes, should be 3360.\n"
            "It holds /PSU#0 and 17 more.\n"
            "`spbox mend box current_psu_info` restores it.\n");
  EXPECT_EQ(record(2, "current_psu_info").size(), 3359u);
  EXPECT_EQ(done({"break", "box", "PSU#40", "--fru", "--missing"}),
            "Record fru_psu_qe_info_09 (database 4) is missing.\n"
            "It holds /PSU#40.\n"
            "`spbox mend box fru_psu_qe_info_09` restores it.\n");
  EXPECT_FALSE(has_record(4, "fru_psu_qe_info_09"));
  EXPECT_EQ(done({"break", "box", "current_domain_info_05", "--long"}),
            "Record current_domain_info_05 (database 2) is 1465 bytes, should be 1464.\n"
            "`spbox mend box current_domain_info_05` restores it.\n");
  EXPECT_EQ(done({"break", "box"}),
            "Record current_domain_info_05 (database 2) is 1465 bytes, should be 1464.\n"
            "Record current_psu_info (database 2) is 3359 bytes, should be 3360.\n"
            "Record fru_psu_qe_info_09 (database 4) is missing.\n");
}

TEST_F(Break, IsMendedOneByOneOrAltogether) {
  const std::string whole = done({"dump", "box"});
  done({"break", "box", "/PSU#40", "--fru", "--missing"});
  done({"break", "box", "current_dimm_info_02", "local_mgb_info", "--long"});
  EXPECT_EQ(done({"mend", "box", "/PSU#40", "--fru"}), "Record fru_psu_qe_info_09 (database 4) is as it was.\n");
  EXPECT_EQ(done({"mend", "box", "/PSU#40"}), "Record current_psu_info (database 2) was not broken on purpose.\n");
  EXPECT_EQ(done({"mend", "box"}),
            "Record current_dimm_info_02 (database 2) is as it was.\n"
            "Record local_mgb_info (database 3) is as it was.\n");
  EXPECT_EQ(done({"mend", "box"}), "No record is broken on purpose.\n");
  EXPECT_EQ(done({"break", "box"}), "No record is broken on purpose.\n");
  EXPECT_EQ(done({"dump", "box"}), whole);
}

TEST_F(Break, LeavesWhatWasWrittenAnew) {
  done({"break", "box", "current_panel_info", "--missing"});
  box::Database(place().database(2)).put("current_panel_info", box::Bytes(64));
  EXPECT_EQ(done({"break", "box"}),
            "Record current_panel_info (database 2) was written again after it was broken, and is whole.\n");
  EXPECT_EQ(done({"mend", "box"}),
            "Record current_panel_info (database 2) was written again after it was broken, and stays.\n");
}

TEST_F(Break, RefusesAnIdentityRecordOfNoUnit) {
  for (const char *verb : {"break", "mend"}) EXPECT_EQ(spbox({verb, "box", "--fru"}).exit_status, 2) << verb;
  const std::string why = "spbox: current_psu_info is a record: --fru is for units. Name the record without it.\n";
  EXPECT_EQ(refused({"break", "box", "current_psu_info", "--fru", "--short"}), why);
  EXPECT_EQ(refused({"mend", "box", "current_psu_info", "--fru"}), why);
  EXPECT_EQ(done({"break", "box"}), "No record is broken on purpose.\n");
}

TEST_F(Break, RefusesWhatTheBoxDoesNotHave) {
  EXPECT_EQ(refused({"break", "box", "/PSU#99", "--short"}),
            "spbox: box has no unit /PSU#99 (model qe1). `spbox units box` lists them.\n");
  EXPECT_EQ(
      refused({"break", "box", "cpum_data_3", "--short"}),
      "spbox: box has no unit and no record cpum_data_3. `spbox units box` lists the units, `spbox show box UNIT` "
      "the records of one.\n");
  EXPECT_EQ(refused({"break", "box", "/OPNL#0", "--fru", "--short"}), "spbox: /OPNL#0 has no identity record.\n");
  EXPECT_EQ(done({"break", "box"}), "No record is broken on purpose.\n") << "where one name is wrong none is broken";
}

}  // namespace
