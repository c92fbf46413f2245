#include "host/play/plan.h"

#include <algorithm>

#include "host/base/listed.h"
#include "host/base/told.h"

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

class PlanReader {
 public:
  PlanReader(const Verbs &verbs, std::vector<fs::path> *played) : verbs_(verbs), played_(played) {}

  void read(const fs::path &script, const Values &values, const std::string &via, int depth) {
    try {
      script::Reader reader(script::text_of_file(script), script.string(),
                            {.has_quotes = true, .has_semicolons = false});
      while (auto statement = reader.next()) {
        read_step({std::move(*statement), nullptr, script.parent_path(), via}, values, depth);
      }
    } catch (const PlayedScriptError &) {
      throw;
    } catch (const script::Error &wrong) {
      throw PlayedScriptError(wrong.what() + via);
    }
  }

  std::vector<Step> steps;

 private:
  // One whose text says already where the script is played from.
  class PlayedScriptError : public script::Error {
   public:
    using script::Error::Error;
  };

  void read_step(Step step, const Values &values, int depth) {
    try {
      step.row = &script::take_row(step_rows(), step.words);
      for (auto &word : step.words) word = with_values(word, values);
      if (step.row->perform == nullptr) return play(step, depth);
      if (step.row->check != nullptr) step.row->check(step.words);
      if (step.row->traits.names_verb) check_verb(step.words);
    } catch (const PlayedScriptError &) {
      throw;
    } catch (const std::exception &wrong) {
      throw PlayedScriptError(step.error(base::told(wrong)).what());
    }
    steps.push_back(std::move(step));
  }

  void check_verb(const Words &words) const {
    const Words &names = verbs_.names;
    if (std::find(names.begin(), names.end(), words[0]) != names.end()) return verbs_.check(words);
    throw std::invalid_argument("\"" + words[0] + "\" is not a verb that works on a box; those are " +
                                base::listed(names));
  }

  void play(const Step &step, int depth) {
    if (depth == kDeepest) {
      throw std::invalid_argument("more than " + std::to_string(kDeepest) +
                                  " scripts play one another. Does one play itself?");
    }
    Values values;
    for (std::size_t i = 1; i < step.words.size(); ++i) add_value(step.words[i], values);
    const fs::path script = step.folder / step.words[0];
    if (played_ != nullptr) played_->push_back(script);
    read(script, values, "\n  played from " + step.place + step.via, depth + 1);
  }

  const Verbs &verbs_;
  std::vector<fs::path> *played_;
};

void check_on(const std::string &model, const Step &step) {
  try {
    step.row->traits.check_on(model, step.words);
  } catch (const std::exception &wrong) {
    throw step.error(base::told(wrong));
  }
}

// What is wrong with the order of the steps: a server that comes too late, or twice, or is not the one of the steps
// behind it.
void check_boxes(const std::vector<Step> &steps) {
  const Step *made = nullptr;
  bool is_used = false;
  for (const Step &step : steps) {
    const Traits &traits = step.row->traits;
    if (traits.makes_box && made != nullptr) throw step.error("a play has one box");
    if (traits.makes_box && is_used) throw step.error("the steps before it have worked on a box already");
    if (traits.makes_box) made = &step;
    if (traits.check_on != nullptr && made != nullptr) check_on(made->words[0], step);
    is_used |= traits.uses_box;
  }
}

// What is wrong with the order of the steps: one that needs what no step before it gives.
void check_order(const std::vector<Step> &steps) {
  bool has_command = false, has_said = false;
  for (const Step &step : steps) {
    const Traits &traits = step.row->traits;
    if (traits.needs_command && !has_command) throw step.error("no command was started on the terminal");
    if (traits.needs_said && !has_said) throw step.error("no step `spbox` comes before it");
    has_command = (has_command || traits.starts_command) && !traits.takes_terminal;
    has_said |= traits.names_verb;
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

std::vector<Step> read_plan(const fs::path &script, const Values &values, const Verbs &verbs,
                            std::vector<fs::path> *played) {
  PlanReader reader(verbs, played);
  reader.read(script, values, "", 1);
  check_boxes(reader.steps);
  check_order(reader.steps);
  return std::move(reader.steps);
}

bool has_step(const std::vector<Step> &plan, bool Traits::*trait) {
  return std::any_of(plan.begin(), plan.end(), [&](const Step &step) { return step.row->traits.*trait; });
}

}  // namespace play
