#include "host/spbox/technician_script.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <iterator>
#include <sstream>

#include "host/box/number.h"
#include "host/spbox/changes.h"

namespace spbox {
namespace {

using Words = std::vector<std::string>;

[[noreturn]] void fail(const Step &step, const std::string &reason) {
  throw error_of(step, reason);
}

std::chrono::milliseconds seconds_in(const Step &step, const std::string &word) {
  constexpr double kLongest = 86400;
  const auto seconds = box::number_in<double>(word);
  if (!seconds || !(*seconds >= 0) || *seconds > kLongest) {
    fail(step, word + " is no number of seconds from 0 to 86400. Write 3, or 0.5.");
  }
  return std::chrono::milliseconds(std::lround(*seconds * 1000));
}

void read_after(Step &step, const Words &words) {
  if (words.size() != 1) fail(step, "it takes the seconds, and nothing else: after 3.");
  step.time = seconds_in(step, words[0]);
}

struct Condition {
  std::string_view name;
  std::size_t fewest, most;              // words behind the name
  std::vector<std::string_view> values;  // that the last word may be; empty: any
  std::string_view example;
};

const std::vector<Condition> &conditions() {
  static const std::vector<Condition> all{
      {"led", 2, 2, {"off", "on", "blink"}, "when led /PSU#3 blink"},
      {"flag", 2, 2, {"start", "end"}, "when flag /PSU#3 start"},
      {"detached", 2, 2, {"yes", "no"}, "when detached /PSU#3 yes"},
      {"mode", 1, 1, {"lock", "unlock"}, "when mode lock"},
      {"trace", 1, 100, {}, "when trace lmainte_chk_fru_install entry"},
      {"text", 2, 100, {}, "when text screen.txt Replace /PSU#3"},
  };
  return all;
}

void read_when(Step &step, const Words &words) {
  const auto &all = conditions();
  const auto row = words.empty() ? all.end() : std::find_if(all.begin(), all.end(), [&](const Condition &condition) {
    return condition.name == words[0];
  });
  if (row == all.end()) fail(step, "it waits for led, flag, detached, mode, trace or text: when led /PSU#3 blink.");
  const std::size_t count = words.size() - 1;
  const bool fits = count >= row->fewest && count <= row->most;
  const bool has_value =
      row->values.empty() || std::find(row->values.begin(), row->values.end(), words.back()) != row->values.end();
  if (!fits || !has_value) fail(step, "write it like this: " + std::string(row->example) + ".");
  step.words = words;
}

void read_flicker(Step &step, const Words &words) {
  if (words.size() != 3) fail(step, "it takes a unit, how many times, and the seconds between: flicker /PSU#3 5 0.5.");
  step.times = box::number_in<std::uint32_t>(words[1]).value_or(0);
  if (step.times == 0) fail(step, words[1] + " is no number of times.");
  step.time = seconds_in(step, words[2]);
  step.words = {words[0]};
}

void read_change(Step &step, const Words &words) {
  if (words.empty()) fail(step, "which unit? Give its location, such as /PSU#3.");
  step.words = words;
}

struct Verb {
  std::string_view name;
  Step::Kind kind;
  void (*read)(Step &step, const Words &words);
};

constexpr Verb kVerbs[] = {
    {"after", Step::Kind::kAfter, read_after},
    {"when", Step::Kind::kWhen, read_when},
    {"flicker", Step::Kind::kFlicker, read_flicker},
};
constexpr Verb kChangeVerb{"", Step::Kind::kChange, read_change};

// The verb of a step; of a change, notes which.
const Verb &verb_of(Step &step, const std::string &word) {
  for (const Verb &row : kVerbs) {
    if (row.name == word) return row;
  }
  for (const ChangeRow &row : kChanges) {
    if (row.verb != word) continue;
    step.change = row.change;
    return kChangeVerb;
  }
  fail(step, "there is no such step. There are after, when, pull, insert, fault, degrade, repair and flicker.");
}

Words words_in(const std::string &text) {
  std::istringstream in(text);
  return {std::istream_iterator<std::string>(in), {}};
}

// A comment begins where a word could: the # of a location is none.
std::string without_comment(const std::string &line) {
  for (std::size_t at = line.find('#'); at != std::string::npos; at = line.find('#', at + 1)) {
    if (at == 0 || std::string_view(" \t;").find(line[at - 1]) != std::string_view::npos) return line.substr(0, at);
  }
  return line;
}

Step read_step(int number, Words words) {
  Step step{};
  step.number = number;
  step.text = joined(words);
  const Verb &verb = verb_of(step, words[0]);
  step.kind = verb.kind;
  words.erase(words.begin());
  verb.read(step, words);
  return step;
}

}  // namespace

std::string joined(const Words &words, std::size_t from) {
  std::string text;
  for (std::size_t i = from; i < words.size(); ++i) text += (text.empty() ? "" : " ") + words[i];
  return text;
}

ScriptError error_of(const Step &step, const std::string &reason) {
  return ScriptError("step " + std::to_string(step.number) + ", `" + step.text + "`: " + reason);
}

std::vector<Step> parse_technician(std::string_view text) {
  std::vector<Step> steps;
  std::istringstream lines{std::string(text)};
  for (std::string line; std::getline(lines, line);) {
    std::istringstream parts(without_comment(line));
    for (std::string part; std::getline(parts, part, ';');) {
      Words words = words_in(part);
      if (!words.empty()) steps.push_back(read_step(static_cast<int>(steps.size()) + 1, std::move(words)));
    }
  }
  if (steps.empty()) throw ScriptError("the script has no step. Write one, such as: pull /PSU#3");
  return steps;
}

}  // namespace spbox
