// The list and the status table of power supplies: their pages, and the frame that all lists and tables share.

#include <functional>

#include <gtest/gtest.h>

#include "tests/unit/doubles/library_test.h"

namespace {

using doubles::end_mark;
using doubles::foot;
using doubles::head;
using doubles::line;
using doubles::Lines;
using doubles::machine;

const char *const kPath = "/tmp/mainte_fru_list.4711";

constexpr uint32_t kInstalled = 0x80000000;

class ShowPsu : public doubles::LibraryTest {
 protected:
  void SetUp() override {
    LibraryTest::SetUp();
    for (uint32_t n = 0; n < 12; ++n) {
      machine().names[{n, 1}] = "/PSU#" + std::to_string(n);
      psus_[n] = psu(n, kInstalled, 0, 0);
    }
  }

  static PsuData psu(uint32_t n, uint32_t status, uint32_t mainte_status, uint8_t flags) {
    PsuData record = {};
    record.type = 161;
    record.number = 40;  // is not what a list counts by
    record.unit_id[0] = n;
    record.unit_id[1] = 1;
    record.status = static_cast<int32_t>(status);
    record.mainte_status = static_cast<int32_t>(mainte_status);
    record.flags = flags;
    return record;
  }

  int32_t list(uint32_t count, const std::vector<ListLine> &lines) {
    return lmainte_show_psu_list(-1, count, psus_, lines.data());
  }
  int32_t table(const std::vector<ListLine> &lines) { return lmainte_show_psu_status(-1, psus_, lines.data()); }

  // The page as the pager got it.
  std::string page() {
    EXPECT_EQ(machine().pages.size(), 1u);
    return machine().pages.empty() ? "no page" : machine().pages[0];
  }
  std::string listed(uint32_t count, const std::vector<ListLine> &lines) {
    machine().pages.clear();
    EXPECT_EQ(list(count, lines), 0);
    return page();
  }
  std::string tabled(const std::vector<ListLine> &lines) {
    machine().pages.clear();
    EXPECT_EQ(table(lines), 0);
    return page();
  }

