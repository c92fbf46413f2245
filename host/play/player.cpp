#include "host/play/player.h"

#include <algorithm>
#include <array>
#include <csignal>

#include "host/box/contents.h"
#include "host/box/signal_name.h"
#include "host/play/step_forms.h"
#include "host/play/text.h"

namespace play {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kLookAgain{20};
constexpr milliseconds kToEnd{3000};  // for a command whose line was cut at the play's end

template <typename Actions>
constexpr bool plays_every_step(const Actions &actions) {
  const auto *action = actions.begin();
  for (const auto &form : kStepForms) {
    if (form.verb == "play") continue;
    if (action == actions.end() || action->verb != form.verb) return false;
    ++action;
  }
  return action == actions.end();
}

std::runtime_error ended_otherwise(const terminal::Ending &ending) {
  return std::runtime_error("the command ended with " + text(ending) + ".");
}

}  // namespace

struct Player::Action {
  std::string_view verb;
  void (Player::*perform)(const Step &step);
};

Player::~Player() {
  try {
    if (terminal_) terminal_->end(kToEnd);
  } catch (const std::exception &) {
    // The terminal kills what is left.
  }
}

void Player::play(const std::vector<Step> &steps) {
  for (const auto &step : steps) {
    try {
      perform(step);
    } catch (const terminal::Interrupted &) {
      throw;
    } catch (const Failure &) {
      throw;
    } catch (const std::exception &wrong) {
      throw failure(step, wrong.what());
    }
  }
  wait_for_hands();
}

void Player::perform(const Step &step) {
  static constexpr std::array<Action, 19> kActions{{
      {"box", &Player::box},
      {"terminal", &Player::terminal},
      {"start", &Player::start},
      {"wait", &Player::wait},
      {"absent", &Player::absent},
      {"type", &Player::type},
      {"screen", &Player::screen},
      {"exit", &Player::exit},
      {"dies", &Player::dies},
      {"signal", &Player::signal},
      {"hangup", &Player::hangup},
      {"hands", &Player::hands},
      {"handsdone", &Player::handsdone},
      {"spbox", &Player::spbox},
      {"says", &Player::says},
      {"in_order", &Player::in_order},
      {"patience", &Player::patience},
      {"pause", &Player::pause},
      {"say", &Player::say},
  }};
  static_assert(plays_every_step(kActions), "a row for each step of a script, in the same order, but for `play`");
  const auto *action =
      std::find_if(kActions.begin(), kActions.end(), [&](const Action &row) { return row.verb == step.form->verb; });
  (this->*action->perform)(step);
}

// The screen and the technicians' words belong to every failure: the reason is often there.
Failure Player::failure(const Step &step, const std::string &reason) {
  std::string text = step.place + ": `" + step.text + "`: " + stage_.without_folder(reason);
  while (text.back() == '\n') text.pop_back();
  text += step.via + "\n";
  if (terminal_) text += framed(terminal_->screen(), "the screen");
  for (auto &hands : hands_) {
    const auto output = stage_.without_folder(hands.technician.output());
    text += "The technician of " + hands.step->place + " until then:\n" +
            (output.empty() ? "    nothing\n" : indented(output));
  }
  return Failure(text);
}

void Player::tell(const std::string &what, const std::string &output) {
  transcript_.print(what + "\n" + indented(stage_.without_folder(output)) + "\n");
}

void Player::box(const Step &step) {
  stage_.make(step.words[0], patience_);
  transcript_.paragraph("A box of model " + step.words[0] + ".");
}

void Player::terminal(const Step &step) {
  if (terminal_ && terminal_->runs())
    throw std::runtime_error("a command runs on the terminal: wait for its end first");
  size_ = {whole_number_of(step.words[0]), whole_number_of(step.words[1])};
  terminal_.reset();
  before_.reset();
}

terminal::Terminal &Player::the_terminal() {
  if (!terminal_ || !before_) throw std::runtime_error("no command was started on the terminal");
  return *terminal_;
}

terminal::Terminal &Player::running() {
  auto &terminal = the_terminal();
  if (terminal.hung_up()) throw std::runtime_error("the operator's line was cut");
  return terminal;
}

void Player::start(const Step &step) {
  if (terminal_ && terminal_->runs()) throw std::runtime_error("the command before still runs");
  if (terminal_ && terminal_->hung_up()) terminal_.reset();
  if (!terminal_) terminal_.emplace(size_, alarm_);
  const auto command = joined(step.words);
  transcript_.paragraph("The operator starts: " + command);
  picture_.note("The operator starts: " + command);
  before_ = before_command(stage_.place(), *terminal_);
  terminal_->start(stage_.command_in_box(step.words));
}

void Player::wait(const Step &step) {
  if (running().wait_for_new(step.words[0], patience_)) return;
  const bool is_old = terminal_->shows(step.words[0]);
  throw std::runtime_error(
      "\"" + step.words[0] + "\" did not come up in " + seconds_text(patience_) +
      (is_old ? "; what the screen shows of it is older than the last keys" : "") +
      (terminal_->runs() ? "."
                         : ". The command has ended with " + text(*terminal_->wait_for_exit(milliseconds{0})) + "."));
}

void Player::absent(const Step &step) {
  if (running().shows(step.words[0])) throw std::runtime_error("the screen shows it.");
}

void Player::type(const Step &step) {
  auto &terminal = running();
  if (!terminal.runs()) throw std::runtime_error("no command runs that would read it.");
  const auto sentence = "The operator types: " + describe_keys(step.words[0]);
  transcript_.paragraph(sentence);
  picture_.note(sentence);
  terminal.type(step.words[0]);
}

void Player::screen(const Step &step) {
  const auto rows = the_terminal().screen();
  transcript_.print(framed(rows, step.words[0]) + "\n");
  picture_.add(step.words[0], rows, size_);
}

