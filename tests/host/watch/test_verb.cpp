// spbox watch as people run it.
#include <gtest/gtest.h>

#include <csignal>
#include <fstream>
#include <memory>
#include <sstream>

#include "host/box/inventory.h"
#include "host/terminal/terminal.h"
#include "tests/eventually.h"
#include "tests/host/box/scratch.h"
#include "tests/run.h"

namespace {

using namespace std::chrono_literals;
using Words = std::vector<std::string>;

class WatchVerb : public testing::Test {
 protected:
  // spbox in a folder where the box is called "box", with this locale.
  Words command(const Words &words, const std::string &locale = "C.UTF-8") const {
    Words command{"/usr/bin/env", "-C", scratch_.path(), "LC_ALL=" + locale, SPBOX};
    command.insert(command.end(), words.begin(), words.end());
    return command;
  }
  Done spbox(const Words &words) const { return run_to_end(command(words)); }
  void make_box(const std::string &model) const {
    ASSERT_EQ(spbox({"create", "box", "--model", model, "--force"}).exit_status, 0);
  }

  Scratch scratch_;
};

std::string golden(const std::string &name) {
  std::ostringstream text;
  text << std::ifstream(std::string(GOLDEN) + "/" + name).rdbuf();
  return text.str();
}

// Without the times of the trace.
std::string timeless(std::string text) {
  constexpr std::string_view kTime = "00:00:00.000";
  for (std::size_t at = 0; at + kTime.size() <= text.size(); ++at) {
    bool is_time = true;
    for (std::size_t i = 0; i < kTime.size(); ++i) {
      is_time = is_time && (kTime[i] == '0' ? text[at + i] >= '0' && text[at + i] <= '9' : text[at + i] == kTime[i]);
    }
    if (is_time) text.replace(at, kTime.size(), kTime);
  }
  return text;
}

TEST_F(WatchVerb, PrintsAPictureOfEachModel) {
  for (const char *model : {"qa", "qb1", "qb2", "qe1", "qe2", "qe3"}) {
    make_box(model);
    const Done done = spbox({"watch", "box", "--once"});
    EXPECT_EQ(done.exit_status, 0);
    EXPECT_EQ(done.output, golden(std::string("once_") + model + ".txt")) << model;
  }
}

TEST_F(WatchVerb, PrintsWhatWasDoneToTheBox) {
  make_box("qe2");
  for (const Words &words :
       {Words{"fault", "box", "/PSU#3", "/CMU#2/MEM#03A"}, Words{"pull", "box", "/FAN_A#4"},
        Words{"degrade", "box", "/IOU#1"}, Words{"run", "box", "/mgb/bin/ctlled", "-u", "/PSU#3", "-c", "blink"},
        Words{"run", "box", "/mgb/bin/ctlled", "-u", "/PSU#4", "-c", "on"},
        Words{"run", "box", "/mgb/bin/setmainteflag", "-u", "/PSU#3", "-c", "start"},
        Words{"program", "box", "ctlled", "--exit", "206"}, Words{"daemon", "box", "late", "5"},
        Words{"break", "box", "/EMGBU_B#0", "--fru", "--short"},
        Words{"deviate", "box", "read", "current_psu_info", "--at", "2", "--missing"}}) {
    spbox(words);
  }
  const Done done = run_to_end(command({"watch", "box", "--once"}, "C"));
  EXPECT_EQ(done.exit_status, 0);
  EXPECT_EQ(timeless(done.output), golden("once_bent.txt"));
}

TEST_F(WatchVerb, SaysWhoIsAtWork) {
  make_box("qa");
  terminal::Terminal other;
  other.start(command({"run", "box", "--", "sh", "-c", "echo begun; read x"}));
  ASSERT_TRUE(other.wait_for("begun", std::chrono::seconds(10)));
  EXPECT_NE(spbox({"watch", "box", "--once"}).output.find("At work  sh -c echo begun; read x\n"), std::string::npos);
}

TEST_F(WatchVerb, SaysWhyThereIsNoPicture) {
  EXPECT_EQ(spbox({"watch", "box", "--once"}).output,
            "spbox: box is no box. `spbox create box --model MODEL` makes one.\n");
  make_box("qa");
  std::ofstream(scratch_ / "box/mgb/db/data.mdb", std::ios::trunc) << "nothing";
  const Done done = spbox({"watch", "box", "--once"});
  EXPECT_EQ(done.exit_status, 1);
  EXPECT_TRUE(done.output.starts_with("spbox: databases in box/mgb/db: cannot ")) << done.output;
}

// ---- on a terminal -------------------------------------------------------------------------------------------------

class WatchOnTerminal : public WatchVerb {
 protected:
  void watch(terminal::Size size = {}, const std::string &locale = "C.UTF-8",
             const std::string &type = "xterm-256color") {
    term = std::make_unique<terminal::Terminal>(size);
    before = term->mode();
    Words words = command({"watch", "box"}, locale);
    words.insert(words.begin() + 3, "TERM=" + type);
    written.clear();
    term->pass_on_to([this](std::string_view bytes) { written += bytes; });
    term->start(words);
  }
  bool comes(const std::string &text) { return term->wait_for(text, 10s); }
  std::string screen() {
    std::string text;
    for (const std::string &line : term->last_screen()) text += line + "\n";
    return text;
  }
  std::string state_of(const std::string &unit) const { return spbox({"show", "box", unit}).output; }
  // The picture is gone, and the terminal is as it was.
  void expect_end(const terminal::Ending &wanted) {
    const auto ending = term->wait_for_exit(10s);
    EXPECT_EQ(ending, wanted) << screen();
    EXPECT_EQ(term->mode(), before);
    EXPECT_TRUE(is_left()) << screen();
  }
  // The terminal shows its own screen again, sends no mouse, and has its cursor.
  bool is_left() const {
    const auto comes_last = [&](const char *wanted, const char *other) {
      const std::size_t at = written.rfind(wanted), before_it = written.rfind(other);
      return at != std::string::npos && before_it != std::string::npos && at > before_it;
    };
    return comes_last("\x1b[?1049l", "\x1b[?1049h") && comes_last("\x1b[?1006;1000l", "\x1b[?1006;1000h") &&
           comes_last("\x1b[?25h", "\x1b[?25l");
  }

