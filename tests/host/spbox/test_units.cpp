#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "tests/host/spbox/spbox_test.h"

namespace {

using nlohmann::json;

std::string golden(const std::string &name) {
  std::ostringstream text;
  text << std::ifstream(std::string(GOLDEN) + "/" + name).rdbuf();
  return text.str();
}

class Units : public SpboxTest {};

TEST_F(Units, OfTheEntryModelAreATree) {
  make_box("qa");
  done({"fault", "box", "/PSU#1"});
  done({"degrade", "box", "/FAN_A#0/FAN#0"});
  done({"pull", "box", "/MBU_A/MEM#2B"});
  box::Hardware(place()).set("led /PSU#1", "blink");
  box::Hardware(place()).set("flag /PSU#1", "start");
  EXPECT_EQ(done({"units", "box"}), golden("units_qa.txt"));
}

TEST_F(Units, OfAHighEndModelAreATree) {
  make_box("qe1");
  EXPECT_EQ(done({"units", "box"}), golden("units_qe1.txt"));
}

TEST_F(Units, AreTheSameForScripts) {
  make_box("qe1");
  done({"fault", "box", "/PSU#41"});
  box::Hardware(place()).set("led /PSU#41", "on");
  box::Hardware(place()).set("flag /PSU#41", "start");
  const json whole = json::parse(done({"units", "box", "--json"}));
  EXPECT_EQ(whole["model"], "qe1");
  EXPECT_EQ(whole["maintenance_mode"], "unlocked");
  EXPECT_EQ(whole["units"].size(), 216u);
  int faulted = 0;
  for (const json &unit : whole["units"]) {
    if (unit["state"] != "Faulted") continue;
    ++faulted;
    EXPECT_EQ(unit["name"], "/PSU#41");
    EXPECT_EQ(unit["type"], 161);
    EXPECT_EQ(unit["status"], "0xA0000000");
    EXPECT_EQ(unit["unit_id"], json({"0x59012900", "0x00000000"}));
    EXPECT_EQ(unit["led"], "on");
    EXPECT_EQ(unit["maintenance"], true);
  }
  EXPECT_EQ(faulted, 1);
}

TEST_F(Units, ShowWhatTheControlProgramsDidToThem) {
  make_box("qe1");
  box::Hardware hardware(place());
  hardware.set("flag /CMU#0", "start");
  hardware.set("detached /CMU#0", "yes");
  hardware.set("link /CMU#0", "down");
  hardware.set("link /CMU#1", "up");
  EXPECT_NE(done({"units", "box"}).find("maintenance, detached, link down"), std::string::npos);
  EXPECT_NE(done({"show", "box", "/CMU#0"}).find("maintenance, detached, link down"), std::string::npos);
  EXPECT_NE(done({"show", "box", "/CMU#1"}).find("none"), std::string::npos);
  const json unit = json::parse(done({"show", "box", "/CMU#0", "--json"}));
  EXPECT_EQ(unit["detached"], true);
  EXPECT_EQ(unit["link"], "down");
}

TEST_F(Units, OfAFolderThatIsNoBoxAreRefused) {
  EXPECT_EQ(refused({"units", "nowhere"}),
            "spbox: nowhere is no box. `spbox create nowhere --model MODEL` makes one.\n");
}

TEST_F(Units, OfABoxWithoutAMarkerAreRefused) {
  make_box("qa");
  std::filesystem::remove(place().tmp() / ".qa");
  EXPECT_EQ(
      refused({"units", "box"}),
      "spbox: box/tmp holds no marker file of a model, such as .qe1: the box does not know what server it is. Put "
      "the marker file back, or make the box again.\n");
}

TEST_F(Units, WithARecordOfAnotherSizeAreRefused) {
  make_box("qa");
  box::Database(place().database(2)).put("current_psu_info", box::Bytes(3359));
  EXPECT_EQ(refused({"units", "box"}),
            "spbox: box/mgb/db/2: the record current_psu_info has 3359 bytes instead of 3360. Make the box again.\n");
  box::Database(place().database(2)).remove("current_psu_info");
  EXPECT_EQ(refused({"units", "box"}), "spbox: box/mgb/db/2 holds no record current_psu_info. Make the box again.\n");
}

TEST_F(Units, AreShownOneByOne) {
  make_box("qe3");
  box::Hardware(place()).set("led /PSU#74", "blink");
  EXPECT_EQ(done({"show", "box", "PSU#74"}),
            "Unit         /PSU#74\n"
            "Kind         power supply (161)\n"
            "State        Normal\n"
            "Status word  0x80000000\n"
            "Unit id      0x59014A00 0x00000000\n"
            "FRU name     PW-1600-E5 7709\n"
            "LED          blink\n"
            "Flag         none\n"
            "Record       current_psu_info, database 2, from byte 3304, flag byte 3324\n"
            "FRU record   fru_psu_qe_info_59, database 4\n");
}

TEST_F(Units, ThatAreFansHaveNoIdOfTheirOwn) {
  make_box("qe1");
  const std::string text = done({"show", "box", "/FAN_A#0/FAN#2"});
  EXPECT_EQ(text,
            "Unit         /FAN_A#0/FAN#2\n"
            "Kind         fan\n"
            "State        Normal\n"
            "Status word  0x80000000\n"
            "FRU name     none\n"
            "LED          off\n"
            "Flag         none\n"
            "Record       current_fantray_info, database 2, from byte 576, flag byte 588\n");
  const json unit = json::parse(done({"show", "box", "/FAN_A#0/FAN#2", "--json"}));
  EXPECT_EQ(unit["sits_on"], "/FAN_A#0");
  EXPECT_TRUE(unit["unit_id"].is_null());
}

TEST_F(Units, WrittenDownInSeveralPlacesSaySo) {
  make_box("qa");
  const std::string text = done({"show", "box", "/MBU_A"});
  for (const char *name : {"current_cmu_info_00", "current_iou_info_00", "current_mgb_info"}) {
    EXPECT_NE(text.find(name), text.npos) << name;
  }
}

TEST_F(Units, ThatAreUnknownAreRefusedWithTheWayOut) {
  make_box("qe3");
  EXPECT_EQ(refused({"show", "box", "/PSU#15"}),
            "spbox: box has no unit /PSU#15 (model qe3). `spbox units box` lists them.\n");
}

}  // namespace
