
#include <algorithm>
#include <csignal>
#include <fstream>
#include <sstream>

#include "host/box/call_ring.h"
#include "host/box/event_log.h"
#include "host/box/trace_ring.h"
#include "host/terminal/background_program.h"
#include "host/terminal/terminal.h"
#include "tests/eventually.h"
#include "tests/host/spbox/read_json.h"
#include "tests/host/spbox/spbox_test.h"

namespace {

class Records : public SpboxTest {
 protected:
  void SetUp() override { make_box("qe1"); }

  void trace(std::uint32_t level, std::uint32_t event, const std::vector<std::uint32_t> &values) {
    std::vector<std::uint32_t> words{4711, 57};
    words.insert(words.end(), values.begin(), values.end());
    box::TraceRing ring;
    ASSERT_TRUE(ring.map(place().trace().c_str()));
    ASSERT_TRUE(ring.append(14, level, 15, event, words.data(), static_cast<std::uint32_t>(words.size())));
  }

  void log(std::uint8_t code) {
    box::LogEntry entry{.time_ns = 0, .pid = 4711, .head = 0x00030000, .event = {}};
    entry.event[8] = 215;
    entry.event[9] = 2;
    entry.event[11] = code;
    entry.event[19] = 0x59;
    entry.event[20] = 0x01;
    entry.event[21] = 0x29;
    ASSERT_TRUE(box::EventLog::append(place().events(), entry));
  }
};

TEST_F(Records, AreNoneInANewBox) {
  EXPECT_EQ(done({"trace", "box"}), "The trace is empty: the library has recorded nothing in this box yet.\n");
  EXPECT_EQ(done({"trace", "box", "--errors"}), "The trace holds no error.\n");
  EXPECT_EQ(done({"log", "box"}), "The log is empty.\n");
  EXPECT_EQ(ReadJson(done({"trace", "box", "--json"}))["records"].size(), 0u);
  EXPECT_EQ(ReadJson(done({"log", "box", "--json"}))["entries"].size(), 0u);
}

TEST_F(Records, OfTheTraceAreInWords) {
  trace(256, 0x110C0020, {});
  trace(32769, 0x110C0024, {10, 4712});
  trace(32778, 0x110C1025, {0xFFFFFFFF, 10});
  const std::string text = done({"trace", "box"});
  EXPECT_NE(text.find("4711  progress      lmainte_exec  entry\n"), text.npos) << text;
  EXPECT_NE(text.find("4711  process       lmainte_exec  a child was started: time limit 10, child 4712\n"), text.npos);
  EXPECT_NE(
      text.find("4711  system error  lmainte_exec  ! the wait for the child failed: result -1, errno 10 (No child "
                "processes)\n"),
      text.npos);
}

TEST_F(Records, OfTheTraceAreCutToTheLastOrToErrors) {
  trace(256, 0x110C0020, {});
  trace(2053, 0x110C0022, {5, 4});
  trace(32778, 0x110C1025, {0xFFFFFFFF, 10});
  trace(256, 0x110C0021, {});
  EXPECT_EQ(ReadJson(done({"trace", "box", "--json"}))["records"].size(), 4u);
  const ReadJson last = ReadJson(done({"trace", "box", "--json", "--last", "2"}))["records"];
  ASSERT_EQ(last.size(), 2u);
  EXPECT_EQ(last[0]["number"], 2);
  const ReadJson errors = ReadJson(done({"trace", "box", "--json", "--errors"}))["records"];
  ASSERT_EQ(errors.size(), 1u) << "what the runner records at the level of errors is none";
  EXPECT_EQ(errors[0]["event"], "the wait for the child failed");
  EXPECT_EQ(errors[0]["code"], "0x110C1025");
  EXPECT_EQ(errors[0]["pid"], 4711);
  EXPECT_EQ(errors[0]["line"], 57);
  EXPECT_EQ(errors[0]["function"], "lmainte_exec");
  EXPECT_EQ(errors[0]["level"], "system error");
  EXPECT_EQ(errors[0]["known"], true);
  EXPECT_EQ(errors[0]["values"][0], ReadJson(R"({"meaning": "result", "number": -1, "text": "-1"})"));
}

TEST_F(Records, OfTheTraceStandBesideThePlatformsAndAreNarrowed) {
  box::CallRing calls;
  ASSERT_TRUE(calls.map(place().calls().c_str()));
  const auto keep = [&](box::CallKind kind, const std::string &text, std::uint32_t second, std::int32_t result) {
    box::Call call;
    call.kind = kind;
    call.pid = 4711;
    call.time_ns = box::call_time();
    call.position = box::TraceRing::read(place().trace()).size();
    call.second = second;
    call.result = result;
    call.text = text;
    ASSERT_TRUE(calls.append(call));
  };
  keep(box::CallKind::kBegin, "/srv/check \x1b[2J", 1, 0);
  trace(256, 0x110C0020, {});
  keep(box::CallKind::kRead, "gen_system_info", 0, -4);
  trace(256, 0x110C0021, {});
  keep(box::CallKind::kEnd, "/srv/check", 0, 3);
  const std::string tree = done({"trace", "box", "--run", "last", "--calls"});
  EXPECT_TRUE(tree.starts_with("Run 1: /srv/check \\x1b[2J\n")) << tree;
  EXPECT_NE(tree.find(" with exit status 3\n"), tree.npos) << tree;
  EXPECT_NE(tree.find("  lmainte_exec\n"), tree.npos) << tree;
  EXPECT_NE(tree.find("    ! scdb_get: record gen_system_info of general (0): LMAINTE_HOST_DB_ABSENT (-4)\n"),
            tree.npos)
      << tree;
  const std::vector<std::pair<std::vector<std::string>, int>> rows{
      {{}, 6},
      {{"--run", "1"}, 6},
      {{"--run", "check"}, 6},
      {{"--pid", "4711"}, 6},
      {{"--since", "1h"}, 6},
      {{"--function", "lmainte_exec"}, 3},
      {{"--function", "scdb_get"}, 2},
      {{"--errors"}, 2},
      {{"--pid", "4712"}, 1},
  };
  for (const auto &[options, lines] : rows) {
    std::vector<std::string> words{"trace", "box"};
    words.insert(words.end(), options.begin(), options.end());
    const std::string text = done(words);
    EXPECT_EQ(std::ranges::count(text, '\n'), lines) << text;
  }
  EXPECT_EQ(ReadJson(done({"trace", "box", "--json"}))["records"].size(), 2u) << "the library's alone, as ever";
  EXPECT_EQ(refused({"trace", "box", "--run", "7"}),
            "spbox: the box remembers no run `7`. The last ones are 1 (check).\n");
  std::filesystem::resize_file(place().calls(), 100);
  const std::string unknown = spbox({"trace", "box", "--run", "last"}).output;
  EXPECT_TRUE(unknown.ends_with("spbox: the box remembers no run `last`. It remembers none.\n")) << unknown;
  const std::string damaged = spbox({"trace", "box"}).output;
  EXPECT_NE(damaged.find("spbox: calls box/mgb/log/calls: cannot read it: it is damaged"), damaged.npos) << damaged;
  EXPECT_NE(damaged.find("lmainte_exec  exit\n"), damaged.npos) << damaged;
  const Done picture = spbox({"watch", "box", "--once"});
  EXPECT_EQ(picture.exit_status, 1);
  EXPECT_NE(picture.output.find(" ! calls box/mgb/log/calls: cannot read it"), std::string::npos) << picture.output;
  EXPECT_NE(picture.output.find("\nspbox: calls box/mgb/log/calls: cannot read it"), std::string::npos)
      << picture.output;
  std::filesystem::remove(place().calls());
  EXPECT_EQ(std::ranges::count(done({"trace", "box"}), '\n'), 3) << "a box of an older spbox has none";
}

TEST_F(Records, OfTheTraceAreFollowedOverANewRingToTheEndOfTheirReader) {
  trace(256, 0x110C0020, {});
  terminal::BackgroundProgram follower({SPBOX, "trace", place().root(), "-f"});
  const auto says = [&](const std::string &text) {
    return eventually([&] { return follower.output().find(text) != std::string::npos; });
  };
  EXPECT_TRUE(says("lmainte_exec                    entry\n")) << follower.output();
  trace(256, 0x110C0021, {});
  EXPECT_TRUE(says("lmainte_exec                    exit\n")) << follower.output();
  box::TraceRing::create(place().trace());
  EXPECT_TRUE(says("-- The trace was made anew. --\n")) << follower.output();
  trace(256, 0x110C02E0, {});
  EXPECT_TRUE(says("lmainte_show_file               entry\n")) << follower.output();
  ::kill(follower.pid(), SIGINT);
  EXPECT_EQ(follower.wait(), 128 + SIGINT);
  EXPECT_EQ(std::ranges::count(follower.output(), '\n'), 5) << follower.output();
  terminal::BackgroundProgram read_once({"sh", "-c", SPBOX " trace " + place().root().string() + " -f | head -n 1"});
  EXPECT_EQ(read_once.wait(std::chrono::seconds(20)), 0) << "it ends with its reader";
}

// What a terminal gets of a verb, its colours as well.
class OnTerminal {
 public:
  OnTerminal(const Words &words, const std::string &setting) {
    term_.pass_on_to([this](std::string_view bytes) { written_ += bytes; });
    Words command{"/usr/bin/env", "TERM=xterm-256color", setting, SPBOX};
    command.insert(command.end(), words.begin(), words.end());
    term_.start(command);
  }
  terminal::Terminal &term() { return term_; }
  bool comes(const std::string &text) { return term_.wait_for(text, std::chrono::seconds(20)); }
  const std::string &written() const { return written_; }

