#include <algorithm>
#include <fstream>
#include <map>

#include "host/box/unit_name.h"
#include "host/spbox/enclosure.h"
#include "host/terminal/background_program.h"
#include "tests/eventually.h"
#include "tests/host/spbox/spbox_test.h"

namespace {

namespace fs = std::filesystem;

struct ModelRow {
  const char *name;
  std::uint32_t code;
  int boards;
  std::uint32_t cmus, ious, trays, psus;  // the general record's counts
  std::uint8_t flags;                     // byte 148 of the current system record
};

constexpr ModelRow kModels[] = {
    {"qa", 6, 1, 1, 1, 2, 2, 0x00},    {"qb1", 1, 1, 1, 1, 4, 2, 0x00},   {"qb2", 2, 2, 1, 2, 4, 4, 0x00},
    {"qe1", 3, 4, 4, 4, 12, 18, 0x80}, {"qe2", 4, 8, 8, 8, 16, 30, 0x80}, {"qe3", 5, 16, 16, 16, 32, 60, 0x80},
};

class Create : public SpboxTest, public testing::WithParamInterface<ModelRow> {
 protected:
  void SetUp() override { make_box(GetParam().name); }

  bool high_end() const { return GetParam().code >= 3 && GetParam().code <= 5; }

  // Records that a pattern stands for, and only those, each of this size.
  void expect_run(std::uint32_t db_id, const std::string &prefix, int digits, int count, std::size_t size) {
    for (int i = 0; i < count; ++i) {
      std::string number = std::to_string(i);
      number.insert(0, static_cast<std::size_t>(digits) - number.size(), '0');
      EXPECT_EQ(record(db_id, prefix + number).size(), size) << prefix << number;
      expected_[db_id].insert(prefix + number);
    }
  }

  void expect_one(std::uint32_t db_id, const std::string &name, std::size_t size) {
    EXPECT_EQ(record(db_id, name).size(), size) << name;
    expected_[db_id].insert(name);
  }

  // The databases hold what was expected and nothing else.
  void expect_no_more() {
    for (std::uint32_t db_id = 0; db_id < 6; ++db_id) {
      box::Database(place().database(db_id)).each([&](std::string_view key, std::span<const std::uint8_t>) {
        EXPECT_TRUE(expected_[db_id].contains(std::string(key))) << db_id << ' ' << key;
      });
    }
  }

