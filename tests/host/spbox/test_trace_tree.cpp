// spbox trace --calls of a run that is made up, so that its times stay.
#include "host/spbox/trace_tree.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <sstream>

#include "include/lmainte.h"
#include "tests/host/trace_book/made_rings.h"

namespace {

using box::CallKind;

constexpr std::int64_t kMilli = 1'000'000, kBegin = 1'000'000'000'000 * kMilli;
constexpr pid_t kChild = MadeRings::kChild;

struct MadeUp : MadeRings {
  MadeUp &at(int milliseconds) {
    now = kBegin + milliseconds * kMilli - 1000;
    return *this;
  }
};

// A command reads a record that is not there, lists two units, asks, and switches a LED, whose program refuses.
MadeUp walk() {
  MadeUp made;
  made.at(0).call(CallKind::kBegin, "/srv/check \x1b[2J all").second = 7;
  made.at(1).record(0x110C8080);
  made.at(2).call(CallKind::kRead, "gen_system_info", 0, -4);
  made.at(3).record(0x110CB082, {0xFFFFFFFC, 0});  // the two of which one holds
  made.at(3).record(0x110CB083, {1408, 0});
  made.at(4).record(0x110C8081);
  made.at(5).call(CallKind::kName, "/PSU#0");
  made.at(6).call(CallKind::kName, "/PSU#1");
  made.at(7).call(CallKind::kQuestion, "Which one?\n");
  made.at(1500).call(CallKind::kAnswer, "1").first = 1;
  made.at(1501).record(0x110C0020);
  made.at(1502).record(0x110C0024, {10, kChild});
  made.at(1503).record(0x110C0023, {5, 4}, kChild);
  made.at(1510).call(CallKind::kProgram, "ctlled -c on -u /PSU#0", MadeRings::kCommand, 0, kChild);
  made.at(1510).call(CallKind::kProgramEnd, "ctlled", 0, 206, kChild);
  made.at(1530).record(0x110C0027, {206});
  made.at(1531).record(0x110C0021);
  made.at(1600).call(CallKind::kEnd, "/srv/check", 0, 1);
  for (box::CallEntry &entry : made.calls)
    entry.duration_ns = entry.kind == CallKind::kProgramEnd ? 12 * kMilli : 20'000;
  return made;
}

std::string tree(spbox::TraceOptions options, std::size_t columns = 0, bool has_colours = false) {
  setenv("TZ", "UTC", 1);  // NOLINT(concurrency-mt-unsafe): one thread
  tzset();
  const MadeUp made = walk();
  const trace_book::History history(made.records, made.calls, LMAINTE_MODEL_QE3);
  std::vector<const trace_book::Moment *> moments;
  for (const auto &moment : history.moments()) {
    if (!moment.is_void) moments.push_back(&moment);
  }
  options.calls = true;
  options.window = {columns, has_colours};
  testing::internal::CaptureStdout();
  print_call_tree(history, told(in_tree(moments, options), options.names()), options);
  std::fflush(stdout);
  return testing::internal::GetCapturedStdout();
}

TEST(CallTree, ShowsWhoCalledWhomAndHowLongItTook) {
  EXPECT_EQ(tree({}), R"(Run 7: /srv/check \x1b[2J all
  2001-09-09 01:46:40, process 100, ended after 1.60 s with exit status 1
  0.001000    3.0 ms  lmainte_scdb_get
  0.002000     20 us    ! scdb_get: record gen_system_info of general (0): LMAINTE_HOST_DB_ABSENT (-4)
  0.003000              ! lmainte_scdb_get: record gen_system_info of database general (0) is absent: LMAINTE_HOST_DB_ABSENT (-4)
  0.005000     40 us  api_conv_unit_name_get: 2 units: /PSU#0, /PSU#1
  0.007000            cli_ask_select: "Which one?"
  1.500000     20 us  cli_ask_select: the operator types "1": choice 1
  1.501000   30.0 ms  lmainte_exec
  1.502000              lmainte_exec: a child was started: time limit 10, child 101
  1.503000              lmainte_exec: the child runs the program: command 5 (ctlled), arguments 4
  1.510000   12.0 ms    ctlled: starts: ctlled -c on -u /PSU#0, process 101, exit status 206
  1.530000              lmainte_exec: the program ended: exit status 206
)");
}

TEST(CallTree, TellsEachNameWhereItIsWanted) {
  spbox::TraceOptions options;
  options.each_name = true;
  const std::string text = tree(options);
  EXPECT_NE(text.find("api_conv_unit_name_get: unit id 00000000 00000000: /PSU#1\n"), text.npos) << text;
}

TEST(CallTree, StaysWithinAWindow) {
  std::istringstream lines(tree({}, 60));
  for (std::string line; std::getline(lines, line);) EXPECT_LE(line.size(), 60u) << line;
  const std::string text = tree({}, 60);
  EXPECT_NE(text.find("    ! scdb_get: record gen_system_info\n"
                      "                            of general (0):\n"),
            text.npos)
      << text;
}

TEST(CallTree, SaysByAColourOnlyWhatItSaysByASign) {
  const std::string plain = tree({}, 200), colours = tree({}, 200, true);
  EXPECT_EQ(plain.find('\x1b'), plain.npos);
  EXPECT_NE(colours.find("\x1b[1;31m  0.002000     20 us    ! scdb_get"), colours.npos) << colours;
  std::string without = colours;
  for (std::size_t at = without.find('\x1b'); at != without.npos; at = without.find('\x1b', at)) {
    without.erase(at, without.find('m', at) + 1 - at);
  }
  EXPECT_EQ(without, plain);
}

}  // namespace
