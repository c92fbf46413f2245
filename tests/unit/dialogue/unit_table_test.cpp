// The frame that all lists and status tables share: the caller's lines, the list file, the pager, and what fails.

#include <functional>

#include <gtest/gtest.h>

#include "tests/unit/dialogue/show_test.h"

namespace {

using doubles::end_mark;
using doubles::foot;
using doubles::head;
using doubles::line;
using doubles::Lines;
using doubles::machine;

const char *const kPath = "/tmp/mainte_fru_list.4711";

// One unit of each kind, under the only unit id that has a name, which is 0:0.
struct Units {
  SbData board = {};
  XsbData xsbs[4] = {};
  FantrayData tray = {};
  IoxListData iox = {};
  PsuData psu = {};
  BpUnitData ddc = {};

  Units() {
    board.cmu.status = board.iou.status = psu.status = tray.status = ddc.status = INT32_MIN;
    board.iou.reserved[4] = 0x80000000;
    for (auto &xsb : board.cmu.xsb) xsb = 0;
  }
};

// A list or a table that shows one unit.
struct Shown {
  const char *name;
  std::function<int32_t(const Units &, const ListLine *)> show;
  const char *unit_line;  // for a unit with the name "/U#0"
  uint32_t entry;
  bool exit_has_result;
  uint32_t open_error;  // the number of the event of a list file that cannot be created; the others follow
  int form = 0;         // of the name
};

void PrintTo(const Shown &shown, std::ostream *out) {
  *out << shown.name;
}

const Shown kShown[] = {
    {"cmu_iou_list",
     [](const Units &u, auto lines) { return lmainte_show_cmu_iou_list(0, 0, 1, &u.board, u.xsbs, lines); },
     " 1. U#0               0     0     0     0  Off   Normal\n", 0x110C8150, true, 5},
    {"fantray_list", [](const Units &u, auto lines) { return lmainte_show_fantray_list(0, 1, &u.tray, lines); },
     " 1. U#0             Normal\n", 0x110C0120, true, 3},
    {"iounit_list",
     [](const Units &u, auto lines) { return lmainte_show_iounit_list(0, 1, 0, &u.board, &u.iox, lines); },
     " 1. U#0             Normal\n", 0x110C0190, true, 4},
    {"ioupci_list", [](const Units &u, auto lines) { return lmainte_show_ioupci_list(0, 1, &u.board, lines); },
     " 1. U#0                  0         Off\n", 0x110C01A0, true, 3},
    {"ioxpci_list", [](const Units &u, auto lines) { return lmainte_show_ioxpci_list(0, 1, &u.iox.boat[0], lines); },
     " 1. U#0                  0         Off\n", 0x110C0170, true, 3},
    {"psu_list", [](const Units &u, auto lines) { return lmainte_show_psu_list(0, 1, &u.psu, lines); },
     " 1. U#0             Normal\n", 0x110C0130, true, 3},
    {"ddca_list", [](const Units &u, auto lines) { return lmainte_show_ddca_list(0, 1, &u.ddc, lines); },
     " 1. U#0             Normal\n", 0x110C8130, true, 3},
    {"fantray_status", [](const Units &u, auto lines) { return lmainte_show_fantray_status(0, &u.tray, lines); },
     "U#0           Normal\n", 0x110C0220, false, 3},
    {"psu_status", [](const Units &u, auto lines) { return lmainte_show_psu_status(0, &u.psu, lines); },
     "U#0           Normal\n", 0x110C0230, false, 3},
    {"ddca_status", [](const Units &u, auto lines) { return lmainte_show_ddca_status(0, &u.ddc, lines); },
     "U#0           Normal\n", 0x110C8140, false, 3},
    {"sb_status", [](const Units &u, auto lines) { return lmainte_show_sb_status(0, 1, &u.board, lines); },
     "U#0           Normal\n", 0x110C8160, false, 4, 1},
};

class UnitTable : public doubles::ShowTest, public ::testing::WithParamInterface<Shown> {
 protected:
  void SetUp() override {
    ShowTest::SetUp();
    machine().names[{0, 0}] = "/U#0";
  }

  int32_t show() { return GetParam().show(units_, lines_.data()); }
  std::string page(const std::vector<ListLine> &lines) {
    return page_of([&] { return GetParam().show(units_, lines.data()); });
  }