  PsuData psus_[12];
  const std::vector<ListLine> frame_ = {head("Power supplies\n"), foot("Choose one\n"), end_mark()};
};

// ---- pages

TEST_F(ShowPsu, ListNumbersEveryPowerSupply) {
  psus_[1] = psu(1, 0, 0, 0);
  psus_[2] = psu(2, kInstalled, 0x20000000, 0);
  psus_[3] = psu(3, kInstalled, 0, 0x10);
  EXPECT_EQ(listed(4, frame_),
            "Power supplies\n"
            " 1. PSU#0           Normal\n"
            " 2. PSU#1           Not installed\n"
            " 3. PSU#2           Faulted\n"
            " 4. PSU#3           Degraded\n"
            "Choose one\n");
}

TEST_F(ShowPsu, ListCountsBeyondNine) {
  const auto text = listed(12, {end_mark()});
  EXPECT_NE(text.find(" 9. PSU#8           Normal\n10. PSU#9           Normal\n"), std::string::npos);
  EXPECT_NE(text.find("12. PSU#11          Normal\n"), std::string::npos);
}

TEST_F(ShowPsu, ListOfNoneHasHeadAndFootAlone) {
  EXPECT_EQ(listed(0, frame_), "Power supplies\nChoose one\n");
}

TEST_F(ShowPsu, TableShowsItsOneUnit) {
  EXPECT_EQ(tabled(frame_), "Power supplies\nPSU#0         Normal\nChoose one\n");
}

TEST_F(ShowPsu, LongNamePushesTheStatus) {
  machine().names[{0, 1}] = "/a_name_of_20_letters";
  EXPECT_EQ(listed(1, {end_mark()}), " 1. a_name_of_20_lettersNormal\n");
  EXPECT_EQ(tabled({end_mark()}), "a_name_of_20_lettersNormal\n");
}

struct NameRow {
  const char *name;
  const char *line;
};

TEST_F(ShowPsu, OneLeadingSlashIsDropped) {
  constexpr NameRow kRows[] = {
      {"/PSU#0", " 1. PSU#0           Normal\n"},  {"PSU#0", " 1. PSU#0           Normal\n"},
      {"//PSU#0", " 1. /PSU#0          Normal\n"}, {"/CMU#0/PSU#0", " 1. CMU#0/PSU#0     Normal\n"},
      {"/", " 1.                 Normal\n"},       {"", " 1.                 Normal\n"},
      {"/%s", " 1. %s              Normal\n"}};
  for (const auto &row : kRows) {
    machine().names[{0, 1}] = row.name;
    EXPECT_EQ(listed(1, {end_mark()}), row.line);
  }
}

struct StatusRow {
  const char *says;
  uint32_t status, mainte_status;
  uint8_t flags;
  const char *word;
};

constexpr StatusRow kStatuses[] = {
    {"installed and well", 0x80000000, 0x80000000, 0x00, "Normal"},
    {"not installed", 0x00000000, 0x00000000, 0x00, "Not installed"},
    {"not installed, whatever the rest says", 0x7FFFFFFF, 0xFFFFFFFF, 0xFF, "Not installed"},
    {"faulted by the maintenance status", 0x80000000, 0x20000000, 0x00, "Faulted"},
    {"faulted by its flags", 0x80000000, 0x00000000, 0x20, "Faulted"},
    {"degraded by the maintenance status", 0x80000000, 0x10000000, 0x00, "Degraded"},
    {"degraded by its flags", 0x80000000, 0x00000000, 0x10, "Degraded"},
    {"faulted goes before degraded", 0x80000000, 0x10000000, 0x20, "Faulted"},
    {"faulted goes before degraded the other way", 0x80000000, 0x20000000, 0x10, "Faulted"},
    {"both in the maintenance status", 0x80000000, 0x30000000, 0x00, "Faulted"},
    {"the status word's own bits say nothing", 0xB0000000, 0x00000000, 0x00, "Normal"},
    {"all ones is installed", 0xFFFFFFFF, 0x80000000, 0x00, "Normal"},
    {"other flags say nothing", 0x80000000, 0x00000000, 0xCF, "Normal"},
    {"other bits say nothing", 0x80000000, 0xCFFFFFFF, 0x00, "Normal"},
};

TEST_F(ShowPsu, StatusIsAWordInTheList) {
  for (const auto &row : kStatuses) {
    psus_[0] = psu(0, row.status, row.mainte_status, row.flags);
    EXPECT_EQ(listed(1, {end_mark()}), std::string(" 1. PSU#0           ") + row.word + "\n") << row.says;
  }
}

TEST_F(ShowPsu, StatusIsTheSameWordInTheTable) {
  for (const auto &row : kStatuses) {
    psus_[0] = psu(0, row.status, row.mainte_status, row.flags);
    EXPECT_EQ(tabled({end_mark()}), std::string("PSU#0         ") + row.word + "\n") << row.says;
  }
}

TEST_F(ShowPsu, NameIsTheWholeLocationInBoth) {
  listed(1, {end_mark()});
  tabled({end_mark()});
  EXPECT_EQ(machine().calls_of({"name"}), (Lines{"name 0:1 form 0", "name 0:1 form 0"}));
}

// ---- the caller's lines

struct FrameRow {
  const char *says;
  std::vector<ListLine> lines;
  const char *page;
};

TEST_F(ShowPsu, HeadLinesComeFirstAndFootLinesLast) {
  const FrameRow rows[] = {
      {"two of each", {head("h1\n"), head("h2\n"), foot("f1\n"), foot("f2\n"), end_mark()}, "h1\nh2\n*f1\nf2\n"},
      {"a foot alone", {foot("f\n"), end_mark()}, "*f\n"},
      {"a head alone", {head("h\n"), end_mark()}, "h\n*"},
      {"neither", {end_mark(), head("h\n"), foot("f\n"), end_mark()}, "*"},
      {"a head behind the foot is not reached", {foot("f\n"), head("h\n"), foot("g\n"), end_mark()}, "*f\n"},
      {"any other position ends the lines", {head("h\n"), line(2, "x\n"), foot("f\n"), end_mark()}, "h\n*"},
      {"any other position ends the foot", {foot("f\n"), line(7, "x\n"), foot("g\n"), end_mark()}, "*f\n"},
  };
  for (const auto &row : rows) {
    std::string expected = row.page;
    expected.replace(expected.find('*'), 1, " 1. PSU#0           Normal\n");
    EXPECT_EQ(listed(1, row.lines), expected) << row.says;
    expected = row.page;
    expected.replace(expected.find('*'), 1, "PSU#0         Normal\n");
    EXPECT_EQ(tabled(row.lines), expected) << row.says;
  }
}

TEST_F(ShowPsu, LinesAreFormattedWithTheirTenValues) {
  EXPECT_EQ(listed(0, {head("%d%d%d%d%d%d%d%d%d %d\n", {1, 2, 3, 4, 5, 6, 7, 8, 9, 10}),
                       foot("%s%%\n", {reinterpret_cast<uintptr_t>("50%d")}), end_mark()}),
            "123456789 10\n50%d%\n");
}

TEST_F(ShowPsu, LinesAreCutAt127Characters) {
  const std::string kept(126, 'h');
  const std::string cut(127, 'h');
  const auto value = [](const std::string &text) { return reinterpret_cast<uintptr_t>(text.c_str()); };
  EXPECT_EQ(listed(0, {head("%s\n", {value(kept)}), foot("f\n"), end_mark()}), kept + "\nf\n");
  EXPECT_EQ(listed(0, {head("%s\n", {value(cut)}), foot("f\n"), end_mark()}), cut + "f\n");
  const std::string much(600, 'h');
  EXPECT_EQ(listed(0, {head("h\n"), foot("%s\n", {value(much)}), end_mark()}), "h\n" + cut);
}

TEST_F(ShowPsu, UnitLineIsCutAt127Characters) {
  machine().names[{0, 1}] = "/" + std::string(126, 'n');
  EXPECT_EQ(listed(2, {end_mark()}), " 1. " + std::string(123, 'n') + " 2. PSU#1           Normal\n");
  EXPECT_EQ(tabled({end_mark()}), std::string(126, 'n') + "N");
}

TEST_F(ShowPsu, NameWithoutAnEndIsCutAt127Characters) {
  machine().names[{0, 1}] = std::string(200, 'n');
  EXPECT_EQ(tabled({end_mark()}), std::string(127, 'n'));
  machine().names[{0, 1}] = "/" + std::string(200, 'n');
  EXPECT_EQ(tabled({end_mark()}), std::string(126, 'n') + "N");
}

// ---- the message catalogue

TEST_F(ShowPsu, UnitLinesAreLookedUpInTheCatalogue) {
  machine().catalogue["%2d. %-16s%s\n"] = "[%d] %s = %s\n";
  machine().catalogue["%-14s%s\n"] = "%s -> %s\n";
  machine().catalogue["Normal"] = "Gut";
  machine().catalogue["h\n"] = "Kopf\n";
  EXPECT_EQ(listed(2, {head("h\n"), end_mark()}), "h\n[1] PSU#0 = Normal\n[2] PSU#1 = Normal\n");
  EXPECT_EQ(tabled({foot("h\n"), end_mark()}), "PSU#0 -> Normal\nh\n");
  EXPECT_EQ(machine().looked_up, (Lines{"cli_cmn_msg messages %2d. %-16s%s\n", "cli_cmn_msg messages %2d. %-16s%s\n",
                                        "cli_cmn_msg messages %-14s%s\n"}));
}

// ---- the frame's steps and failures, alike in both

struct Frame {
  const char *name;
  std::function<int32_t(const PsuData *, const ListLine *)> show;
  uint32_t entry;
  bool exit_has_result;
};

void PrintTo(const Frame &frame, std::ostream *out) {
  *out << frame.name;
}

class ShowPsuFrame : public ShowPsu, public ::testing::WithParamInterface<Frame> {
 protected:
  int32_t show() { return GetParam().show(psus_, frame_.data()); }