  std::string written;
  std::unique_ptr<terminal::Terminal> term;
  terminal::Mode before{};
};

TEST_F(WatchOnTerminal, HasThePictureOfEachModelOnASmallTerminal) {
  for (const char *model : {"qa", "qb1", "qb2", "qe1", "qe2", "qe3"}) {
    make_box(model);
    watch();
    ASSERT_TRUE(comes("a all right")) << model << screen();
    EXPECT_EQ(screen(), golden(std::string("screen_") + model + ".txt")) << model;
    EXPECT_TRUE(term->type("q"));
    expect_end({false, 0});
  }
}

TEST_F(WatchOnTerminal, FollowsWhatHappens) {
  make_box("qa");
  watch();
  ASSERT_TRUE(comes("PSU 0·   1·"));
  spbox({"fault", "box", "/PSU#1"});
  EXPECT_TRUE(comes("PSU 0·   1F")) << screen();
  spbox({"run", "box", "/mgb/bin/ctlled", "-u", "/PSU#1", "-c", "blink"});
  EXPECT_TRUE(comes("1F ○")) << screen();
  EXPECT_TRUE(comes("1F ●")) << screen();
  spbox({"create", "box", "--model", "qb1", "--force"});
  EXPECT_TRUE(comes("─ qb1: ")) << screen();
  std::filesystem::remove_all(scratch_ / "box");
  EXPECT_TRUE(comes("box is no box.")) << screen();
}

// At its best: what else the machine does may make it later.
TEST_F(WatchOnTerminal, FollowsWithinATenthOfASecond) {
  make_box("qa");
  watch();
  ASSERT_TRUE(comes("PSU 0·   1·"));
  box::Inventory inventory{box::Place(scratch_ / "box")};
  auto best = std::chrono::steady_clock::duration::max();
  for (int i = 0; i < 20 && best > 100ms; ++i) {
    inventory.change(i % 2 == 0 ? box::Change::kFault : box::Change::kRepair, {"/PSU#1"});
    const auto changed = std::chrono::steady_clock::now();
    ASSERT_TRUE(comes(i % 2 == 0 ? "1F" : "1·")) << screen();
    best = std::min(best, std::chrono::steady_clock::now() - changed);
  }
  EXPECT_LE(best, 100ms);
}

TEST_F(WatchOnTerminal, HasHands) {
  make_box("qa");
  watch();
  ASSERT_TRUE(comes("a all right"));
  term->type("/PSU#1\nf");
  EXPECT_TRUE(comes("/PSU#1: fault, now Faulted.")) << screen();
  EXPECT_NE(state_of("/PSU#1").find("Faulted"), std::string::npos);
  term->type("p");
  EXPECT_TRUE(comes("/PSU#1: pull, now Not installed."));
  term->type("f");
  EXPECT_TRUE(comes("is not installed")) << screen();
  term->type("b\n");
  ASSERT_TRUE(comes("ctlmainte: Enter takes a way"));
  term->type("\x1bOB\n");
  EXPECT_TRUE(comes("Bent     Program ctlmainte exits with 1")) << screen();
  spbox({"break", "box", "/PSU#0", "--missing"});
  EXPECT_TRUE(comes("PSU 0?   1?")) << screen();
  term->type("ay");
  EXPECT_TRUE(comes("PSU 0·   1·")) << screen();
  EXPECT_TRUE(comes("Bent     nothing")) << screen();
}

TEST_F(WatchOnTerminal, TakesTheMouse) {
  make_box("qa");
  watch();
  ASSERT_TRUE(comes("a all right"));
  // A click into row 4, column 11, where power supply 1 stands.
  term->type("\x1b[<0;11;4M\x1b[<0;11;4m");
  EXPECT_TRUE(comes("─ /PSU#1")) << screen();
}

TEST_F(WatchOnTerminal, LeavesTheTerminalWholeAtEachEnd) {
  make_box("qa");
  for (const auto &[signal, keys] : {std::pair(SIGINT, "\003"), std::pair(SIGTERM, ""), std::pair(SIGHUP, "")}) {
    watch();
    ASSERT_TRUE(comes("a all right"));
    if (*keys != '\0') term->type(keys);
    if (*keys == '\0') kill(term->command(), signal);
    expect_end({true, signal});
  }
  watch();
  ASSERT_TRUE(comes("a all right"));
  term->hang_up();
  EXPECT_TRUE(term->wait_for_exit(10s));
}

TEST_F(WatchOnTerminal, StopsAtCtrlZAndGoesOn) {
  make_box("qa");
  watch();
  ASSERT_TRUE(comes("a all right"));
  term->type("\032");
  ASSERT_TRUE(eventually([&] {
    term->watch(10ms);
    return term->take_stop();
  }));
  EXPECT_EQ(term->mode(), before);
  EXPECT_TRUE(is_left());
  spbox({"fault", "box", "/PSU#1"});
  term->go_on();
  EXPECT_TRUE(comes("1F")) << screen();
  EXPECT_FALSE(is_left());
  term->type("q");
  expect_end({false, 0});
}

TEST_F(WatchOnTerminal, FollowsTheSizeOfTheWindow) {
  make_box("qa");
  watch();
  ASSERT_TRUE(comes("a all right"));
  term->resize({50, 160});
  EXPECT_TRUE(comes("LED blinks")) << "the legend, which has room now: " << screen();
  term->resize({10, 40});
  EXPECT_TRUE(comes("There are 10 rows and 40 columns")) << screen();
  term->resize({24, 80});
  EXPECT_TRUE(comes("a all right")) << screen();
  term->type("/");  // whatever q would be in the picture, it ends what has no room for one
  EXPECT_TRUE(comes("Find a unit")) << screen();
  term->resize({10, 40});
  EXPECT_TRUE(comes("q: quit")) << screen();
  term->type("fq");
  expect_end({false, 0});
}

struct NoPicture {
  const char *says, *type;
  terminal::Size size;
  const char *told;
};

TEST_F(WatchOnTerminal, SaysWhyItCannotShowAPicture) {
  make_box("qa");
  const NoPicture rows[] = {
      {"a terminal that is too small", "xterm", {23, 80}, "the terminal has 23 rows and 80 columns"},
      {"one of an unknown type", "no-such-type", {}, "the type of terminal `no-such-type` is unknown. --once prints"},
      {"one without a type", "", {}, "the type of terminal that is not named in TERM is unknown."},
      {"one that only prints", "dumb", {}, "a terminal of the type `dumb` cannot show a picture."},
  };
  for (const NoPicture &row : rows) {
    watch(row.size, "C.UTF-8", row.type);
    const auto ending = term->wait_for_exit(10s);
    EXPECT_EQ(ending, (terminal::Ending{false, 1})) << row.says;
    EXPECT_TRUE(term->shows(row.told)) << row.says << "\n" << screen();
    EXPECT_EQ(term->mode(), before) << row.says;
  }
  const Done none = spbox({"watch", "box"});
  EXPECT_EQ(none.exit_status, 1);
  EXPECT_EQ(none.output, "spbox: there is no terminal to show a picture on. --once prints one.\n");
}

TEST_F(WatchOnTerminal, HasAsciiAloneWhereTheLocaleIsNotUtf8) {
  make_box("qa");
  watch({}, "C", "vt100");
  ASSERT_TRUE(comes("a all right"));
  EXPECT_TRUE(term->shows("|PSU 0.   1.")) << screen();
}

}  // namespace