  // An event of the function: a point, or an error.
  std::string event(const char *level, uint32_t offset, const std::string &values = "") {
    char text[32];
    std::snprintf(text, sizeof text, "%s %08X", level, GetParam().entry + offset);
    return text + values;
  }
  // The error that is this far from the first one of the list file.
  std::string error(const char *level, uint32_t number, const std::string &values) {
    const uint32_t errors = (GetParam().entry & 0x8000) != 0 ? 0x3000 : 0x1000;
    return event(level, errors + GetParam().open_error + number, values);
  }
  Lines story(const Lines &errors, int32_t result) {
    Lines lines = {event("100", 0)};
    lines.insert(lines.end(), errors.begin(), errors.end());
    lines.push_back(event("100", 1, GetParam().exit_has_result ? " " + std::to_string(result) : ""));
    return lines;
  }
  Lines own_trace() { return doubles::trace_of(GetParam().entry); }
  std::string name_call() { return "name 0:0 form " + std::to_string(GetParam().form); }

  Units units_;
  const std::vector<ListLine> lines_ = {head("h\n"), foot("f\n"), end_mark()};
};

INSTANTIATE_TEST_SUITE_P(Of, UnitTable, ::testing::ValuesIn(kShown), [](const auto &row) { return row.param.name; });

// ---- the caller's lines

struct LinesRow {
  const char *says;
  std::vector<ListLine> lines;
  const char *page;
};

TEST_P(UnitTable, HeadLinesComeFirstAndFootLinesLast) {
  const LinesRow rows[] = {
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
    expected.replace(expected.find('*'), 1, GetParam().unit_line);
    EXPECT_EQ(page(row.lines), expected) << row.says;
  }
}

TEST_P(UnitTable, LinesAreFormattedWithTheirTenValues) {
  const auto text =
      page({head("%d%d%d%d%d%d%d%d%d %d\n", {1, 2, 3, 4, 5, 6, 7, 8, 9, 10}),
            foot("%s%% %d\n", {reinterpret_cast<uintptr_t>("50%d"), static_cast<uintptr_t>(-3)}), end_mark()});
  EXPECT_EQ(text, std::string("123456789 10\n") + GetParam().unit_line + "50%d% -3\n");
}

TEST_P(UnitTable, LinesAreCutAt127Characters) {
  const auto value = [](const std::string &text) { return reinterpret_cast<uintptr_t>(text.c_str()); };
  const std::string kept(126, 'h');
  const std::string cut(127, 'h');
  const std::string much(600, 'h');
  EXPECT_EQ(page({head("%s\n", {value(kept)}), end_mark()}), kept + "\n" + GetParam().unit_line);
  EXPECT_EQ(page({head("%s\n", {value(cut)}), end_mark()}), cut + GetParam().unit_line);
  EXPECT_EQ(page({foot("%s\n", {value(much)}), foot("f\n"), end_mark()}), GetParam().unit_line + cut + "f\n");
}

TEST_P(UnitTable, UnitLineIsCutAt127Characters) {
  machine().names[{0, 0}] = "/" + std::string(126, 'n');
  const std::string number = GetParam().unit_line[0] == ' ' ? " 1. " : "";
  const char *const status = number.empty() ? "N" : "";
  EXPECT_EQ(page({foot("f\n"), end_mark()}),
            number + std::string(126 - (number.empty() ? 0 : 3), 'n') + status + "f\n");
}

TEST_P(UnitTable, NameWithoutAnEndIsCutAt127Characters) {
  machine().names[{0, 0}] = std::string(200, 'n');
  const std::string number = GetParam().unit_line[0] == ' ' ? " 1. " : "";
  EXPECT_EQ(page({end_mark()}), number + std::string(127 - number.size(), 'n'));
  machine().names[{0, 0}] = "/" + std::string(199, 'n');
  EXPECT_EQ(page({end_mark()}),
            number.empty() ? std::string(126, 'n') + "N" : number + std::string(127 - number.size(), 'n'))
      << "the leading slash is no part of the line, but of the name";
}

// ---- the message catalogue

TEST_P(UnitTable, FormatOfTheUnitLineAloneIsLookedUp) {
  machine().catalogue = {{"Normal", "Gut"}, {"Off", "Aus"}, {"%s", "x"}, {"h\n", "Kopf\n"}, {"f\n", "Fuss\n"}};
  EXPECT_EQ(page(lines_), std::string("h\n") + GetParam().unit_line + "f\n");
  ASSERT_EQ(machine().looked_up.size(), 1u);
  const std::string format = machine().looked_up[0];
  EXPECT_EQ(format.rfind("cli_cmn_msg messages %", 0), 0u) << format;
  EXPECT_EQ(format.back(), '\n');
}

TEST_P(UnitTable, TranslatedFormatIsUsed) {
  page(lines_);
  const std::string format = machine().looked_up.at(0).substr(std::string("cli_cmn_msg messages ").size());
  machine().catalogue[format] = "<" + format.substr(0, format.size() - 1) + ">\n";
  const std::string unit_line = GetParam().unit_line;
  EXPECT_EQ(page(lines_), "h\n<" + unit_line.substr(0, unit_line.size() - 1) + ">\nf\n");
}

// ---- steps and failures

TEST_P(UnitTable, FileIsWrittenClosedShownAndRemoved) {
  EXPECT_EQ(show(), 0);
  EXPECT_EQ(machine().calls, (Lines{std::string("fopen ") + kPath + " w", name_call(), std::string("fclose ") + kPath,
                                    "sigprocmask block all asking", "fork", "sigprocmask set", "waitpid 500",
                                    std::string("remove ") + kPath}));
  EXPECT_EQ(own_trace(), story({}, 0));
  EXPECT_EQ(doubles::trace().front(), own_trace().front());
  EXPECT_EQ(doubles::trace().back(), own_trace().back());
}

TEST_P(UnitTable, FileIsNamedAfterTheProcessOfEachCall) {
  show();
  machine().start();
  machine().pid = 99;
  machine().names[{0, 0}] = "/U#0";
  EXPECT_EQ(show(), 0);
  EXPECT_EQ(machine().calls.front(), "fopen /tmp/mainte_fru_list.99 w");
  EXPECT_EQ(machine().calls.back(), "remove /tmp/mainte_fru_list.99");
}

TEST_P(UnitTable, PagerIsGivenTheListFile) {
  machine().children_are_real = true;
  EXPECT_EQ(show(), 0);
  EXPECT_STREQ(machine().executed().arguments, "/bin/busybox\nmore\n/tmp/mainte_fru_list.4711\n2>\n/dev/null\n");
}

TEST_P(UnitTable, FileThatCannotBeCreatedIsNeitherShownNorRemoved) {
  machine().fail("fopen", 1, EROFS);
  EXPECT_EQ(show(), 8);
  EXPECT_EQ(machine().calls.size(), 1u);
  EXPECT_EQ(doubles::trace(), story({error("800A", 0, " 30")}, 8));
}

TEST_P(UnitTable, UnitWithoutANameIsNotShownAndTheFileIsRemoved) {
  machine().names.clear();
  EXPECT_EQ(show(), 8);
  EXPECT_EQ(machine().calls, (Lines{std::string("fopen ") + kPath + " w", name_call(), std::string("fclose ") + kPath,
                                    std::string("remove ") + kPath}));
  EXPECT_EQ(doubles::trace(), story({error("800A", 1, " 4")}, 8));
}

TEST_P(UnitTable, AnyResultButZeroIsNoName) {
  machine().fail("name", 1, 0, -1);
  EXPECT_EQ(show(), 8);
  EXPECT_EQ(doubles::trace(), story({error("800A", 1, " -1")}, 8));
}

TEST_P(UnitTable, FileOfAUnitWithoutANameThatCannotBeRemovedIsRecordedToo) {
  machine().names.clear();
  machine().fail("remove", 1, EPERM);
  EXPECT_EQ(show(), 8);
  EXPECT_EQ(doubles::trace(), story({error("800A", 1, " 4"), error("800A", 3, " -1 1")}, 8));
  // The unit's line and the foot lines are not written.
  EXPECT_EQ(machine().disk[kPath], "h\n");
  machine().disk.clear();
}

TEST_P(UnitTable, PagerThatCannotRunFailsAndTheFileIsRemoved) {
  machine().programs = {doubles::exits(127)};
  EXPECT_EQ(show(), 8);
  EXPECT_EQ(own_trace(), story({error("805", 2, " 8")}, 8));
}

TEST_P(UnitTable, PagerThatCannotBeStartedFailsAndTheFileIsRemoved) {
  machine().fail("fork");
  EXPECT_EQ(show(), 8);
  EXPECT_EQ(own_trace(), story({error("805", 2, " 8")}, 8));
}

TEST_P(UnitTable, OperatorWhoLeavesEarlyIsNoFailure) {
  machine().programs = {doubles::exits(1)};
  EXPECT_EQ(show(), 0);
  machine().programs = {doubles::dies_of(15)};
  EXPECT_EQ(show(), 0);
}

TEST_P(UnitTable, FileThatCannotBeRemovedFails) {
  machine().fail("remove", 1, EBUSY);
  EXPECT_EQ(show(), 8);
  EXPECT_EQ(own_trace(), story({error("800A", 3, " -1 16")}, 8));
  machine().disk.clear();
}

TEST_P(UnitTable, FileThatFailsToCloseIsShown) {
  machine().fail("fclose");
  EXPECT_EQ(show(), 0);
}

// ---- arguments

struct NullRow {
  const char *says;
  std::function<int32_t(const Units &)> show;
  const char *error;
};

class UnitTableArguments : public doubles::LibraryTest {};

// Of several arguments the first one tells, and a count of 0 changes nothing.
TEST_F(UnitTableArguments, NullIsRefusedBeforeAFileIsMade) {
  const NullRow rows[] = {
      {"CMU list: boards", [](const Units &) { return lmainte_show_cmu_iou_list(0, 2, 0, nullptr, nullptr, nullptr); },
       "805 110CB152"},
      {"CMU list: extended boards",
       [](const Units &u) { return lmainte_show_cmu_iou_list(0, 2, 0, &u.board, nullptr, nullptr); }, "805 110CB153"},
      {"CMU list: lines", [](const Units &u) { return lmainte_show_cmu_iou_list(0, 2, 0, &u.board, u.xsbs, nullptr); },
       "805 110CB154"},
      {"fan tray list: trays", [](const Units &) { return lmainte_show_fantray_list(0, 0, nullptr, nullptr); },
       "805 110C1121"},
      {"fan tray list: lines", [](const Units &u) { return lmainte_show_fantray_list(0, 0, &u.tray, nullptr); },
       "805 110C1122"},
      {"I/O unit list: boards",
       [](const Units &) { return lmainte_show_iounit_list(0, 0, 0, nullptr, nullptr, nullptr); }, "805 110C1191"},
      {"I/O unit list: expansion units, though none are listed",
       [](const Units &u) { return lmainte_show_iounit_list(0, 1, 0, &u.board, nullptr, nullptr); }, "805 110C1192"},
      {"I/O unit list: lines",
       [](const Units &u) { return lmainte_show_iounit_list(0, 0, 0, &u.board, &u.iox, nullptr); }, "805 110C1193"},
      {"slots of an IOU: board", [](const Units &) { return lmainte_show_ioupci_list(0, 0, nullptr, nullptr); },
       "805 110C11A1"},
      {"slots of an IOU: lines", [](const Units &u) { return lmainte_show_ioupci_list(0, 0, &u.board, nullptr); },
       "805 110C11A2"},
      {"slots of an expansion unit: unit",
       [](const Units &) { return lmainte_show_ioxpci_list(0, 0, nullptr, nullptr); }, "805 110C1171"},
      {"slots of an expansion unit: lines",
       [](const Units &u) { return lmainte_show_ioxpci_list(0, 0, &u.iox.boat[0], nullptr); }, "805 110C1172"},
      {"PSU list: PSUs", [](const Units &) { return lmainte_show_psu_list(0, 0, nullptr, nullptr); }, "805 110C1131"},
      {"PSU list: lines", [](const Units &u) { return lmainte_show_psu_list(0, 0, &u.psu, nullptr); }, "805 110C1132"},
      {"DDC list: units", [](const Units &) { return lmainte_show_ddca_list(0, 0, nullptr, nullptr); }, "805 110CB131"},
      {"DDC list: lines", [](const Units &u) { return lmainte_show_ddca_list(0, 0, &u.ddc, nullptr); }, "805 110CB132"},
      {"fan tray: tray", [](const Units &) { return lmainte_show_fantray_status(0, nullptr, nullptr); },
       "805 110C1221"},
      {"fan tray: lines", [](const Units &u) { return lmainte_show_fantray_status(0, &u.tray, nullptr); },
       "805 110C1222"},
      {"PSU: PSU", [](const Units &) { return lmainte_show_psu_status(0, nullptr, nullptr); }, "805 110C1231"},
      {"PSU: lines", [](const Units &u) { return lmainte_show_psu_status(0, &u.psu, nullptr); }, "805 110C1232"},
      {"DDC unit: unit", [](const Units &) { return lmainte_show_ddca_status(0, nullptr, nullptr); }, "805 110CB141"},
      {"DDC unit: lines", [](const Units &u) { return lmainte_show_ddca_status(0, &u.ddc, nullptr); }, "805 110CB142"},
      {"system board: board", [](const Units &) { return lmainte_show_sb_status(0, 2, nullptr, nullptr); },
       "805 110CB162"},
      {"system board: lines", [](const Units &u) { return lmainte_show_sb_status(0, 2, &u.board, nullptr); },
       "805 110CB163"},
  };
  const Units units;
  for (const auto &row : rows) {
    machine().start();
    EXPECT_EQ(row.show(units), 8) << row.says;
    EXPECT_EQ(machine().calls, Lines{}) << row.says;
    ASSERT_EQ(doubles::trace().size(), 3u) << row.says;
    EXPECT_EQ(doubles::trace()[1], row.error) << row.says;
  }
}

}  // namespace