  std::string event(const char *level, uint32_t offset, const std::string &values = "") {
    char text[32];
    std::snprintf(text, sizeof text, "%s %08X", level, GetParam().entry + offset);
    return text + values;
  }
  Lines story(const Lines &errors, int32_t result) {
    Lines lines = {event("100", 0)};
    lines.insert(lines.end(), errors.begin(), errors.end());
    lines.push_back(event("100", 1, GetParam().exit_has_result ? " " + std::to_string(result) : ""));
    return lines;
  }
  Lines own_trace() { return doubles::trace_of(GetParam().entry); }
};

INSTANTIATE_TEST_SUITE_P(
    Of, ShowPsuFrame,
    ::testing::Values(
        Frame{"list", [](auto psus, auto lines) { return lmainte_show_psu_list(0, 1, psus, lines); }, 0x110C0130, true},
        Frame{"table", [](auto psu, auto lines) { return lmainte_show_psu_status(0, psu, lines); }, 0x110C0230, false}),
    [](const auto &row) { return row.param.name; });

TEST_P(ShowPsuFrame, WritesClosesShowsAndRemovesTheFile) {
  EXPECT_EQ(show(), 0);
  EXPECT_EQ(machine().calls,
            (Lines{std::string("fopen ") + kPath + " w", "name 0:1 form 0", std::string("fclose ") + kPath, "fork",
                   "waitpid 500", std::string("remove ") + kPath}));
  EXPECT_EQ(own_trace(), story({}, 0));
  EXPECT_EQ(doubles::trace().front(), own_trace().front());
  EXPECT_EQ(doubles::trace().back(), own_trace().back());
}

TEST_P(ShowPsuFrame, PagerIsGivenTheListFile) {
  machine().children_are_real = true;
  EXPECT_EQ(show(), 0);
  EXPECT_STREQ(machine().executed().arguments, "/bin/busybox\nmore\n/tmp/mainte_fru_list.4711\n2>\n/dev/null\n");
}

TEST_P(ShowPsuFrame, MissingRecordsAreTheFirstError) {
  EXPECT_EQ(GetParam().show(nullptr, nullptr), 8);
  EXPECT_EQ(machine().calls, Lines{});
  EXPECT_EQ(doubles::trace(), story({event("805", 0x1001)}, 8));
}

TEST_P(ShowPsuFrame, MissingLinesAreTheSecondError) {
  EXPECT_EQ(GetParam().show(psus_, nullptr), 8);
  EXPECT_EQ(machine().calls, Lines{});
  EXPECT_EQ(doubles::trace(), story({event("805", 0x1002)}, 8));
}

TEST_P(ShowPsuFrame, FileThatCannotBeCreatedIsNeitherShownNorRemoved) {
  machine().fail("fopen", 1, EROFS);
  EXPECT_EQ(show(), 8);
  EXPECT_EQ(machine().calls.size(), 1u);
  EXPECT_EQ(doubles::trace(), story({event("800A", 0x1003, " 30")}, 8));
}

TEST_P(ShowPsuFrame, UnitWithoutANameIsNotShownAndTheFileIsRemoved) {
  machine().names.erase({0, 1});
  EXPECT_EQ(show(), 8);
  EXPECT_EQ(machine().calls, (Lines{std::string("fopen ") + kPath + " w", "name 0:1 form 0",
                                    std::string("fclose ") + kPath, std::string("remove ") + kPath}));
  EXPECT_EQ(doubles::trace(), story({event("800A", 0x1004, " 4")}, 8));
}

TEST_P(ShowPsuFrame, AnyResultButZeroIsNoName) {
  machine().fail("name", 1, 0, -1);
  EXPECT_EQ(show(), 8);
  EXPECT_EQ(doubles::trace(), story({event("800A", 0x1004, " -1")}, 8));
}

TEST_P(ShowPsuFrame, FileOfAUnitWithoutANameThatCannotBeRemovedIsRecordedToo) {
  machine().names.clear();
  machine().fail("remove", 1, EPERM);
  EXPECT_EQ(show(), 8);
  EXPECT_EQ(doubles::trace(), story({event("800A", 0x1004, " 4"), event("800A", 0x1006, " -1 1")}, 8));
  machine().disk.clear();
}

TEST_P(ShowPsuFrame, PagerThatCannotRunFailsAndTheFileIsRemoved) {
  machine().programs = {doubles::exits(127)};
  EXPECT_EQ(show(), 8);
  EXPECT_EQ(own_trace(), story({event("805", 0x1005, " 8")}, 8));
}

TEST_P(ShowPsuFrame, PagerThatCannotBeStartedFailsAndTheFileIsRemoved) {
  machine().fail("fork");
  EXPECT_EQ(show(), 8);
  EXPECT_EQ(own_trace(), story({event("805", 0x1005, " 8")}, 8));
}

TEST_P(ShowPsuFrame, OperatorWhoLeavesEarlyIsNoFailure) {
  machine().programs = {doubles::exits(1)};
  EXPECT_EQ(show(), 0);
  machine().programs = {doubles::dies_of(15)};
  EXPECT_EQ(show(), 0);
}

TEST_P(ShowPsuFrame, FileThatCannotBeRemovedFails) {
  machine().fail("remove", 1, EBUSY);
  EXPECT_EQ(show(), 8);
  EXPECT_EQ(own_trace(), story({event("800A", 0x1006, " -1 16")}, 8));
  machine().disk.clear();
}

TEST_P(ShowPsuFrame, FileThatFailsToCloseIsShown) {
  machine().fail("fclose");
  EXPECT_EQ(show(), 0);
}

TEST_F(ShowPsu, ListStopsAtTheFirstUnitWithoutAName) {
  machine().names.erase({1, 1});
  EXPECT_EQ(list(3, frame_), 8);
  EXPECT_EQ(machine().calls_of({"name"}), (Lines{"name 0:1 form 0", "name 1:1 form 0"}));
  EXPECT_EQ(machine().pages, Lines{});
}

}  // namespace
