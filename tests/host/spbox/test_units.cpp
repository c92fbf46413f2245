#include <algorithm>
#include <fstream>
#include <sstream>

#include "host/box/program_list.h"
#include "tests/host/spbox/read_json.h"
#include "tests/host/spbox/spbox_test.h"

namespace {

std::string golden(const std::string &name) {
  std::ostringstream text;
  text << std::ifstream(std::string(GOLDEN) + "/" + name).rdbuf();
  return text.str();
}

// The lines of a text that hold a word.
std::string lines_with(const std::string &text, const std::string &word) {
  std::istringstream in(text);
  std::string found;
  for (std::string line; std::getline(in, line);) {
    if (line.find(word) != std::string::npos) found += line + "\n";
  }
  return found;
}

class Units : public SpboxTest {};

TEST_F(Units, OfTheEntryModelAreATree) {
  make_box("qa");
  done({"fault", "box", "/PSU#1"});
  done({"degrade", "box", "/FAN_A#0/FAN#0"});
  done({"pull", "box", "/MBU_A/MEM#2B"});
  box::TextDatabase(place()).set("led /PSU#1", "blink");
  box::TextDatabase(place()).set("flag /PSU#1", "start");
  EXPECT_EQ(done({"units", "box"}), golden("units_qa.txt"));
}

TEST_F(Units, OfAHighEndModelAreATree) {
  make_box("qe1");
  EXPECT_EQ(done({"units", "box"}), golden("units_qe1.txt"));
}

TEST_F(Units, AreTheSameForScripts) {
  make_box("qe1");
  done({"fault", "box", "/PSU#41"});
  box::TextDatabase(place()).set("led /PSU#41", "on");
  box::TextDatabase(place()).set("flag /PSU#41", "start");
  const ReadJson whole(done({"units", "box", "--json"}));
  EXPECT_EQ(whole["model"], "qe1");
  EXPECT_EQ(whole["maintenance_mode"], "unlocked");
  EXPECT_EQ(whole["units"].size(), 248u);
  EXPECT_EQ(whole["xsbs"].size(), 16u);
  EXPECT_EQ(whole["xsbs"][14], ReadJson(R"({"name": "03-2", "active": true, "domain": 1, "setup_domain": 2})"));
  EXPECT_EQ(whole["domains"].size(), 24u);
  EXPECT_EQ(whole["domains"][5], ReadJson(R"({"number": 5, "word_0": "0x00010006", "byte_44": 6})"));
  EXPECT_EQ(whole["system_status"], "0x80000000");
  EXPECT_EQ(whole["service_processor"], 0);
  int faulted = 0;
  for (const ReadJson &unit : whole["units"].entries()) {
    if (unit["state"] != "Faulted") continue;
    ++faulted;
    EXPECT_EQ(unit["name"], "/PSU#41");
    EXPECT_EQ(unit["type"], 161);
    EXPECT_EQ(unit["status"], "0xA0000000");
    EXPECT_EQ(unit["unit_id"], ReadJson(R"(["0x59012900", "0x00000000"])"));
    EXPECT_EQ(unit["led"], "on");
    EXPECT_EQ(unit["maintenance"], true);
  }
  EXPECT_EQ(faulted, 1);
}

TEST_F(Units, ShowWhatTheControlProgramsDidToThem) {
  make_box("qe1");
  box::TextDatabase hardware(place());
  hardware.set("flag /CMU#0", "start");
  hardware.set("detached /CMU#0", "yes");
  hardware.set("link /CMU#0", "down");
  hardware.set("link /CMU#1", "up");
  EXPECT_NE(done({"units", "box"}).find("maintenance, detached, link down"), std::string::npos);
  EXPECT_NE(done({"show", "box", "/CMU#0"}).find("maintenance, detached, link down"), std::string::npos);
  EXPECT_NE(done({"show", "box", "/CMU#1"}).find("none"), std::string::npos);
  const ReadJson unit(done({"show", "box", "/CMU#0", "--json"}));
  EXPECT_EQ(unit["detached"], true);
  EXPECT_EQ(unit["link"], "down");
}

TEST_F(Units, AreFollowedByWhatIsSetForOthers) {
  make_box("qe1");
  box::TextDatabase hardware(place());
  hardware.set("led /FANBP_C#0", "on");
  hardware.set("power /IOX@0A21", "off");
  hardware.set("mirror 3", "y");
  hardware.set("report", "start");
  done({"program", "box", "ctlled", "--delay", "3"});
  box::set_last_run(hardware, "ctlfan", {.time_ns = 7, .pid = 8, .status = 0, .arguments = "-u /PSU#99"});
  done({"daemon", "box", "late", "5"});
  done({"break", "box", "/PSU#40", "--fru", "--missing"});
  hardware.set("led /PSU#40", "on");  // of a listed unit
  const std::string text = done({"units", "box"});
  EXPECT_EQ(text.substr(text.find("\nOther")),
            "\nOther setting    Value\n"
            "led /FANBP_C#0   on\n"
            "mirror 3         y\n"
            "power /IOX@0A21  off\n"
            "power /IOX@0A22  on\n"
            "report           start\n");
  EXPECT_EQ(ReadJson(done({"units", "box", "--json"}))["other_settings"],
            ReadJson(R"({"led /FANBP_C#0": "on", "mirror 3": "y", "power /IOX@0A21": "off", "power /IOX@0A22": "on",
                         "report": "start"})"));
}

TEST_F(Units, WithoutARecordAreShownWithWhatIsSetForThem) {
  make_box("qe1");
  box::TextDatabase hardware(place());
  hardware.set("led /FANBP_C#0", "on");
  hardware.set("flag /FANBP_C#0", "start");
  const std::string text = done({"show", "box", "FANBP_C#0"});
  EXPECT_TRUE(text.starts_with("Unit     /FANBP_C#0\nState    unknown: it has no record\nUnit id  0x")) << text;
  EXPECT_TRUE(text.ends_with("\nLED      on\nFlag     maintenance\n")) << text;
  EXPECT_EQ(done({"show", "box", "/IOX@0A21"}),
            "Unit   /IOX@0A21\n"
            "State  unknown: it has no record\n"
            "LED    off\n"
            "Flag   none\n"
            "Power  on\n");
  const ReadJson expansion(done({"show", "box", "/IOX@0A21", "--json"}));
  EXPECT_EQ(expansion["power"], "on");
  EXPECT_TRUE(expansion["unit_id"].is_null());
  EXPECT_NE(refused({"show", "box", "/IOX@FFFF"}).find("no unit /IOX@FFFF"), std::string::npos);
}

// An identity record of real hardware, or of a broken one, holds any bytes.
TEST_F(Units, WithForeignBytesInTheirNamesHarmNeitherTerminalNorScript) {
  make_box("qe1");
  box::Bytes fru = record(4, "fru_psu_qe_info_09");
  const std::string name = "A\x1b[2J\xff\xc3\xa9\xc2\x9b\n";
  fru[79] = static_cast<std::uint8_t>(name.size());
  std::copy(name.begin(), name.end(), fru.begin() + 80);
  box::Database(place().database(4)).put("fru_psu_qe_info_09", fru);
  EXPECT_EQ(lines_with(done({"units", "box"}), "/PSU#40"),
            "/PSU#40     Normal  off        A\\x1b[2J\\xff\xc3\xa9\\xc2\\x9b\\x0a\n");
  EXPECT_EQ(ReadJson(done({"show", "box", "/PSU#40", "--json"}))["fru_name"], "A\x1b[2J\xef\xbf\xbd\xc3\xa9\xc2\x9b\n");
  EXPECT_EQ(ReadJson(done({"units", "box", "--json"}))["units"].size(), 248u);
}

TEST_F(Units, OfAFolderThatIsNoBoxAreRefused) {
  EXPECT_EQ(refused({"units", "nowhere"}),
            "spbox: nowhere is no box. `spbox create nowhere --model MODEL` makes one.\n");
  EXPECT_EQ(refused({"units", "/etc"}), "spbox: /etc is no box.\n") << "create takes no folder with other things in it";
  EXPECT_EQ(refused({"units", "/etc/passwd"}), "spbox: /etc/passwd is no box.\n");
}

TEST_F(Units, AreNarrowedByPatternKindStateAndDomain) {
  make_box("qe1");
  done({"fault", "box", "/PSU#41"});
  done({"pull", "box", "/PSU#3"});
  box::TextDatabase(place()).set("led /PSU#1", "blink");
  const struct {
    Words words;
    const char *units;  // the first word of each line
  } rows[] = {
      {{"/PSU#4*", "--kind", "psu"}, "/PSU#4 /PSU#40 /PSU#41 /PSU#42 /PSU#43 /PSU#44 /PSU#45 /PSU#46 /PSU#47 /PSU#48"},
      {{"/FAN_A#[01]"}, "/FAN_A#0 FAN#0 FAN#1 FAN#2 /FAN_A#1 FAN#0 FAN#1 FAN#2"},
      {{"--kind", "BP_A"}, "/BP_A#0"},
      {{"--state", "faulted"}, "/PSU#41"},
      {{"--state", "out"}, "/PSU#3"},
      {{"--state", "unusual"}, "/PSU#1 /PSU#3 /PSU#41"},
      {{"--state", "normal", "--kind", "psu", "/PSU#[0-3]"}, "/PSU#0 /PSU#1 /PSU#2"},
      {{"--kind", "cmu", "--domain", "1"}, "/CMU#2 /CMU#3"},
      {{"--state", "degraded"}, ""},
  };
  for (const auto &row : rows) {
    Words line{"units", "box"};
    line.insert(line.end(), row.words.begin(), row.words.end());
    std::istringstream text(done(line));
    std::string units;
    for (std::string one; std::getline(text, one);) {
      std::istringstream words(one);
      words >> one;
      if (one != "Unit") units += (units.empty() ? "" : " ") + one;
    }
    EXPECT_EQ(units, row.units) << row.words.front();
  }
  EXPECT_EQ(refused({"units", "box", "/DSU*"}), "spbox: no unit matches /DSU*.\n");
  EXPECT_EQ(
      refused({"units", "box", "--kind", "disk"}),
      "spbox: a qe1 has no units of the kind disk. It has bp_a, cmu, cpum, ddc_a, emgbu_b, fan, fan_a, fan_b, iou, "
      "mem, opnl, pci and psu.\n");
}

TEST_F(Units, OfAServerWithoutExtendedBoardsAreInItsOneDomain) {
  make_box("qb2");
  EXPECT_EQ(done({"units", "box", "--domain", "1"}), "Unit  State  LED  Flag  FRU name\n");
  EXPECT_NE(done({"units", "box", "--domain", "0"}).find("MBU_B"), std::string::npos);
  EXPECT_EQ(done({"units", "box", "--domain", "0"}).find("PSU"), std::string::npos);
}

TEST_F(Units, OfABoxWithoutAMarkerAreRefused) {
  make_box("qa");
  std::filesystem::remove(place().tmp() / ".qa");
  EXPECT_EQ(refused({"units", "box"}),
            "spbox: box/tmp holds no marker file of a model, such as .qe1: the box does not know what server it is. "
            "`spbox model box MODEL` puts it back.\n");
}

TEST_F(Units, WithABrokenRecordSayWhyTheyCannotBeRead) {
  make_box("qe1");
  box::Database current(place().database(2));
  current.put("current_cpu_module_info_03", box::Bytes(2975));
  current.remove("current_panel_info");
  box::Database(place().database(4)).put("fru_psu_qe_info_09", box::Bytes(321));
  const std::string text = done({"units", "box"});
  EXPECT_EQ(lines_with(text, "unreadable"),
            "  CPUM#0    unreadable: record current_cpu_module_info_03 is 2975 bytes, should be 2976\n"
            "  CPUM#1    unreadable: record current_cpu_module_info_03 is 2975 bytes, should be 2976\n"
            "  CPUM#2    unreadable: record current_cpu_module_info_03 is 2975 bytes, should be 2976\n"
            "  CPUM#3    unreadable: record current_cpu_module_info_03 is 2975 bytes, should be 2976\n"
            "/PSU#40     Normal  off        unreadable: record fru_psu_qe_info_09 is 321 bytes, should be 320\n"
            "/OPNL#0     unreadable: record current_panel_info is missing\n");
  EXPECT_EQ(lines_with(text, "/CMU#3 "), "/CMU#3      Normal  off        CM-2210-B3 2355\n");
  EXPECT_EQ(done({"show", "box", "/OPNL#0"}),
            "Unit      /OPNL#0\n"
            "Kind      operator panel (2)\n"
            "State     unreadable: record current_panel_info is missing\n"
            "Unit id   0x61010000 0x00000000\n"
            "FRU name  unknown\n"
            "LED       off\n"
            "Flag      none\n"
            "Record    current_panel_info, database 2, from byte 0\n");
  const ReadJson unit(done({"show", "box", "/OPNL#0", "--json"}));
  EXPECT_EQ(unit["state"], "Unreadable");
  EXPECT_TRUE(unit["status"].is_null());
  EXPECT_EQ(unit["unreadable"], "record current_panel_info is missing");
  const ReadJson psu(done({"show", "box", "/PSU#40", "--json"}));
  EXPECT_EQ(psu["state"], "Normal");
  EXPECT_EQ(psu["fru_unreadable"], "record fru_psu_qe_info_09 is 321 bytes, should be 320");
}

TEST_F(Units, AreAlwaysListedWhateverIsBroken) {
  make_box("qe1");
  for (std::uint32_t db_id = 0; db_id < 5; ++db_id) {
    box::Database database(place().database(db_id));
    std::vector<std::string> names;
    database.each([&](std::string_view name, std::span<const std::uint8_t>) { names.emplace_back(name); });
    for (const std::string &name : names) database.remove(name);
  }
  const std::string text = done({"units", "box"});
  const std::string broken = lines_with(text, "unreadable: record ");
  EXPECT_EQ(std::count(broken.begin(), broken.end(), '\n'), 1 + 248 + 16 + 24);
  EXPECT_NE(text.find("\nServer unreadable: record current_system_info is missing\n"), std::string::npos);
  const ReadJson whole(done({"units", "box", "--json"}));
  EXPECT_EQ(whole["xsbs"][0]["unreadable"], "record current_xsb_info_00 is missing");
  EXPECT_EQ(whole["domains"][23]["unreadable"], "record current_domain_info_23 is missing");
}

TEST_F(Units, CanBeAPartOfTheTree) {
  make_box("qb1");
  EXPECT_EQ(done({"units", "box", "/FAN_B#1", "IOU#0", "/MBU_A/CPUM#1"}),
            "Unit           State   LED  Flag  FRU name\n"
            "/FAN_B#1       Normal  off\n"
            "  FAN#0        Normal  off\n"
            "/IOU#0         Normal  off        IU-0808-A4 5720\n"
            "  PCI#0        Normal  off\n"
            "  PCI#1        Normal  off\n"
            "  PCI#2        Normal  off\n"
            "  PCI#3        Normal  off\n"
            "  PCI#4        Normal  off\n"
            "/MBU_A/CPUM#1  Normal  off        CP-1866-C1 3025\n");
}

TEST_F(Units, AreShownOneByOne) {
  make_box("qe3");
  box::TextDatabase(place()).set("led /PSU#74", "blink");
  EXPECT_EQ(done({"show", "box", "PSU#74"}),
            "Unit         /PSU#74\n"
            "Kind         power supply (161)\n"
            "State        Normal\n"
            "Status word  0x80000000\n"
            "Unit id      0x59014A00 0x00000000\n"
            "FRU name     PW-1600-E5 9582\n"
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
  const ReadJson unit(done({"show", "box", "/FAN_A#0/FAN#2", "--json"}));
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
