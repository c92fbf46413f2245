#include "host/play/operator.h"

#include <csignal>
#include <stdexcept>

#include "host/clock/hours.h"

namespace play {
namespace {

using box_time::Clock;
using std::chrono::milliseconds;

// A command that was killed could end nothing: what it left is held against the one behind it.
bool was_killed(terminal::Terminal &terminal) {
  const auto ending = terminal.wait_for_exit(milliseconds{0});
  return ending == terminal::Ending{true, SIGKILL} || ending == terminal::Ending{false, 128 + SIGKILL};
}

constexpr milliseconds kToEnd{3000};  // for a command whose line was cut at the play's end

}  // namespace

Operator::~Operator() {
  try {
    if (terminal_) terminal_->end(kToEnd);
  } catch (const std::exception &) {
    // The terminal kills what is left.
  }
}

void Operator::take_terminal(terminal::Size size) {
  if (terminal_ && terminal_->runs()) {
    throw std::runtime_error("a command runs on the terminal: wait for its end first");
  }
  size_ = size;
  terminal_.reset();
  before_.reset();
}

terminal::Terminal &Operator::at_terminal() {
  if (!terminal_) {
    terminal_.emplace(size_, alarm_);
    constexpr const char *kReset = "\033c";
    if (listener_) listener_(kReset);
    terminal_->pass_on_to(listener_);
  }
  return *terminal_;
}

void Operator::start(const box::Place &place, const std::vector<std::string> &command, bool others_work) {
  if (terminal_ && terminal_->runs()) throw std::runtime_error("the command before still runs");
  const std::optional<Before> killed = terminal_ && was_killed(*terminal_) ? before_ : std::nullopt;
  if (terminal_ && terminal_->hung_up()) terminal_.reset();
  before_ = before_command(place, at_terminal(), others_work);
  if (killed) before_->processes = killed->processes;
  terminal_->start(command);
}

std::vector<pid_t> Operator::processes() const {
  std::vector<pid_t> processes;
  if (!terminal_) return processes;
  for (const auto &process : terminal_->processes()) processes.push_back(process.pid);
  return processes;
}

terminal::Terminal &Operator::terminal() {
  if (!terminal_ || !before_) throw std::runtime_error("no command was started on the terminal");
  return *terminal_;
}

terminal::Terminal &Operator::line() {
  if (terminal().hung_up()) throw std::runtime_error("the operator's line was cut");
  return *terminal_;
}

void Operator::resize(terminal::Size size) {
  line().screen();  // what came before was written for the size before
  line().resize(size);
  size_ = size;
}

void Operator::watch(milliseconds time) {
  at_terminal().watch(time);
}

// `spbox run` and bwrap come before the command, and for a moment the command is spbox still.
std::optional<pid_t> Operator::wait_for_command_in_box(milliseconds patience) {
  const auto deadline = Clock::now() + patience;
  for (;;) {
    bool is_on_its_way = false;
    for (const auto &process : terminal_->processes()) {
      const bool comes_before = process.name == "bwrap" || process.name == "spbox";
      if (!comes_before && program_of(process.parent) == "bwrap") return process.pid;
      is_on_its_way |= comes_before;
    }
    if (!is_on_its_way || !terminal_->runs() || Clock::now() >= deadline) return {};
    terminal_->watch(kLookAgain);
  }
}

std::optional<std::vector<std::string>> Operator::screen() {
  if (!terminal_) return {};
  return terminal_->screen();
}

std::optional<std::vector<terminal::PaintedRow>> Operator::last_painted_screen() const {
  if (!terminal_) return {};
  return terminal_->last_painted_screen();
}

std::optional<std::vector<std::string>> Operator::last_screen() const {
  if (!terminal_) return {};
  return terminal_->last_screen();
}

}  // namespace play
