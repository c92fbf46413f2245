#include "host/play/steps.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "host/box/model.h"
#include "host/box/number.h"
#include "host/box/signal_name.h"
#include "host/play/step_forms.h"

namespace play {
namespace {

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

}  // namespace

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

std::span<const StepForm> step_forms() {
  return kStepForms;
}

std::string step_names() {
  std::string names;
  for (const auto &form : kStepForms) {
    names += (names.empty() ? "" : &form == &kStepForms.back() ? " and " : ", ") + std::string(form.verb);
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
