#include <gtest/gtest.h>

#include "tests/unit/dialogue/boards_test.h"

namespace {

using doubles::machine;

constexpr uint32_t kCmus = 0;
constexpr uint32_t kIous = 1;
constexpr uint32_t kBoth = 2;

// The words that make a board's state and its mark.
struct StateRow {
  const char *name;
  uint32_t cmu_status = 0x80000000, cmu_mainte = 0, cmu_parts = 0;
  uint32_t iou_status = 0x80000000, iou_parts = 0, iou_mainte = 0;
};

class LmainteShowCmuIouList : public doubles::BoardsTest {
 protected:
  void SetUp() override {
    BoardsTest::SetUp();
    for (int32_t n = 0; n < 64; ++n) put_xsb(n, 0, 9, 0);
  }

  void put_xsb(int32_t n, uint8_t active, int32_t current, int32_t setup) {
    XsbData &xsb = xsbs_[static_cast<size_t>(n)];
    std::memset(&xsb, 0xB5, sizeof xsb);
    xsb.active = active;
    xsb.current_domain = current;
    xsb.setup_domain = setup;
  }

  SbData &add(const std::string &cmu, const std::string &iou, const std::array<int32_t, 4> &xsb = {0, 0, 0, 0}) {
    boards_.push_back(board(cmu, iou));
    std::copy(xsb.begin(), xsb.end(), boards_.back().cmu.xsb);
    for (auto &other : boards_.back().iou.xsb) other = 63;
    return boards_.back();
  }

  std::string listed(uint32_t kind, const std::vector<ListLine> &lines = {doubles::end_mark()}) {
    const SbData none = {};
    const auto count = static_cast<uint32_t>(boards_.size());
    const SbData *boards = boards_.empty() ? &none : boards_.data();
    auto page = page_of([&] { return lmainte_show_cmu_iou_list(-1, kind, count, boards, xsbs_, lines.data()); });
    boards_.clear();
    return page;
  }

  // Four boards of a high-end server.
  std::string boards(uint32_t kind) {
    put_xsb(0, 1, 0, 9);
    put_xsb(1, 1, 1, 9);
    put_xsb(2, 0, 5, -1);
    put_xsb(3, 0, 2, 23);
    put_xsb(4, 0, 9, 3);
    put_xsb(5, 0, 9, 24);
    put_xsb(6, 0, 9, -1);
    put_xsb(7, 0, 9, 0);
    put_xsb(12, 1, 12, 9);
    add("/CMU#0", "/IOU#0", {0, 1, 2, 3});
    SbData &second = add("/CMU#1", "/IOU#1", {4, 5, 6, 7});
    set_cmu(second, kInstalled, 0x10000000);
    set_iou(second, kInstalled, 0x20000000);
    set_cmu(add("/CMU#2", "/IOU#2", {8, 9, 10, 11}), 0, 0);
    SbData &fourth = add("/CMU#3", "/IOU#3", {12, 12, 12, 12});
    set_cmu(fourth, kInstalled, 0x20000000, 0x10000000);
    set_iou(fourth, 0, 0);
    return listed(kind, {doubles::head("System boards\n"), doubles::foot("Which one?\n"), doubles::end_mark()});
  }

  std::string domains() {
    const int32_t values[][3] = {{20, 0, 9},  {21, 23, 9}, {22, 24, 9},     {23, 0x7FFFFFFF, 9},
                                 {24, -1, 9}, {25, -2, 9}, {26, -32768, 9}, {27, 1, 9}};
    for (const auto &[n, current, setup] : values) put_xsb(n, 1, current, setup);
    for (int32_t n = 0; n < 4; ++n) put_xsb(28 + n, 0, 9, 4 + n);
    for (int32_t n = 0; n < 4; ++n) put_xsb(32 + n, 1, 8 + n, 9);
    for (int32_t n = 0; n < 4; ++n) put_xsb(36 + n, 2, 9, 4);
    add("/first, last", "/x", {20, 21, 22, 23});
    add("/negative ones", "/x", {24, 25, 26, 27});
    add("/set up", "/x", {28, 29, 30, 31});
    add("/running", "/x", {32, 33, 34, 35});
    add("/active is 2", "/x", {36, 37, 38, 39});
    set_cmu(add("/absent", "/x", {32, 33, 34, 35}), 0x7FFFFFFF, 0);
    return listed(kCmus);
  }

  // Four numbers in a row are looked at, from the board's first one on.
  std::string power() {
    for (int32_t n = 20; n < 60; ++n) put_xsb(n, 0, 9, 1);
    put_xsb(20, 1, 1, 9);
    put_xsb(27, 1, 1, 9);
    put_xsb(32, 1, 1, 9);
    put_xsb(39, 1, 1, 9);
    put_xsb(50, 1, 1, 9);
    add("/the first", "/x", {20, 21, 22, 23});
    add("/the fourth", "/x", {24, 25, 26, 27});
    add("/the fifth", "/x", {28, 29, 30, 31});
    add("/one, fourth", "/x", {36, 36, 36, 36});
    add("/elsewhere", "/x", {44, 50, 50, 50});
    return listed(kCmus);
  }