terminal::Ending Player::end() {
  const auto ending = the_terminal().wait_for_exit(patience_);
  if (!ending) throw std::runtime_error("the command did not end in " + seconds_text(patience_) + ".");
  return *ending;
}

void Player::exit(const Step &step) {
  const terminal::Ending wanted{false, whole_number_of(step.words[0])};
  if (const auto ending = end(); ending != wanted) throw ended_otherwise(ending);
  transcript_.paragraph("The command ends with " + text(wanted) + ".");
  picture_.note("The command ends with " + text(wanted) + ".");
}

// spbox tells of a command that a signal ended as a shell does; before the command is inside, it dies itself.
void Player::dies(const Step &step) {
  const int signal = ::box::signal_number(step.words[0]);
  const terminal::Ending told{false, 128 + signal}, died{true, signal};
  if (const auto ending = end(); ending != told && ending != died) throw ended_otherwise(ending);
  transcript_.paragraph("The command dies of " + ::box::signal_name(signal) + ".");
  picture_.note("The command dies of " + ::box::signal_name(signal) + ".");
}

// `spbox run` and bwrap come before the command, and for a moment the command is spbox still.
std::optional<pid_t> Player::command_in_box() const {
  for (const auto &process : terminal_->processes()) {
    if (process.name == "bwrap" || process.name == "spbox") continue;
    if (program_of(process.parent) == "bwrap") return process.pid;
  }
  return {};
}

void Player::signal(const Step &step) {
  auto &terminal = the_terminal();
  const auto deadline = std::chrono::steady_clock::now() + patience_;
  auto command = command_in_box();
  for (; !command && terminal.runs() && std::chrono::steady_clock::now() < deadline; command = command_in_box()) {
    terminal.watch(kLookAgain);
  }
  const int number = ::box::signal_number(step.words[0]);
  if (!command || kill(*command, number) != 0) throw std::runtime_error("no command runs in the box.");
  transcript_.paragraph("The command gets " + ::box::signal_name(number) + ".");
  picture_.note("The command gets " + ::box::signal_name(number) + ".");
}

void Player::hangup(const Step & /*step*/) {
  running().screen();  // takes in what came before
  terminal_->hang_up();
  transcript_.paragraph("The operator's line is cut.");
  picture_.note("The operator's line is cut.");
}

void Player::hands(const Step &step) {
  transcript_.paragraph("A technician works beside the operator: " + step.words[0]);
  hands_.push_back({&step, stage_.spbox({"technician", "--ready-fd", "3", "--do", step.words[0]})});
  const auto is_ready = hands_.back().technician.wait_until_ready(patience_);
  if (!is_ready) throw std::runtime_error("the technician did not come in " + seconds_text(patience_) + ".");
  if (*is_ready) return;
  hands_.back().technician.wait(patience_);  // for his last words
  throw std::runtime_error("the technician gave up.");
}

void Player::handsdone(const Step & /*step*/) {
  wait_for_hands();
}

void Player::wait_for_hands() {
  for (; !hands_.empty(); hands_.pop_front()) {
    auto &[step, technician] = hands_.front();
    const auto status = technician.wait(patience_);
    if (!status) {
      throw failure(*step,
                    "the technician's work was not done " + seconds_text(patience_) + " after it was asked for.");
    }
    if (*status != 0) throw failure(*step, "the technician gave up.");
    tell("The technician is done: " + step->words[0], technician.output());
  }
}

void Player::spbox(const Step &step) {
  auto done = stage_.spbox(step.words);
  const auto status = done.wait(patience_);
  said_ = stage_.without_folder(done.output());
  tell("The technician: spbox " + joined(step.words), *said_);
  picture_.note("The technician: spbox " + joined(step.words));
  if (!status) throw std::runtime_error("it was not done in " + seconds_text(patience_) + ", and is ended.");
  if (*status != 0) {
    throw std::runtime_error("it ended with " + text(terminal::Ending{false, *status}) + ":\n" + indented(*said_));
  }
}

void Player::says(const Step &step) {
  if (!said_) throw std::runtime_error("no step `spbox` came before it.");
  const bool wanted = step.words.size() == 1;
  if ((said_->find(step.words.back()) != std::string::npos) == wanted) return;
  throw std::runtime_error(std::string("spbox said ") + (wanted ? "something else" : "it") + ":\n" + indented(*said_));
}

// What dies with the command dies a moment later.
void Player::in_order(const Step &step) {
  auto &terminal = the_terminal();
  const auto units = units_in_order(step.words);
  const Words detached(units.begin(), units.end());
  if (!detached.empty()) check_units(::box::model_name(::box::model_of_box(stage_.place())), detached);
  Before before = before_.value();
  for (const auto &hands : hands_) before.processes.insert(hands.technician.pid());
  const auto deadline = std::chrono::steady_clock::now() + patience_;
  auto wrong = not_in_order(stage_.place(), terminal, before, detached);
  while (!wrong.empty() && std::chrono::steady_clock::now() < deadline) {
    terminal.watch(kLookAgain);
    wrong = not_in_order(stage_.place(), terminal, before, detached);
  }
  if (wrong.empty()) return transcript_.paragraph("All is in order.");
  std::string list;
  for (const auto &sentence : wrong) list += sentence + "\n";
  throw std::runtime_error("not all is in order:\n" + indented(list));
}

void Player::patience(const Step &step) {
  patience_ = seconds_of(step.words[0]);
}

void Player::pause(const Step &step) {
  if (!terminal_) terminal_.emplace(size_, alarm_);
  terminal_->watch(seconds_of(step.words[0]));
}

void Player::say(const Step &step) {
  transcript_.paragraph(step.words[0]);
}

}  // namespace play
