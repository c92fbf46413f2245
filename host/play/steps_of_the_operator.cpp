// What the operator does and sees, and what happens to the command.
#include <array>
#include <csignal>

#include "host/base/signal_name.h"
#include "host/play/chronicle.h"
#include "host/play/layout.h"
#include "host/play/stage.h"
#include "host/play/step.h"
#include "host/script/values.h"

namespace play {
namespace {

namespace fs = std::filesystem;
using std::chrono::milliseconds;

void check_sought(const Words &words) {
  if (words.size() == 2 && words[0] != "like") throw std::invalid_argument("write it as: like \"REGEX\"");
  const Sought sought(words);
}

void check_signal(const Words &words) {
  if (base::signal_number(words[0]) != 0) return;
  throw std::invalid_argument("there is no signal \"" + words[0] + "\"; give a name such as TERM, or a number");
}

int status_in(const Words &words) {
  return script::number_in(words[0], 255, "an exit status");
}

void check_status(const Words &words) {
  status_in(words);
}

// A program with a relative path lies beside the script or, where it does not, is sought from the current folder.
Words command_of(const Step &step) {
  Words command = step.words;
  const fs::path program = command[0], beside = step.folder / program;
  std::error_code error;
  const bool is_path = command[0].find('/') != std::string::npos && program.is_relative();
  if (is_path && fs::is_regular_file(beside, error)) command[0] = fs::absolute(beside).string();
  return command;
}

void start(Stage &stage, const Step &step) {
  stage.op().start(stage.box.place(), stage.box.command_in_box(command_of(step)), stage.operators.others_work());
  stage.narrator.happens(stage.operators.subject() + " starts: " + script::joined(step.words));
}

terminal::Finder finder_of(const Sought &sought) {
  return [sought](std::string_view line, std::size_t from) -> std::optional<terminal::Stretch> {
    const auto match = sought.find(line, from);
    return match ? std::optional(terminal::Stretch{match->at, match->length}) : std::nullopt;
  };
}

// The line of the screen where it stands. Comes early where the command ends without it.
std::string wait_for(Stage &stage, const Sought &sought) {
  auto &terminal = stage.op().line();
  if (const auto line = terminal.wait_for_new(finder_of(sought), stage.patience)) return *line;
  const bool runs = terminal.runs();
  auto reason = sought.shown() + " did not come up" + (runs ? " in " + script::seconds_text(stage.patience) : "");
  if (terminal.find(finder_of(sought))) reason += "; what the screen shows of it is older than the last keys";
  if (!runs) reason += ". The command has ended with " + text(*terminal.wait_for_exit(milliseconds{0}));
  throw std::runtime_error(reason + ".");
}

void wait(Stage &stage, const Step &step) {
  wait_for(stage, Sought(step.words));
}

void absent(Stage &stage, const Step &step) {
  if (stage.op().line().find(finder_of(Sought(step.words)))) throw std::runtime_error("the screen shows it.");
}

void check_taken(const Words &words) {
  const Sought sought({"like", words[1]});
}

void take(Stage &stage, const Step &step) {
  const Sought sought({"like", step.words[1]});
  stage.take(step, sought.find(wait_for(stage, sought))->value);
}

void type(Stage &stage, const Step &step) {
  auto &terminal = stage.op().line();
  if (!terminal.runs()) throw std::runtime_error("no command runs that would read it.");
  stage.narrator.happens(stage.operators.subject() + " types: " + describe_keys(step.words[0]));
  if (terminal.type(step.words[0], stage.patience)) return;
  if (!terminal.runs()) throw std::runtime_error("the command ended before it read all of it.");
  throw std::runtime_error("the command did not read all of it in " + script::seconds_text(stage.patience) + ".");
}

void show_screen(Stage &stage, const Step &step) {
  const auto rows = stage.op().terminal().screen();
  const auto server = stage.draws_server && stage.box.exists() ? chassis_of(stage.box) : Words();
  stage.narrator.shows(stage.operators.by(step.words[0]), rows, stage.op().size(), server);
}

terminal::Ending wait_for_end(Stage &stage) {
  const auto ending = stage.op().terminal().wait_for_exit(stage.patience);
  if (ending) return *ending;
  throw std::runtime_error("the command did not end in " + script::seconds_text(stage.patience) + ".");
}

std::runtime_error ended_otherwise(const terminal::Ending &ending) {
  return std::runtime_error("the command ended with " + text(ending) + ".");
}

void wait_for_exit(Stage &stage, const Step &step) {
  const terminal::Ending wanted{false, status_in(step.words)};
  if (const auto ending = wait_for_end(stage); ending != wanted) throw ended_otherwise(ending);
  stage.narrator.happens(stage.operators.whose("The command") + " ends with " + text(wanted) + ".");
}

// spbox tells of a command that a signal ended as a shell does; before the command is inside, it dies itself.
void wait_for_death(Stage &stage, const Step &step) {
  const int signal = base::signal_number(step.words[0]);
  const terminal::Ending told{false, 128 + signal}, died{true, signal};
  if (const auto ending = wait_for_end(stage); ending != told && ending != died) throw ended_otherwise(ending);
  stage.narrator.happens(stage.operators.whose("The command") + " dies of " + base::signal_name(signal) + ".");
}

// As a shell lets a stopped command go on: all of it, and not the program in the box alone. Ctrl-Z takes a moment.
void go_on(Stage &stage) {
  constexpr int kLooks = 50;
  auto &terminal = stage.op().terminal();
  for (int look = 0; look < kLooks && !terminal.take_stop(); ++look) terminal.watch(kLookAgain);
  terminal.go_on();
}

void send_signal(Stage &stage, const Step &step) {
  stage.op().terminal();
  const int number = base::signal_number(step.words[0]);
  const auto command = stage.op().wait_for_command_in_box(stage.patience);
  if (command && number == SIGCONT) go_on(stage);
  if (!command || kill(*command, number) != 0) throw std::runtime_error("no command runs in the box.");
  stage.narrator.happens(stage.operators.whose("The command") + " gets " + base::signal_name(number) + ".");
}

// A command that is not in the box yet would never get there: bwrap needs the terminal.
void hang_up(Stage &stage, const Step & /*step*/) {
  auto &terminal = stage.op().line();
  stage.op().wait_for_command_in_box(stage.patience);
  terminal.screen();  // takes in what came before
  terminal.hang_up();
  stage.narrator.happens(stage.operators.subject() + "'s line is cut.");
}

constexpr Traits kOnCommand{.needs_command = true};
constexpr std::array<StepRow, 10> kStepsOfTheOperator{{
    {{"start", 1, script::kAny, "start COMMAND...",
      "the operator starts a command in the box; ./COMMAND is\nin the folder of the script, or in this one"},
     nullptr,
     start,
     {.uses_box = true, .starts_command = true}},
    {{"wait", 1, 2, "wait [like] \"text\"",
      "waits until the text comes on the screen; what\nwas there before the last keys does not count;\n"
      "behind `like` stands a regular expression, as\nfor grep -E"},
     check_sought,
     wait,
     kOnCommand},
    {{"absent", 1, 2, "absent [like] \"text\"", "the text is not on the screen"}, check_sought, absent, kOnCommand},
    {{"take", 2, 2, "take NAME \"REGEX\"",
      "waits for a line like this; later, $NAME is what\nits first group (...) stands for, or all of it"},
     check_taken,
     take,
     {.needs_command = true, .takes_value = true}},
    {{"type", 1, 1, "type \"keys\"", R"("3\n", " ", "\003" for Ctrl-C)"}, nullptr, type, kOnCommand},
    {{"screen", 1, 1, "screen \"caption\"", "prints the screen"},
     nullptr,
     show_screen,
     {.draws = true, .needs_command = true}},
    {{"exit", 1, 1, "exit STATUS", "waits for the command's end with this status"},
     check_status,
     wait_for_exit,
     kOnCommand},
    {{"dies", 1, 1, "dies SIGNAL", "waits for its end by this signal: INT, HUP, ..."},
     check_signal,
     wait_for_death,
     kOnCommand},
    {{"signal", 1, 1, "signal SIGNAL", "sends the command a signal"}, check_signal, send_signal, kOnCommand},
    {{"hangup", 0, 0, "hangup", "the operator's line is cut"}, nullptr, hang_up, kOnCommand},
}};

}  // namespace

std::span<const StepRow> steps_of_the_operator() {
  return kStepsOfTheOperator;
}

}  // namespace play