  std::map<std::uint32_t, std::set<std::string>> expected_;
};

TEST_P(Create, MakesEveryRecordInItsSize) {
  const ModelRow &model = GetParam();
  expect_one(0, "gen_system_info", 1408);
  expect_one(1, "setup_system_info", 248);
  expect_run(1, "setup_cmu_info_", 2, model.boards, 256);
  expect_one(2, "current_system_info", 176);
  expect_one(2, "current_panel_info", 64);
  expect_run(2, "current_cmu_info_", 2, model.boards, 1760);
  expect_run(2, "current_cpu_module_info_", 2, model.boards, 2976);
  expect_run(2, "current_dimm_info_", 2, model.boards, 1792);
  expect_run(2, "current_iou_info_", 2, model.boards, 2016);
  expect_run(2, "current_domain_info_", 2, high_end() ? 24 : 1, 1464);
  expect_one(2, "current_mgb_info", 160);
  expect_one(2, "current_psu_info", 3360);
  expect_one(2, "current_fantray_info", 6912);
  expect_one(3, "local_mgb_info", 280);
  expect_run(4, "fru_cmu_info_", 2, model.boards, 8192);
  expect_run(4, "fru_cpu_info_", 2, model.boards * 4, 8192);
  expect_run(4, "fru_dimm_info_", 3, model.boards * 32, 256);
  expect_run(4, high_end() ? "fru_iou_qe_info_" : "fru_iou_qb_info_", 2, model.boards, 8192);
  expect_run(4, "fru_emgbu_info_", 2, model.code == 5 ? 4 : high_end() ? 2 : 1, 8192);
  const bool qb = model.code == 1 || model.code == 2;
  expect_run(4, qb ? "fru_psu_qb_info_" : "fru_psu_qe_info_", 2, static_cast<int>(model.psus), 320);
  if (high_end()) {
    expect_run(1, "setup_xsb_info_", 2, model.boards * 4, 192);
    expect_run(2, "current_xsb_info_", 2, model.boards * 4, 152);
    expect_run(4, "fru_fan_qe_info_", 2, static_cast<int>(model.trays), 256);
  }
  if (model.code == 5) expect_one(2, "current_mgbr_info", 48);
  if (model.code == 3) {
    expect_one(2, "current_bp32_info", 1008);
    expect_one(4, "fru_bpa_info", 8192);
    expect_run(4, "fru_ddca_info_", 2, 2, 320);
  }
  expect_no_more();
}

TEST_P(Create, CountsTheUnits) {
  const box::Bytes general = record(0, "gen_system_info");
  EXPECT_EQ(word(general, 0), GetParam().cmus);
  EXPECT_EQ(word(general, 4), GetParam().ious);
  EXPECT_EQ(word(general, 24), GetParam().trays);
  EXPECT_EQ(word(general, 32), GetParam().psus);
  EXPECT_EQ(record(2, "current_system_info")[148], GetParam().flags);
}

TEST_P(Create, FillsEveryPowerSupplyAndFanTray) {
  const box::Bytes psus = record(2, "current_psu_info");
  for (std::uint32_t n = 0; n < GetParam().psus; ++n) {
    const std::size_t at = std::size_t{56} * n;
    const auto name = box::unit_name(GetParam().code, {word(psus, at), word(psus, at + 4)});
    EXPECT_TRUE(name && name->starts_with("/PSU#")) << n;
    EXPECT_EQ(word(psus, at + 8), 0x80000000u) << n;
    EXPECT_EQ(psus[at + 20], 0) << n;
  }
  const box::Bytes trays = record(2, "current_fantray_info");
  for (std::uint32_t t = 0; t < GetParam().trays; ++t) {
    const std::size_t at = std::size_t{216} * t;
    const auto name = box::unit_name(GetParam().code, {word(trays, at), word(trays, at + 4)});
    EXPECT_TRUE(name && name->starts_with("/FAN_")) << t;
    EXPECT_EQ(word(trays, at + 8), 0x80000000u) << t;
    EXPECT_EQ(word(trays, at + 32), 0x80000000u) << t << ": its first fan";
  }
}

TEST_P(Create, NamesTheUnitsOfTheFruRecords) {
  const auto name_at = [&](const std::string &name, std::size_t length_at) {
    const box::Bytes bytes = record(4, name);
    const std::size_t length = bytes.at(length_at) & 0x3F;
    EXPECT_GT(length, 0u) << name;
    EXPECT_LE(length, 18u) << name;
    return std::string(bytes.begin() + static_cast<long>(length_at) + 1,
                       bytes.begin() + static_cast<long>(length_at + 1 + length));
  };
  EXPECT_TRUE(name_at("fru_cmu_info_00", 6187).starts_with("CM-"));
  EXPECT_TRUE(name_at("fru_emgbu_info_00", 6187).starts_with("SP-"));
  const bool qb = GetParam().code == 1 || GetParam().code == 2;
  EXPECT_TRUE(name_at(qb ? "fru_psu_qb_info_01" : "fru_psu_qe_info_01", 79).starts_with("PW-"));
  if (high_end()) {
    EXPECT_TRUE(name_at("fru_fan_qe_info_11", 43).starts_with("FT-"));
  }
  if (GetParam().code == 3) {
    EXPECT_TRUE(name_at("fru_ddca_info_01", 64).starts_with("DC-"));
  }
  if (GetParam().code == 3) {
    EXPECT_TRUE(name_at("fru_bpa_info", 6187).starts_with("BP-"));
  }
  if (GetParam().code == 5) {
    EXPECT_TRUE(name_at("fru_emgbu_info_02", 6187).starts_with("SR-"));
  }
}

TEST_P(Create, LeavesTheMarkerAndTheTimes) {
  int markers = 0;
  for (const ModelRow &row : kModels) markers += fs::exists(place().tmp() / ("." + std::string(row.name)));
  EXPECT_EQ(markers, 1);
  EXPECT_TRUE(fs::exists(place().tmp() / ("." + std::string(GetParam().name))));
  for (const std::string family : {"qa", "qb", "qe"}) {
    EXPECT_EQ(fs::file_size(place().etc() / ("controltime_" + family)), 256u);
    EXPECT_EQ(fs::file_size(place().etc() / ("cmdtime_" + family)), 128u);
    std::ifstream file(place().etc() / ("cmdtime_" + family), std::ios::binary);
    char first[4] = {};
    file.read(first, 4);
    EXPECT_EQ(std::string(first, 3), std::string(3, '\0')) << "a time is stored with its most significant byte first";
    EXPECT_GT(first[3], 0);
  }
}

INSTANTIATE_TEST_SUITE_P(Models, Create, testing::ValuesIn(kModels),
                         [](const auto &row) { return std::string(row.param.name); });

class CreateFolder : public SpboxTest {};

TEST_F(CreateFolder, PutsMemoryWhereTheModelsNumbersPutIt) {
  make_box("qb2");
  const auto dimm = [&](const std::string &name, std::size_t number) {
    const box::Bytes bytes = record(2, name);
    return box::unit_name(2, {word(bytes, 56 * number), word(bytes, 56 * number + 4)}).value_or("none");
  };
  EXPECT_EQ(dimm("current_dimm_info_00", 0), "/MBU_B/MEMB#0/MEM#3A");
  EXPECT_EQ(dimm("current_dimm_info_00", 31), "/MBU_B/MEMB#3/MEM#0B");
  EXPECT_EQ(dimm("current_dimm_info_01", 8), "/MBU_B/MEMB#5/MEM#3A");
}

TEST_F(CreateFolder, PutsFanTraysInTheOrderOfTheRecord) {
  make_box("qe1");
  const box::Bytes trays = record(2, "current_fantray_info");
  const char *const names[] = {"/FAN_B#0", "/FAN_B#1", "/FAN_A#0", "/FAN_A#1", "/FAN_A#2", "/FAN_A#3",
                               "/FAN_B#2", "/FAN_B#3", "/FAN_B#4", "/FAN_B#5", "/FAN_B#6", "/FAN_B#7"};
  for (std::size_t t = 0; t < 12; ++t) {
    EXPECT_EQ(box::unit_name(3, {word(trays, 216 * t), word(trays, 216 * t + 4)}), names[t]);
    EXPECT_EQ(word(trays, 216 * t + 32 + 112), t >= 2 && t <= 5 ? 0x80000000u : 0u) << "third fan of tray " << t;
  }
}

TEST_F(CreateFolder, DividesTheLastBoardOfTheHighEnd) {
  make_box("qe1");
  EXPECT_EQ(word(record(2, "current_cmu_info_00"), 36), 1u);
  EXPECT_EQ(word(record(2, "current_cmu_info_03"), 36), 4u);
  EXPECT_EQ(word(record(2, "current_xsb_info_08"), 56), 1u);
  EXPECT_EQ(record(2, "current_xsb_info_08")[61], 1);
  EXPECT_EQ(word(record(1, "setup_xsb_info_15"), 128), 255u);
}

TEST_F(CreateFolder, RefusesAFolderWithOtherThings) {
  fs::create_directory(scratch_ / "full");
  std::ofstream(scratch_ / "full/letter") << "dear";
  EXPECT_EQ(refused({"create", "full", "--model", "qa", "--force"}),
            "spbox: full is a folder with other things in it. Give one that does not exist yet, or an empty one.\n");
  EXPECT_TRUE(fs::exists(scratch_ / "full/letter"));
  EXPECT_EQ(refused({"create", "full/letter", "--model", "qa"}),
            "spbox: full/letter is a file. Give a folder that does not exist yet.\n");
}

TEST_F(CreateFolder, ReplacesABoxOnlyByForce) {
  make_box("qa");
  std::ofstream(place().root() / "notes") << "mine";
  done({"pull", "box", "/PSU#0"});
  EXPECT_EQ(refused({"create", "box", "--model", "qb1"}),
            "spbox: box is a box already. --force makes it anew, and all that it holds is lost.\n");
  EXPECT_TRUE(fs::exists(place().tmp() / ".qa"));
  EXPECT_EQ(done({"create", "box", "--model", "qb1", "--force"}),
            "Made box: model qb1, 53 units, all healthy. `spbox units box` lists them.\n");
  EXPECT_FALSE(fs::exists(place().tmp() / ".qa"));
  EXPECT_TRUE(fs::exists(place().root() / "notes")) << "what is no part of the box stays";
}

// A verb that lasts is not waited for.
TEST_F(CreateFolder, TellsAVerbThatLastsThatTheBoxWasMadeAnew) {
  make_box("qa");
  terminal::BackgroundProgram hands({SPBOX, "technician", place().root(), "--do", "pull /PSU#0; when led /PSU#0 on"});
  ASSERT_TRUE(eventually([&] { return hands.output().ends_with("pull /PSU#0\n"); }));
  done({"create", "box", "--model", "qa", "--force"});
  EXPECT_EQ(hands.wait(), 1);
  EXPECT_TRUE(hands.output().ends_with("/box was made anew meanwhile. Try again.\n")) << hands.output();
}

TEST_F(CreateFolder, KeepsTheOldBoxWhereTheNewOneDoesNotFit) {
  make_box("qa");
  std::ofstream(place().root() / "notes") << "mine";
  std::ofstream(place().tmp() / "list") << "a command's";
  done({"fault", "box", "/PSU#0"});
  const std::string before = done({"dump", "box"});
  std::ofstream dump(scratch_ / "huge.dump");
  dump << "spbox dump 1\norder big\nmodel qe1\ndatabase box\n";
  const std::string half_a_page(2048, 'x');  // LMDB gives it a whole one
  for (int i = 0; i < 17000; ++i) dump << "setting s" << i << ' ' << half_a_page << '\n';
  dump << "end\n";
  dump.close();
  const std::string why = refused({"load", "huge.dump", "box", "--force"});
  EXPECT_TRUE(why.starts_with("spbox: box stays the box that it was: databases in ")) << why;
  EXPECT_NE(why.find("the box is full: its databases hold at most 64 MiB together."), std::string::npos) << why;
  EXPECT_EQ(done({"dump", "box"}), before);
  std::vector<std::string> names;
  for (const auto &entry : fs::directory_iterator(place().root())) names.push_back(entry.path().filename());
  std::sort(names.begin(), names.end());
  EXPECT_EQ(names, (Words{"mgb", "notes", "tmp"})) << "nothing half made is left";
  EXPECT_TRUE(fs::exists(place().tmp() / "list"));
}

TEST_F(CreateFolder, SaysWhichPartOfItsNameIsNoFolder) {
  std::ofstream(scratch_ / "file") << "";
  EXPECT_EQ(refused({"create", "file/b", "--model", "qa"}), "spbox: file/b: Not a directory.\n");
}

// Whichever call fails for want of a descriptor.
TEST_F(CreateFolder, LeavesTheOldBoxAloneWhereDescriptorsAreFew) {
  make_box("qa");
  const std::string before = done({"dump", "box"});
  int failed = 0;
  for (int limit = 4; limit < 32; ++limit) {
    const Done made = run_to_end({"sh", "-c",
                                  "cd " + scratch_.path().string() + "; ulimit -n " + std::to_string(limit) +
                                      "; exec " SPBOX " create box --model qa --force"});
    EXPECT_FALSE(fs::exists(place().root() / ".making")) << limit << ": " << made.output;
    failed += made.exit_status == 0 ? 0 : 1;
  }
  EXPECT_GT(failed, 4);
  EXPECT_LT(failed, 28);
  EXPECT_EQ(done({"dump", "box"}), before);
}

TEST_F(CreateFolder, LeavesNothingBesideTheNewBox) {
  make_box("qa");
  std::ofstream(place().root() / "notes") << "mine";
  fs::remove_all(place().tmp());
  fs::create_directories(place().root() / ".making/new/mgb");  // of a making that was killed
  std::ofstream(place().root() / ".making/made_by_spbox") << "";
  EXPECT_EQ(done({"create", "box", "--model", "qb1", "--force"}),
            "spbox: box was being made when spbox died. It is the box that it was.\n"
            "Made box: model qb1, 53 units, all healthy. `spbox units box` lists them.\n");
  std::vector<std::string> names;
  for (const auto &entry : fs::directory_iterator(place().root())) names.push_back(entry.path().filename());
  std::sort(names.begin(), names.end());
  EXPECT_EQ(names, (Words{"mgb", "notes", "tmp"}));
  EXPECT_EQ(done({"fault", "box", "/PSU#0"}), "/PSU#0  Faulted\n");
}

// A command may put more folders into one another than a process has descriptors.
TEST_F(CreateFolder, RemovesAllThatACommandLeft) {
  make_box("qa");
  for (int time = 1; time <= 2; ++time) {
    ASSERT_EQ(shell("cd /tmp; for i in $(seq 60); do mkdir d; cd d; done").exit_status, 0);
    const Done made =
        run_to_end({"sh", "-c",
                    "cd " + scratch_.path().string() + "; ulimit -n 32; exec " SPBOX " create box --model qa --force"});
    EXPECT_EQ(made.exit_status, 0) << made.output;
    EXPECT_FALSE(fs::exists(place().root() / ".making"));
  }
}

// What spbox did not make may have any name.
TEST_F(CreateFolder, LeavesAFolderOfSomebodyElseAlone) {
  fs::create_directories(scratch_ / "theirs/.making/whole/tmp");
  fs::create_directories(scratch_ / "theirs/tmp");
  std::ofstream(scratch_ / "theirs/tmp/mine") << "mine";
  EXPECT_EQ(refused({"units", "theirs"}), "spbox: theirs is no box.\n");
  EXPECT_NE(refused({"create", "theirs", "--model", "qa"}).find("is a folder with other things in it"),
            std::string::npos);
  EXPECT_TRUE(fs::exists(scratch_ / "theirs/.making/whole/tmp"));
  EXPECT_TRUE(fs::exists(scratch_ / "theirs/tmp/mine"));
  make_box("qa");
  fs::create_directories(place().root() / ".making/theirs");
  done({"create", "box", "--model", "qb1", "--force"});
  EXPECT_TRUE(fs::exists(place().root() / ".making/theirs"));
  EXPECT_FALSE(fs::exists(place().root() / ".making/made_by_spbox"));
}

TEST_F(CreateFolder, ReplacesNoBoxInWhichACommandRuns) {
  make_box("qa");
  {
    const spbox::MountPoints command_in_the_box(place());
    EXPECT_EQ(refused({"create", "box", "--model", "qb1", "--force"}),
              "spbox: a command runs in box. Wait until it has ended, or end it, and try again.\n");
    EXPECT_TRUE(fs::exists(place().tmp() / ".qa"));
    EXPECT_TRUE(has_record(2, "current_psu_info"));
  }
  done({"create", "box", "--model", "qb1", "--force"});
  EXPECT_TRUE(fs::exists(place().tmp() / ".qb1"));
}

TEST_F(CreateFolder, QuotesAPathWithSpacesAsAShellTakesIt) {
  EXPECT_NE(done({"create", "my box", "--model", "qa"}).find("`spbox units 'my box'`"), std::string::npos);
  EXPECT_EQ(refused({"show", "my box", "/NOPE"}),
            "spbox: my box has no unit /NOPE (model qa). `spbox units 'my box'` lists them.\n");
  EXPECT_EQ(refused({"units", "it's no box"}),
            "spbox: it's no box is no box. `spbox create 'it'\\''s no box' --model MODEL` makes one.\n");
}

TEST_F(CreateFolder, SaysWhereAFolderCannotBeMade) {
  EXPECT_EQ(refused({"create", "/proc/box", "--model", "qa"}), "spbox: /proc/box: No such file or directory.\n");
}

}  // namespace