  std::string states(uint32_t kind, const std::vector<StateRow> &rows) {
    for (int32_t n = 0; n < 4; ++n) put_xsb(n, 0, 9, 0);
    for (const auto &row : rows) {
      const std::string name = row.name;
      const auto slash = name.rfind('/');
      SbData &one = slash == 0 ? add(name, name) : add(name.substr(0, slash), name.substr(slash));
      set_cmu(one, row.cmu_status, row.cmu_mainte, row.cmu_parts);
      set_iou(one, row.iou_status, row.iou_parts, row.iou_mainte);
    }
    return listed(kind);
  }

  std::string states_of_a_cmu() {
    return states(kCmus, {{"/all well", 0x80000000, 0x80000000},
                          {"/bit 29", 0x80000000, 0x20000000},
                          {"/bit 28", 0x80000000, 0x10000000},
                          {"/both bits", 0x80000000, 0x30000000},
                          {"/its own bits", 0xB0000000, 0xCFFFFFFF},
                          {"/all ones", 0xFFFFFFFF, 0xFFFFFFFF},
                          {"/made of ones", 0xCFFFFFFF, 0x30000000},
                          {"/ones, well", 0xFFFFFFFF, 0x00000000},
                          {"/all but one", 0xFFFFFFFE, 0x30000000},
                          {"/absent", 0x7FFFFFFF, 0x30000000},
                          {"/IOU faulted", 0x80000000, 0, 0, 0xB0000000, 0x20000000}});
  }
  std::string marks_of_a_cmu() {
    return states(kCmus, {{"/bit 29", 0x80000000, 0, 0x20000000},
                          {"/bit 28", 0x80000000, 0, 0x10000000},
                          {"/degraded", 0x80000000, 0x10000000, 0x90000000},
                          {"/faulted", 0x80000000, 0x20000000, 0x30000000},
                          {"/other bits", 0x80000000, 0, 0xCFFFFFFF},
                          {"/all ones", 0x80000000, 0, 0xFFFFFFFF},
                          {"/all but one", 0x80000000, 0, 0xFFFFFFFE},
                          {"/unknown", 0xFFFFFFFF, 0xFFFFFFFF, 0x20000000},
                          {"/absent", 0, 0, 0x20000000},
                          {"/IOU is marked", 0x80000000, 0, 0, 0x80000000, 0, 0x20000000}});
  }
  std::string states_of_an_iou() {
    return states(kIous, {{"/all well", 0x80000000, 0, 0, 0x80000000, 0x80000000},
                          {"/bit 29", 0x80000000, 0, 0, 0x80000000, 0x20000000},
                          {"/bit 28", 0x80000000, 0, 0, 0x80000000, 0x10000000},
                          {"/its own bits", 0x80000000, 0, 0, 0xB0000000, 0},
                          {"/all ones", 0x80000000, 0, 0, 0xFFFFFFFF, 0x30000000},
                          {"/absent", 0x80000000, 0, 0, 0, 0x20000000},
                          {"/CMU absent", 0, 0, 0, 0x80000000, 0},
                          {"/CMU faulted", 0x80000000, 0x20000000, 0, 0x80000000, 0}});
  }
  std::string marks_of_an_iou() {
    return states(kIous, {{"/bit 29", 0x80000000, 0, 0, 0x80000000, 0, 0x20000000},
                          {"/bit 28", 0x80000000, 0, 0, 0x80000000, 0, 0x10000000},
                          {"/faulted", 0x80000000, 0, 0, 0x80000000, 0x20000000, 0xA0000000},
                          {"/all ones", 0x80000000, 0, 0, 0x80000000, 0, 0xFFFFFFFF},
                          {"/absent", 0x80000000, 0, 0, 0, 0, 0x20000000},
                          {"/CMU is marked", 0x80000000, 0, 0x20000000, 0x80000000, 0, 0}});
  }
  std::string states_of_both() {
    return states(kBoth, {{"/a/well"},
                          {"/b/CMU 29", 0x80000000, 0x20000000},
                          {"/c/IOU 29", 0x80000000, 0, 0, 0x80000000, 0x20000000},
                          {"/d/28 and 29", 0x80000000, 0x10000000, 0, 0x80000000, 0x20000000},
                          {"/e/no IOU", 0x80000000, 0, 0, 0},
                          {"/f/no CMU", 0, 0x20000000, 0, 0x80000000},
                          {"/g/neither", 0, 0x20000000, 0, 0, 0x20000000},
                          {"/h/ones", 0xCFFF0000, 0x30000000, 0, 0x8000FFFF, 0},
                          {"/i/CMU mark", 0x80000000, 0, 0x20000000},
                          {"/j/IOU mark", 0x80000000, 0, 0, 0x80000000, 0, 0x10000000},
                          {"/k/mark ones", 0x80000000, 0, 0xFFFFFFFF, 0x80000000, 0, 0x20000000},
                          {"/l/marks ones", 0x80000000, 0, 0xFFFF0000, 0x80000000, 0, 0x0000FFFF}});
  }

