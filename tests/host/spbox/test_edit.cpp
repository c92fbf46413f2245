#include <filesystem>

#include "tests/host/spbox/spbox_test.h"

namespace {

class Edit : public SpboxTest {
 protected:
  void SetUp() override { make_box("qe1"); }

  // With an editor that is given as the words of a shell.
  Done edit_with(const std::string &editor, const std::string &target) const {
    return run_to_end({"/usr/bin/env", "-C", scratch_.path(), "-u", "VISUAL", "TMPDIR=" + scratch_.path().string(),
                       "EDITOR=" + editor, SPBOX, "edit", "box", target});
  }
  // What the user has written and was not taken.
  std::vector<std::filesystem::path> kept() const {
    std::vector<std::filesystem::path> files;
    for (const auto &entry : std::filesystem::directory_iterator(scratch_.path())) {
      if (entry.path().filename().string().starts_with("spbox-edit.")) files.push_back(entry.path());
    }
    return files;
  }
  static constexpr const char *kRecord = "current_domain_info_05";
};

TEST_F(Edit, TakesBackWhatTheEditorLeft) {
  const box::Bytes before = record(2, kRecord);
  EXPECT_EQ(edit_with("sed -i s/00010006/00010007/", kRecord).output, "");
  EXPECT_EQ(word(record(2, kRecord), 0), 0x00010007U);
  EXPECT_EQ(edit_with("sed -i s/00010007/00010006/", kRecord).exit_status, 0);
  EXPECT_EQ(record(2, kRecord), before);
  EXPECT_EQ(edit_with("true", kRecord).output, "Nothing is changed.\n");
  EXPECT_TRUE(kept().empty());
}

TEST_F(Edit, PutsBytesWithoutAnEditor) {
  done({"edit", "box", kRecord, "0:00010009", "44:ff"});
  EXPECT_EQ(word(record(2, kRecord), 0), 0x00010009U);
  EXPECT_EQ(record(2, kRecord)[44], 0xFF);
  EXPECT_NE(done({"edit", "box", kRecord, "--print"}).find("     0: 00010009 00000000"), std::string::npos);
  EXPECT_NE(done({"edit", "box", "/PSU#3", "--print"}).find("record current_psu_info 3360"), std::string::npos);
  EXPECT_NE(done({"edit", "box", "/PSU#3", "--fru", "--print"}).find("database 4"), std::string::npos);
}

TEST_F(Edit, KeepsATextThatIsNotWholeAndChangesNothing) {
  const box::Bytes before = record(2, kRecord);
  const struct {
    const char *editor, *says;
  } rows[] = {
      {"sed -i s/1464/1463/", "the text has a record of 1463 bytes, it should be 1464. "},
      {"sed -i /^end/d", "the text is cut off: it ends without the line `end`. "},
      {"sed -i s/info_05/info_06/",
       "the text is to hold record current_domain_info_05 of database 2, and nothing else. "},
      {"sed -i 's/00010006/0001000z/'",
       "the text:7: `0: 0001000z 00000000 00000000 00000000`: \"0001000z\" is not a row of bytes: their digits are "
       "hexadecimal. "},
      {"printf '' >", "the text is no dump: it does not begin with `spbox dump 1`. "},
  };
  for (const auto &row : rows) {
    const Done result = edit_with(row.editor, kRecord);
    EXPECT_EQ(result.exit_status, 1) << row.says;
    ASSERT_EQ(kept().size(), 1U) << row.says;
    EXPECT_EQ(result.output,
              "spbox: " + std::string(row.says) + "What you have written is in " + kept().front().string() + ".\n");
    EXPECT_EQ(record(2, kRecord), before) << row.says;
    std::filesystem::remove(kept().front());
  }
}

TEST_F(Edit, IsRefusedWhereARecordOrAnEditorIsNotThere) {
  EXPECT_EQ(edit_with("exit 3;", kRecord).output,
            "spbox: `exit 3;` ended with exit status 3. Set EDITOR to an editor that can be run here.\n");
  EXPECT_EQ(edit_with("true", "nonesuch").exit_status, 1);
  done({"break", "box", kRecord, "--missing"});
  EXPECT_EQ(
      edit_with("true", kRecord).output,
      "spbox: record current_domain_info_05 is missing. `spbox mend box current_domain_info_05` restores one that "
      "was broken on purpose.\n");
  EXPECT_EQ(refused({"edit", "box", "/PSU#3", "4000:00"}),
            "spbox: record current_psu_info has 3360 bytes, which end before 4000:... does.\n");
  EXPECT_EQ(spbox({"edit", "box", kRecord, "44"}).exit_status, 2);
  EXPECT_EQ(spbox({"edit", "box", kRecord, "44:0"}).exit_status, 2);
  EXPECT_EQ(spbox({"edit", "box", kRecord, "44:00", "--print"}).exit_status, 2);
  EXPECT_TRUE(kept().empty());
}

TEST_F(Edit, LosesNothingThatSomebodyElseWritesMeanwhile) {
  const std::string other = std::string(SPBOX) + " edit box " + kRecord + " 44:ee; sed -i s/00010006/00010007/";
  const Done result = edit_with(other, kRecord);
  EXPECT_EQ(result.exit_status, 1);
  EXPECT_NE(result.output.find("somebody else has changed the record meanwhile."), std::string::npos) << result.output;
  EXPECT_EQ(record(2, kRecord)[44], 0xEE);
  EXPECT_EQ(word(record(2, kRecord), 0), 0x00010006U);
}

}  // namespace
