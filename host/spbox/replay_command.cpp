#include "host/spbox/replay_command.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <optional>

#include "host/base/read_all.h"
#include "host/base/shown.h"
#include "host/box/box_error.h"
#include "host/box/contents.h"
#include "host/include/lmainte_host.h"
#include "host/play/interrupts.h"
#include "host/play/own_folder.h"
#include "host/replay/make_score.h"
#include "host/replay/verdict.h"
#include "host/spbox/answer.h"
#include "host/spbox/found_program.h"
#include "host/spbox/machine.h"
#include "host/spbox/standard_output.h"
#include "host/spbox/text.h"
#include "host/spbox/trace_lines.h"
#include "host/spbox/whole_file.h"
#include "host/terminal/terminal.h"
#include "host/trace_book/call_words.h"

namespace spbox {
namespace {

namespace fs = std::filesystem;

// ---- What is to be compared with what

std::string listed(const std::vector<replay::Run> &runs) {
  std::string text;
  constexpr std::size_t kMost = 8;
  for (std::size_t i = runs.size() > kMost ? runs.size() - kMost : 0; i < runs.size(); ++i) {
    const std::string name = trace_book::name_of_program(runs[i].words);
    text += (text.empty() ? "" : ", ") + std::to_string(i + 1) + " (" + name + ")";
  }
  return text;
}

// Throws BoxError.
const replay::Run &chosen_run(const std::vector<replay::Run> &runs, const Replayed &replayed) {
  const std::string &wanted = replayed.run, file = replayed.file.string();
  if (runs.empty()) throw box::BoxError(file + " has no beginning of a command: none can run against it.");
  if (wanted.empty() && runs.size() == 1) return runs.front();
  if (wanted.empty()) {
    throw box::BoxError(file + " has " + std::to_string(runs.size()) + " runs of commands: " + listed(runs) +
                        ". Give one, as in --run last.");
  }
  for (std::size_t at = runs.size(); at > 0; --at) {
    if (wanted == "last" || wanted == std::to_string(at) || wanted == trace_book::name_of_program(runs[at - 1].words)) {
      return runs[at - 1];
    }
  }
  throw box::BoxError(file + " has no run `" + wanted + "`. It has " + listed(runs) + ".");
}

// It is answered by a library of the workstation. Throws BoxError.
void check_is_of_workstation(const std::string &name) {
  if (!is_of_target(find_program(name))) return;
  throw box::BoxError(name + " is a program of the service processor. A command that runs against a recording is the " +
                      "workstation's, whatever machine was recorded: build it for that.");
}

// ---- The command, in a box of the recorded model, on a terminal of its own, at full speed

constexpr const char *kOutput = "output";

// Where the recorded command had no terminal, this one has none there.
std::string script_of(const replay::Run &run) {
  return std::string("exec \"$@\"") + (run.is_fed ? " </dev/null" : "") + (run.is_read ? " >\"$0\"" : "");
}

std::vector<std::string> command_line(const play::OwnFolder &folder, const fs::path &score, const replay::Run &run,
                                      const std::vector<std::string> &command) {
  std::vector<std::string> words{"/bin/sh", "-c", script_of(run), folder.path() / kOutput};
  words.push_back(fs::read_symlink("/proc/self/exe"));
  words.insert(words.end(), {"run", folder.box(), "--speed", "full", "--score", score, "--"});
  words.insert(words.end(), command.begin(), command.end());
  return words;
}

std::uint32_t calls_made(const fs::path &score) {
  std::string head(sizeof(std::uint32_t) * 2, '\0');
  std::ifstream(score, std::ios::binary).read(head.data(), static_cast<std::streamsize>(head.size()));
  return replay::calls_made(head);
}

// Waits until the command ends. One that makes no call for so long is ended. Throws Interrupted.
replay::Ending ending_of(terminal::Terminal &terminal, const fs::path &score, std::int64_t limit) {
  using Clock = std::chrono::steady_clock;
  constexpr std::chrono::milliseconds kLook{100};
  const std::chrono::seconds patience(limit);
  std::uint32_t before = 0;
  for (Clock::time_point end = Clock::now() + patience; Clock::now() < end;) {
    if (const auto ending = terminal.wait_for_exit(kLook)) {
      return {.exit_status = ending->by_signal ? 128 + ending->number : ending->number};
    }
    const std::uint32_t now = calls_made(score);
    if (now != before) end = Clock::now() + patience;
    before = now;
  }
  constexpr std::chrono::seconds kToClearUp{2};
  terminal.end(kToClearUp);
  return {.silent_seconds = limit};
}

// ---- What became of it

// What stands at the end of a file.
std::vector<std::string> end_of(const fs::path &file) {
  constexpr std::streamoff kMost = 8192;
  std::ifstream in(file, std::ios::binary | std::ios::ate);
  in.seekg(std::max<std::streamoff>(in.tellg() - std::streampos(kMost), 0));
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);) lines.push_back(base::shown(line));
  return lines;
}