 private:
  terminal::Terminal term_;
  std::string written_;
};

TEST_F(Records, OfTheTraceAreFollowedOnATerminalUntilCtrlC) {
  trace(256, 0x110C0020, {});
  for (const auto &[setting, has_colours] : {std::pair("NO_COLOR=", true), std::pair("NO_COLOR=1", false)}) {
    OnTerminal follower({"trace", place().root(), "-f", "--last", "1"}, setting);
    EXPECT_TRUE(follower.comes("4711     ")) << follower.written();
    const terminal::Mode before = follower.term().mode();
    trace(32778, 0x110C1025, {0xFFFFFFFF, 10});
    EXPECT_TRUE(follower.comes("4711     ! lmainte_exec: the wait for the child failed: result -1,"))
        << follower.written();
    EXPECT_EQ(follower.written().find("\x1b[1;31m") != std::string::npos, has_colours) << follower.written();
    follower.term().type("\003");
    EXPECT_EQ(follower.term().wait_for_exit(std::chrono::seconds(20)), (terminal::Ending{true, SIGINT}));
    EXPECT_EQ(follower.term().mode(), before);
  }
}

TEST_F(Records, OfTheLogFitAWindow) {
  box::LogEntry entry{.time_ns = 0, .pid = 4711, .head = 0x00030000, .event = {}};
  entry.event[8] = 215;
  entry.event[9] = 3;
  entry.event[11] = 6;
  entry.event[19] = 0x59;
  entry.event[20] = 0x01;
  entry.event[21] = 0x29;
  entry.event[29] = 0x11;
  ASSERT_TRUE(box::EventLog::append(place().events(), entry));
  OnTerminal shown({"log", place().root()}, "NO_COLOR=1");
  EXPECT_TRUE(shown.comes("4711  unit left in operation, not checked to the end"));
  EXPECT_TRUE(shown.comes("                           power supply  /PSU#41")) << shown.written();
  EXPECT_EQ(shown.term().wait_for_exit(std::chrono::seconds(20)), (terminal::Ending{false, 0}));
}

TEST_F(Records, OfTheTraceRefuseOptionsThatMakeNoSense) {
  const std::string more = " `spbox help trace` says more.\n";
  const std::vector<std::pair<std::vector<std::string>, std::string>> rows{
      {{"--since", "25:00"}, "--since takes a time such as 14:05, 14:05:30, 30s, 5m or 2h, not `25:00`."},
      {{"--since", "5"}, "--since takes a time such as 14:05, 14:05:30, 30s, 5m or 2h, not `5`."},
      {{"--function", "nothing"},
       "neither the library nor the platform has a function `nothing`, and there is no such control program. "
       "docs/trace-events.md lists the library's."},
      {{"--calls", "-f"}, "--calls and -f cannot be given together."},
      {{"-f", "--json"}, "-f and --json cannot be given together."},
  };
  for (const auto &[options, says] : rows) {
    std::vector<std::string> words{"trace", "box"};
    words.insert(words.end(), options.begin(), options.end());
    const Done result = spbox(words);
    EXPECT_EQ(result.exit_status, 2);
    EXPECT_TRUE(result.output.starts_with("spbox: " + std::string(says) + more)) << result.output;
  }
}

TEST_F(Records, OfTheLogAreInWords) {
  log(10);
  log(99);
  const std::string text = done({"log", "box"});
  EXPECT_NE(text.find("4711  unit replaced  power supply  /PSU#41\n"), text.npos) << text;
  EXPECT_NE(text.find("4711  event 99       power supply  /PSU#41\n"), text.npos) << text;
  const ReadJson entries = ReadJson(done({"log", "box", "--json", "--last", "1"}))["entries"];
  ASSERT_EQ(entries.size(), 1u);
  EXPECT_EQ(entries[0]["code"], 99);
  EXPECT_EQ(entries[0]["head"], "0x00030000");
  EXPECT_EQ(entries[0]["unit"], "/PSU#41");
}

TEST_F(Records, OfADamagedTraceAreRefused) {
  for (const std::uintmax_t size : {100, 0}) {
    std::filesystem::resize_file(place().trace(), size);
    EXPECT_EQ(
        refused({"trace", "box"}),
        "spbox: trace box/mgb/log/trace: cannot read it: it is damaged: it was cut short or emptied. Make the box "
        "anew, or load a dump of it.\n");
  }
}

TEST_F(Records, OfADamagedLogAreShownAndTheDamageIsTold) {
  log(1);
  log(2);
  std::ostringstream text;
  text << std::ifstream(place().events(), std::ios::binary).rdbuf();
  std::string bytes = text.str();
  write("box/mgb/log/events", "x" + bytes);
  Done log = spbox({"log", "box"});
  EXPECT_EQ(log.exit_status, 0);
  EXPECT_EQ(std::ranges::count(log.output, '\n'), 4)
      << "a head, two entries and a line on standard error: " << log.output;
  EXPECT_NE(log.output.find("spbox: the log is damaged in 1 place: 1 byte belongs to no whole entry.\n"), bytes.npos)
      << log.output;
  bytes.insert(72, "xy");
  write("box/mgb/log/events", "x" + bytes);
  EXPECT_NE(
      spbox({"log", "box"}).output.find("spbox: the log is damaged in 2 places: 3 bytes belong to no whole entry.\n"),
      bytes.npos);
  write("box/mgb/log/events", std::string(100, 'x'));
  EXPECT_EQ(spbox({"log", "box"}).output,
            "The log holds no whole entry.\n"
            "spbox: the log is damaged in 1 place: 100 bytes belong to no whole entry.\n");
}

}  // namespace
