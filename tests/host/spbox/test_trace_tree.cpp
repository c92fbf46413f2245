// spbox trace --calls of a run that is made up, so that its times stay.
#include "host/spbox/trace_tree.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <sstream>

#include "include/lmainte.h"

namespace {

using box::CallKind;

constexpr pid_t kCommand = 100, kChild = 101;
constexpr std::int64_t kMilli = 1'000'000, kBegin = 1'000'000'000'000 * kMilli;

struct MadeUp {
  std::vector<box::TraceEntry> records;
  std::vector<box::CallEntry> calls;

  void record(int milliseconds, std::uint32_t event, const std::vector<std::uint32_t> &values = {},
              pid_t pid = kCommand) {
    box::TraceEntry entry{};
    entry.number = records.size();
    entry.time_ns = kBegin + milliseconds * kMilli;
    entry.level = 256;
    entry.event = event;
    entry.words[0] = static_cast<std::uint32_t>(pid);
    entry.word_count = 2;
    for (const std::uint32_t value : values) entry.words.at(entry.word_count++) = value;
    records.push_back(entry);
  }
  box::CallEntry &call(int milliseconds, CallKind kind, const std::string &text, std::int32_t result = 0,
                       pid_t pid = kCommand) {
    box::CallEntry entry;
    entry.number = calls.size();
    entry.kind = kind;
    entry.pid = pid;
    entry.time_ns = kBegin + milliseconds * kMilli;
    entry.duration_ns = 20'000;
    entry.position = records.size();
    entry.result = result;
    entry.whole_text = text;
    entry.text_size = text.size();
    calls.push_back(entry);
    return calls.back();
  }
};

// A command reads a record that is not there, lists two units, asks, and switches a LED, whose program refuses.
MadeUp walk() {
  MadeUp made;
  made.call(0, CallKind::kBegin, "/srv/check \x1b[2J all").second = 7;
  made.record(1, 0x110C8080);
  made.call(2, CallKind::kRead, "gen_system_info", -4);
  made.record(3, 0x110CB082, {0xFFFFFFFC, 0});  // the two of which one holds
  made.record(3, 0x110CB083, {1408, 0});
  made.record(4, 0x110C8081);
  made.call(5, CallKind::kName, "/PSU#0");
  made.call(6, CallKind::kName, "/PSU#1");
  made.call(7, CallKind::kQuestion, "Which one?\n");
  made.call(1500, CallKind::kAnswer, "1").first = 1;
  made.record(1501, 0x110C0020);
  made.record(1502, 0x110C0024, {10, kChild});
  made.record(1503, 0x110C0023, {5, 4}, kChild);
  made.call(1510, CallKind::kProgram, "ctlled -c on -u /PSU#0", 0, kChild).first = kCommand;
  box::CallEntry &end = made.call(1510, CallKind::kProgramEnd, "ctlled", 206, kChild);
  end.duration_ns = 12 * kMilli;
  made.record(1530, 0x110C0027, {206});
  made.record(1531, 0x110C0021);
  made.call(1600, CallKind::kEnd, "/srv/check", 1);
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