// What the command wrote last, as far as a person reads it: into a file, where its output is no terminal, and there.
std::vector<std::string> last_lines(const fs::path &output, terminal::Terminal &terminal) {
  std::vector<std::string> lines = end_of(output);
  const std::vector<std::string> shown = terminal.everything_shown();
  lines.insert(lines.end(), shown.begin(), shown.end());
  while (!lines.empty() && lines.back().empty()) lines.pop_back();
  constexpr std::size_t kMost = 12;
  keep_last(lines, kMost);
  return lines;
}

Json::Object verdict_json(const replay::Verdict &verdict, const std::vector<std::string> &lines) {
  return {{"differs", verdict.differs},
          {"calls", verdict.calls},
          {"of", verdict.of},
          {"sentence", verdict.sentence},
          {"recorded", verdict.recorded},
          {"command", verdict.of_command},
          {"wrote_last", Json::List(lines.begin(), lines.end())}};
}

void print_verdict(const replay::Verdict &verdict, const std::vector<std::string> &lines) {
  print_line(verdict.sentence);
  if (!verdict.recorded.empty()) print_line("  recorded     " + verdict.recorded);
  if (!verdict.of_command.empty()) print_line("  the command  " + verdict.of_command);
  if (!verdict.differs) return;
  if (!lines.empty()) print_line("The command wrote last:");
  for (const std::string &line : lines) print_line("  | " + line);
}

// Throws Interrupted.
int run_against(const replay::Run &run, const Replayed &replayed, int alarm) {
  const play::OwnFolder folder;
  const fs::path score = folder.path() / "score";
  box::create_box(box::Place(folder.box()), run.model);
  write_whole_file(score, replay::score_of(run));
  terminal::Terminal terminal({}, alarm);
  terminal.start(command_line(folder, score, run, replayed.command));
  const replay::Ending ending = ending_of(terminal, score, replayed.limit);
  const replay::Verdict verdict = replay::verdict_of(base::text_if_readable(score.c_str()), run, ending);
  const std::vector<std::string> lines = last_lines(folder.path() / kOutput, terminal);
  if (is_for_script()) {
    answer(verdict_json(verdict, lines));
  } else {
    print_verdict(verdict, lines);
  }
  // Records that are missing are those of a child; its calls at the desk come to that.
  const bool is_doubtful = verdict.differs && verdict.in_child && !run.doubt.empty();
  if (is_doubtful) complain(run.doubt);
  if (!verdict.is_compared || is_doubtful) return kNothingToCompare;
  return verdict.differs ? kFailure : 0;
}

}  // namespace

int replay_command(const recording::Recording &recording, const Replayed &replayed) {
  const std::vector<replay::Run> runs = replay::runs_of(recording);
  const replay::Run &run = chosen_run(runs, replayed);
  if (!run.flaw.empty()) {
    throw box::BoxError("no command can run against " + replayed.file.string() + ". " + run.flaw);
  }
  check_is_of_workstation(replayed.command.front());
  check_command(replayed.command.front(), std::nullopt);
  check_bwrap();
  check_pager();
  // NOLINTNEXTLINE(concurrency-mt-unsafe): there is one thread
  setenv(LMAINTE_HOST_RUN, "", 1);
  const play::Interrupts interrupts;
  try {
    return run_against(run, replayed, interrupts.alarm());
  } catch (const terminal::Interrupted &) {
    return interrupts.die();
  }
}

}  // namespace spbox
