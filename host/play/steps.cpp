#include "host/play/steps.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <stdexcept>

#include "host/box/model.h"
#include "host/box/number.h"
#include "host/box/signal_name.h"

namespace play {
namespace {

constexpr std::size_t kAny = SIZE_MAX;
constexpr double kLongest = 86400;
constexpr int kLargestScreen = 500;

[[noreturn]] void wrong(const std::string &what) {
  throw std::invalid_argument(what);
}

int number_up_to(int largest, const std::string &word, const char *what) {
  const auto number = box::number_in<int>(word);
  if (!number || *number < 0 || *number > largest) {
    wrong("\"" + word + "\" is no " + what + ": a number from 0 to " + std::to_string(largest));
  }
  return *number;
}

void check_model(const Words &words, const Checks & /*checks*/) {
  if (box::find_model(words[0]) == nullptr) {
    wrong("there is no model \"" + words[0] + "\"; the models are " + box::model_names());
  }
}

void check_size(const Words &words, const Checks & /*checks*/) {
  const int rows = number_up_to(kLargestScreen, words[0], "number of rows");
  const int columns = number_up_to(kLargestScreen, words[1], "number of columns");
  if (rows == 0 || columns == 0) wrong("a terminal has at least one row and one column");
}

void check_text(const Words &words, const Checks & /*checks*/) {
  if (words.back().find_first_not_of(' ') == std::string::npos) wrong("the text is empty");
}

void check_status(const Words &words, const Checks & /*checks*/) {
  number_up_to(255, words[0], "exit status");
}

void check_signal(const Words &words, const Checks & /*checks*/) {
  if (box::signal_number(words[0]) == 0) {
    wrong("there is no signal \"" + words[0] + "\"; give a name such as TERM, or a number");
  }
}

void check_hands(const Words &words, const Checks &checks) {
  checks.check_hands(words[0]);
}

void check_spbox(const Words &words, const Checks &checks) {
  if (std::find(checks.verbs.begin(), checks.verbs.end(), words[0]) != checks.verbs.end()) return;
  std::string known;
  for (const auto &verb : checks.verbs) known += (known.empty() ? "" : ", ") + verb;
  wrong("\"" + words[0] + "\" is no verb that works on a box; those are " + known);
}

void check_says(const Words &words, const Checks &checks) {
  if (words.size() == 2 && words[0] != "not") wrong(R"(write it as: says "text", or says not "text")");
  check_text(words, checks);
}

void check_in_order(const Words &words, const Checks & /*checks*/) {
  if (!words.empty() && (words[0] != "but" || words.size() < 2)) wrong("write it as: in_order but /PSU#3");
}

void check_seconds(const Words &words, const Checks & /*checks*/) {
  const auto seconds = box::number_in<double>(words[0]);
  if (!seconds || !(*seconds >= 0) || *seconds > kLongest) {
    wrong("\"" + words[0] + "\" is no number of seconds from 0 to 86400; write 3, or 0.5");
  }
}

constexpr std::array<StepForm, 20> kForms{{
    {"box", 1, 1, "box MODEL", "a new, healthy box of this model", check_model},
    {"terminal", 2, 2, "terminal ROWS COLUMNS", "for the next commands; 24 80 at first", check_size},
    {"play", 1, kAny, "play FILE [NAME=VALUE...]", "plays another script, found beside this one", nullptr},
    {"start", 1, kAny, "start COMMAND...", "the operator starts a command in the box", nullptr},
    {"wait", 1, 1, "wait \"text\"",
     "until the text comes on the screen: what was\nthere before the last keys does not count", check_text},
    {"absent", 1, 1, "absent \"text\"", "the text is not on the screen", check_text},
    {"type", 1, 1, "type \"keys\"", R"("3\n", " ", "\003" for Ctrl-C)", nullptr},
    {"screen", 1, 1, "screen \"caption\"", "prints the screen", nullptr},
    {"exit", 1, 1, "exit STATUS", "waits for the command's end with this status", check_status},
    {"dies", 1, 1, "dies SIGNAL", "waits for its end by this signal: INT, HUP, ...", check_signal},
    {"signal", 1, 1, "signal SIGNAL", "sends the command a signal", check_signal},
    {"hangup", 0, 0, "hangup", "the operator's line is cut", nullptr},
    {"hands", 1, 1, "hands \"steps\"", "a technician works beside the operator from now\non; see `spbox technician`",
     check_hands},
    {"handsdone", 0, 0, "handsdone", "waits until the technicians have done their\nwork, as the end of the play does",
     nullptr},
    {"spbox", 1, kAny, "spbox VERB ...", "works on the box, as in `spbox pull /PSU#3`", check_spbox},
    {"says", 1, 2, "says [not] \"text\"", "the last such step printed it", check_says},
    {"in_order", 0, kAny, "in_order [but UNIT...]",
     "the command left all as it should: no LED, no\nflag, no maintenance mode, no process, file or\n"
     "lock; these units detached, and no others",
     check_in_order},
    {"patience", 1, 1, "patience SECONDS", "of the waits that follow; 10 at first", check_seconds},
    {"pause", 1, 1, "pause SECONDS", "nobody does anything", check_seconds},
    {"say", 1, 1, "say \"text\"", "prints a line of the script's own", nullptr},
}};

}  // namespace

std::span<const StepForm> step_forms() {
  return kForms;
}

std::string step_names() {
  std::string names;
  for (const auto &form : kForms) {
    names += (names.empty() ? "" : &form == &kForms.back() ? " and " : ", ") + std::string(form.verb);
  }
  return names;
}

std::chrono::milliseconds seconds_of(const std::string &word) {
  return std::chrono::milliseconds(std::lround(box::number_in<double>(word).value_or(0) * 1000));
}

int whole_number_of(const std::string &word) {
  return box::number_in<int>(word).value_or(0);
}

std::span<const std::string> units_in_order(const Words &words) {
  return std::span(words).subspan(words.empty() ? 0 : 1);
}

}  // namespace play
