#include <filesystem>
#include <fstream>
#include <iterator>

#include "tests/host/spbox/read_json.h"
#include "tests/host/spbox/spbox_test.h"

namespace {

class Model : public SpboxTest {};

TEST_F(Model, IsShownMadeUnknownAndAnother) {
  make_box("qe1");
  EXPECT_EQ(done({"model", "box"}), "qe1\n");
  EXPECT_EQ(done({"model", "box", "unknown"}), "unknown\n");
  EXPECT_EQ(refused({"units", "box"}),
            "spbox: box/tmp holds no marker file of a model, such as .qe1: the box does not know what server it is. "
            "`spbox model box MODEL` puts it back.\n");
  EXPECT_EQ(in_box({"echo", "here"}).output, "here\n") << "a command runs nevertheless";
  EXPECT_EQ(ReadJson(done({"model", "box", "qe2", "--json"}))["model"], "qe2");
  EXPECT_EQ(done({"model", "box", "qe1"}), "qe1\n");
  EXPECT_NE(done({"units", "box"}).find("Model qe1,"), std::string::npos);
}

TEST_F(Model, LeavesWhatALinkNamesAlone) {
  make_box("qa");
  write("outside", "mine");
  std::filesystem::create_symlink(scratch_ / "outside", place().tmp() / ".qb1");
  refused({"model", "box", "qb1"});
  EXPECT_EQ(done({"model", "box", "qa"}), "qa\n");
  EXPECT_EQ(std::filesystem::file_size(scratch_ / "outside"), 4U);
  std::filesystem::rename(place().etc(), scratch_ / "etc");
  std::filesystem::create_directory_symlink(scratch_ / "etc", place().etc());
  refused({"times", "box", "--missing"});
  EXPECT_TRUE(std::filesystem::exists(scratch_ / "etc" / "cmdtime_qa"));
}

class Times : public SpboxTest {
 protected:
  std::string file(const std::string &name) const {
    std::ifstream in(place().etc() / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
  }
};

TEST_F(Times, AreShownAndSetForAControlProgramAndAKindOfUnit) {
  make_box("qe1");
  EXPECT_EQ(done({"times", "box", "ctlled"}), "Program  Time limit\nctlled   10 s\n");
  EXPECT_EQ(done({"times", "box", "ctlled", "2"}), "Program  Time limit\nctlled   2 s\n");
  EXPECT_EQ(file("cmdtime_qe").substr(20, 4), std::string("\0\0\0\2", 4));
  EXPECT_EQ(file("cmdtime_qe").size(), 128U);
  EXPECT_EQ(done({"times", "box", "psu", "5", "258"}), "Kind  Time 1  Time 2\npsu   5 s     258 s\n");
  EXPECT_EQ(file("controltime_qe").substr(16, 4), std::string("\0\0\0\5", 4));
  EXPECT_EQ(file("controltime_qe").substr(128 + 16, 4), std::string("\0\0\1\2", 4));
  EXPECT_NE(done({"times", "box", "--json"}).find("\"name\": \"ctlled\",\n      \"seconds\": 2"), std::string::npos);
  EXPECT_EQ(file("cmdtime_qa"), file("cmdtime_qb")) << "those of other models stay";
}

TEST_F(Times, AreMissingOrCutAndSetBack) {
  make_box("qb1");
  const std::string commands = file("cmdtime_qb"), controls = file("controltime_qb");
  EXPECT_EQ(done({"times", "box", "--missing"}),
            "Control programs: The file is missing.\n\nKinds of units: The file is missing.\n");
  EXPECT_NE(done({"times", "box", "--json"}).find("\"programs\": null"), std::string::npos);
  std::ofstream(place().etc() / "cmdtime_qb", std::ios::binary) << "cut";
  EXPECT_NE(done({"times", "box", "ctlled"}).find("cmdtime_qb has 3 bytes, should have 128."), std::string::npos);
  done({"times", "box", "--reset"});
  EXPECT_EQ(file("cmdtime_qb"), commands);
  EXPECT_EQ(file("controltime_qb"), controls);
}

TEST_F(Times, ThatMakeNoSenseAreRefused) {
  make_box("qa");
  const struct {
    Words line;
    const char *says;
  } rows[] = {
      {{"ctlled", "soon"}, "`soon` is no number of seconds."},
      {{"ctlled", "1", "2"}, "a control program has one time limit."},
      {{"psu", "1"}, "a kind of unit has two times."},
      {{"ctlled", "--missing"}, "--missing and --reset are for both files. Leave ctlled out."},
  };
  for (const auto &row : rows) {
    Words line{"times", "box"};
    line.insert(line.end(), row.line.begin(), row.line.end());
    const Done result = spbox(line);
    EXPECT_EQ(result.exit_status, 2) << row.says;
    EXPECT_EQ(result.output, "spbox: " + std::string(row.says) + " `spbox help times` says more.\n");
  }
}

}  // namespace
