#include "host/play/plan.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>

#include "host/play/in_order.h"

namespace play {
namespace {

namespace fs = std::filesystem;

constexpr int kDeepest = 16;

bool is_letter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

bool is_in_name(char c) {
  return is_letter(c) || (c >= '0' && c <= '9');
}

std::string with_values(const std::string &word, const Values &values) {
  std::string text;
  for (auto at = word.begin(); at != word.end();) {
    if (*at != '$') {
      text.push_back(*at++);
      continue;
    }
    if (++at != word.end() && *at == '$') {
      text.push_back(*at++);
      continue;
    }
    const auto end = at != word.end() && is_letter(*at) ? std::find_if_not(at, word.end(), is_in_name) : at;
    const std::string name(at, end);
    if (name.empty()) throw std::invalid_argument("a $ stands before a name; $$ is a dollar");
    const auto value = values.find(name);
    if (value == values.end()) {
      throw std::invalid_argument("nobody gave $" + name + " a value; $$ is a dollar");
    }
    text += value->second;
    at = end;
  }
  return text;
}

const StepForm &form_of(const std::string &verb) {
  const auto forms = step_forms();
  const auto form = std::find_if(forms.begin(), forms.end(), [&](const auto &row) { return row.verb == verb; });
  if (form == forms.end()) {
    throw std::invalid_argument("there is no step \"" + verb + "\"; there are " + step_names());
  }
  return *form;
}

ScriptError wrong_with(const Step &step, const std::string &reason) {
  return ScriptError(step.place + ": `" + step.text + "`: " + reason + step.via);
}

class Reader {
 public:
  explicit Reader(const Checks &checks) : checks_(checks) {}

  void read(const fs::path &script, const Values &values, const std::string &via, int depth) {
    std::ifstream file(script);
    std::error_code error;
    if (!file || fs::is_directory(script, error)) {
      const char *reason = file ? "it is a folder" : std::strerror(errno);  // NOLINT(concurrency-mt-unsafe): one thread
      throw ScriptError(script.string() + ": " + reason + ". Name a script that can be read." + via);
    }
    std::vector<Line> lines;
    try {
      lines = read_script(file, script.string());
    } catch (const ScriptError &wrong) {
      throw ScriptError(wrong.what() + via);
    }
    for (Line &line : lines) read_line(script, line, values, via, depth);
  }

  std::vector<Step> steps;

 private:
  void read_line(const fs::path &script, Line &line, const Values &values, const std::string &via, int depth) {
    Step step{nullptr, {}, line.text, script.string() + ":" + std::to_string(line.number), via};
    try {
      step.form = &form_of(line.verb);
      if (line.words.size() < step.form->fewest || line.words.size() > step.form->most) {
        throw std::invalid_argument("write it as: " + std::string(step.form->written));
      }
      for (const auto &word : line.words) step.words.push_back(with_values(word, values));
      if (line.verb == "play") return play(script, step, depth);
      if (step.form->check != nullptr) step.form->check(step.words, checks_);
    } catch (const ScriptError &) {
      throw;
    } catch (const std::exception &wrong) {
      throw wrong_with(step, wrong.what());
    }
    steps.push_back(std::move(step));
  }

  void play(const fs::path &script, const Step &step, int depth) {
    if (depth == kDeepest) {
      throw std::invalid_argument("more than " + std::to_string(kDeepest) +
                                  " scripts play one another. Does one play itself?");
    }
    Values values;
    for (std::size_t i = 1; i < step.words.size(); ++i) add_value(step.words[i], values);
    read(script.parent_path() / step.words[0], values, "\n  played from " + step.place + step.via, depth + 1);
  }

  const Checks &checks_;
};

void check_units_of(const Step &step, const std::string &model) {
  try {
    check_units(model, units_in_order(step.words));
  } catch (const std::invalid_argument &wrong) {
    throw wrong_with(step, wrong.what());
  }
}

// What is wrong with the order of the steps: a server that comes too late, or twice, or is not the one of the steps
// behind it.
void check_boxes(const std::vector<Step> &steps) {
  const Step *made = nullptr;
  bool is_used = false;
  for (const Step &step : steps) {
    const auto verb = step.form->verb;
    if (verb == "box" && made != nullptr) throw wrong_with(step, "a play has one box");
    if (verb == "box" && is_used) throw wrong_with(step, "the steps before it have worked on a box already");
    if (verb == "box") made = &step;
    if (verb == "in_order" && made != nullptr) check_units_of(step, made->words[0]);
    is_used |= verb == "start" || verb == "spbox" || verb == "hands" || verb == "in_order";
  }
}

}  // namespace

void add_value(const std::string &word, Values &values) {
  const auto equals = word.find('=');
  const auto name = word.substr(0, equals);
  const bool is_name = !name.empty() && is_letter(name[0]) && std::all_of(name.begin(), name.end(), is_in_name);
  if (equals == std::string::npos || !is_name) {
    throw std::invalid_argument("\"" + word + "\" gives no value: write NAME=VALUE");
  }
  values[name] = word.substr(equals + 1);
}

std::vector<Step> read_plan(const fs::path &script, const Values &values, const Checks &checks) {
  Reader reader(checks);
  reader.read(script, values, "", 1);
  check_boxes(reader.steps);
  return std::move(reader.steps);
}

}  // namespace play