  std::vector<SbData> boards_;
  XsbData xsbs_[64];
};

TEST_F(LmainteShowCmuIouList, ShowsEveryBoardUnderItsNumber) {
  const std::vector<ListLine> lines = {doubles::head("System boards\n"), doubles::foot("Which one?\n"),
                                       doubles::end_mark()};
  doubles::expect_golden("lmainte_show_cmu_iou_list", {{"CMUs", [&] { return boards(kCmus); }},
                                                       {"IOUs", [&] { return boards(kIous); }},
                                                       {"CMUs and IOUs together", [&] { return boards(kBoth); }},
                                                       {"no boards", [&] { return listed(kBoth, lines); }},
                                                       {"domains", [&] { return domains(); }},
                                                       {"power", [&] { return power(); }},
                                                       {"states of a CMU", [&] { return states_of_a_cmu(); }},
                                                       {"marks of a CMU", [&] { return marks_of_a_cmu(); }},
                                                       {"states of an IOU", [&] { return states_of_an_iou(); }},
                                                       {"marks of an IOU", [&] { return marks_of_an_iou(); }},
                                                       {"states of both together", [&] { return states_of_both(); }},
                                                       {"locations",
                                                        [&] {
                                                          add("/thirteen char", "/x");
                                                          add("/fourteen chars", "/x");
                                                          add("//CMU#0", "/x");
                                                          add("CMU#1", "/x");
                                                          return listed(kCmus);
                                                        }},
                                                       {"locations of both together", [&] {
                                                          add("/CMU#0", "/IOU#0");
                                                          add("CMU#1", "IOU#1");
                                                          add("/CMU#2", "//IOU#2");
                                                          add("/", "/");
                                                          return listed(kBoth);
                                                        }}});
}

TEST_F(LmainteShowCmuIouList, AsksForTheLocationsThatItShows) {
  struct NamesRow {
    uint32_t kind;
    doubles::Lines names;
  };
  const NamesRow rows[] = {
      {kCmus, {"name 1:1 form 0"}}, {kIous, {"name 2:1 form 0"}}, {kBoth, {"name 1:1 form 0", "name 2:1 form 0"}}};
  for (const auto &row : rows) {
    machine().calls.clear();
    machine().names = {{{1, 1}, "/CMU#0"}, {{2, 1}, "/IOU#0"}};
    SbData &one = add("/", "/");
    one.cmu.unit_id[0] = 1;
    one.iou.unit_id[0] = 2;
    one.cmu.unit_id[1] = one.iou.unit_id[1] = 1;
    listed(row.kind);
    EXPECT_EQ(machine().calls_of({"name"}), row.names) << row.kind;
  }
}

TEST_F(LmainteShowCmuIouList, LocationOfEitherIsNeededForBoth) {
  for (const uint32_t missing : {1U, 2U}) {
    machine().start();
    machine().names = {{{1, 1}, "/CMU#0"}, {{2, 1}, "/IOU#0"}};
    machine().names.erase({missing, 1});
    SbData one = board("/", "/");
    one.cmu.unit_id[0] = 1;
    one.iou.unit_id[0] = 2;
    one.cmu.unit_id[1] = one.iou.unit_id[1] = 1;
    EXPECT_EQ(lmainte_show_cmu_iou_list(-1, kBoth, 1, &one, xsbs_, no_lines()), 8);
    EXPECT_EQ(machine().calls_of({"name"}).size(), missing);
    EXPECT_EQ(machine().pages, doubles::Lines{});
  }
}

TEST_F(LmainteShowCmuIouList, JoinedLocationIsCutWithItsLine) {
  for (const size_t length : {1U, 30U, 126U}) {
    add("/" + std::string(126, 'c'), "/" + std::string(length, 'i'));
    EXPECT_EQ(listed(kBoth), " 1. " + std::string(123, 'c'));
    add("/" + std::string(100, 'c'), "/" + std::string(length, 'i'));
    EXPECT_EQ(listed(kBoth).substr(0, 106), " 1. " + std::string(100, 'c') + "/i");
  }
}

TEST_F(LmainteShowCmuIouList, UnknownKindIsRefusedBeforeAllElse) {
  for (const uint32_t kind : {3U, 0xFFFFFFFFU}) {
    machine().start();
    EXPECT_EQ(lmainte_show_cmu_iou_list(-1, kind, 1, nullptr, nullptr, nullptr), 8);
    EXPECT_EQ(machine().calls, doubles::Lines{});
    EXPECT_EQ(
        doubles::trace(),
        (doubles::Lines{"100 110C8150", "805 110CB151 " + std::to_string(static_cast<int>(kind)), "100 110C8151 8"}));
  }
}

TEST_F(LmainteShowCmuIouList, AbsentCmuNeedsNoExtendedBoard) {
  set_cmu(add("/CMU#0", "/IOU#0", {0x7FFFFFFF, -1, 1 << 30, -5}), 0, 0);
  EXPECT_EQ(listed(kCmus), " 1. CMU#0            --    --    --    --  ---   Not installed\n");
}

}  // namespace
