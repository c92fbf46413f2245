#include "host/play/plan.h"

#include <unistd.h>

#include <algorithm>

#include "host/base/listed.h"
#include "host/base/told.h"

namespace play {
namespace {

namespace fs = std::filesystem;

constexpr int kDeepest = 16;
constexpr const char *kStandardInput = "-";

std::string absolute_folder(const fs::path &folder) {
  const fs::path whole = fs::absolute(folder.empty() ? fs::path(".") : folder).lexically_normal();
  return (whole.has_filename() ? whole : whole.parent_path()).string();
}

bool is_letter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

bool is_in_name(char c) {
  return is_letter(c) || (c >= '0' && c <= '9');
}

// A program gets no more of a word than what stands before a zero byte.
void check_are_arguments(const Words &words) {
  for (const std::string &word : words) {
    if (word.find('\0') != std::string::npos) throw std::invalid_argument("a word of a command has no zero byte in it");
  }
}

// What the names in a script stand for.
using Scope = std::map<std::string, LateText>;

void add_text(LateText &text, const LatePart &part) {
  const bool goes_on = part.slot < 0 && !text.empty() && text.back().slot < 0;
  if (goes_on)
    text.back().text += part.text;
  else
    text.push_back(part);
}

LateText with_values(const std::string &word, const Scope &scope) {
  LateText text{{"", -1}};
  for (auto at = word.begin(); at != word.end();) {
    if (*at != '$') {
      add_text(text, {std::string(1, *at++), -1});
      continue;
    }
    if (++at != word.end() && *at == '$') {
      add_text(text, {std::string(1, *at++), -1});
      continue;
    }
    const auto end = at != word.end() && is_letter(*at) ? std::find_if_not(at, word.end(), is_in_name) : at;
    const std::string name(at, end);
    if (name.empty()) throw std::invalid_argument("a $ stands before a name; $$ is a dollar");
    const auto value = scope.find(name);
    if (value == scope.end()) {
      throw std::invalid_argument("nobody gave $" + name + " a value; $$ is a dollar");
    }
    for (const LatePart &part : value->second) add_text(text, part);
    at = end;
  }
  return text;
}

bool is_late(const LateText &text) {
  return std::any_of(text.begin(), text.end(), [](const LatePart &part) { return part.slot >= 0; });
}

// NAME=VALUE, of which the name is known.
void add_late_value(const LateText &word, Scope &scope) {
  Values begin;
  add_value(word.front().text, begin);
  LateText value{{begin.begin()->second, -1}};
  for (auto part = word.begin() + 1; part != word.end(); ++part) add_text(value, *part);
  scope[begin.begin()->first] = value;
}

bool is_name(const std::string &word) {
  return !word.empty() && is_letter(word[0]) && std::all_of(word.begin(), word.end(), is_in_name);
}

class PlanReader {
 public:
  PlanReader(const Verbs &verbs, std::vector<fs::path> *played) : verbs_(verbs), played_(played) {}

  void read(const fs::path &script, Scope scope, const std::string &via, int depth) {
    const bool is_input = depth == 1 && script == kStandardInput;
    const fs::path folder = is_input ? fs::path() : script.parent_path();
    scope.try_emplace("HERE", LateText{{absolute_folder(folder), -1}});
    try {
      script::Reader reader(
          is_input ? script::text_of(STDIN_FILENO, name_of_script(script)) : script::text_of_file(script),
          depth == 1 ? name_of_script(script) : script.string(), {.has_quotes = true, .has_semicolons = false});
      while (auto statement = reader.next()) {
        read_step({std::move(*statement), nullptr, folder, {}, -1, via}, scope, depth);
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

  void read_step(Step step, Scope &scope, int depth) {
    try {
      step.row = &script::take_row(step_rows(), step.words);
      const auto texts = put_values(step, scope);
      if (step.row->perform == nullptr) return play(step, texts, depth);
      if (step.row->traits.takes_value) take_name(step, scope);
      if (step.row->check != nullptr && step.late.empty()) step.row->check(step.words);
      if (step.row->traits.starts_command || step.row->traits.names_verb) check_are_arguments(step.words);
      if (step.row->traits.turns_to_operator) check_first_is_known(step, "the operator");
      if (step.row->traits.names_verb) check_verb(step);
    } catch (const PlayedScriptError &) {
      throw;
    } catch (const std::exception &wrong) {
      throw PlayedScriptError(step.error(base::told(wrong)).what());
    }
    steps.push_back(std::move(step));
  }

  // All words with their values, also those of which a part comes later.
  static std::vector<LateText> put_values(Step &step, const Scope &scope) {
    std::vector<LateText> texts;
    for (std::size_t i = 0; i < step.words.size(); ++i) {
      texts.push_back(with_values(step.words[i], scope));
      if (is_late(texts.back()))
        step.late.push_back({i, texts.back()});
      else
        step.words[i] = texts.back().front().text;
    }
    return texts;
  }

  // Behind this step, in this script, the name stands for what the step takes.
  void take_name(Step &step, Scope &scope) {
    if (!is_name(step.words[0])) throw std::invalid_argument("\"" + step.words[0] + "\" is no name");
    step.slot = slots_++;
    scope[step.words[0]] = {{"", step.slot}};
  }

  static void check_first_is_known(const Step &step, const char *what) {
    if (!step.late.empty() && step.late.front().number == 0) {
      throw std::invalid_argument(std::string(what) + " has to be known before the first step");
    }
  }

  void check_verb(const Step &step) const {
    check_first_is_known(step, "the verb");
    const Words &names = verbs_.names, &words = step.words;
    if (std::find(names.begin(), names.end(), words[0]) == names.end()) {
      throw std::invalid_argument("\"" + words[0] + "\" is not a verb that works on a box; those are " +
                                  base::listed(names));
    }
    if (step.late.empty()) verbs_.check(words);
  }

  void play(const Step &step, const std::vector<LateText> &texts, int depth) {
    if (depth == kDeepest) {
      throw std::invalid_argument("more than " + std::to_string(kDeepest) +
                                  " scripts play one another. Does one play itself?");
    }
    check_first_is_known(step, "the script");
    Scope scope;
    for (std::size_t i = 1; i < texts.size(); ++i) add_late_value(texts[i], scope);
    const fs::path script = step.folder / step.words[0];
    if (played_ != nullptr) played_->push_back(script);
    read(script, scope, "\n  played from " + step.place + step.via, depth + 1);
  }

  const Verbs &verbs_;
  std::vector<fs::path> *played_;
  int slots_ = 0;
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
    if (traits.check_on != nullptr && made != nullptr && step.late.empty()) check_on(made->words[0], step);
    is_used |= traits.uses_box;
  }
}

// What is wrong with the order of the steps: one that needs what no step before it gives.
void check_order(const std::vector<Step> &steps) {
  std::map<std::string, bool> has_command;  // of each operator
  std::string op;
  bool has_said = false;
  for (const Step &step : steps) {
    const Traits &traits = step.row->traits;
    if (traits.turns_to_operator) op = step.words.empty() ? "" : step.words[0];
    bool &has = has_command[op];
    if (traits.needs_command && !has) throw step.error("no command was started on the terminal");
    if (traits.needs_said && !has_said) throw step.error("no step `spbox` comes before it");
    has = (has || traits.starts_command) && !traits.takes_terminal;
    has_said |= traits.names_verb;
  }
}

}  // namespace

std::string name_of_script(const fs::path &script) {
  return script == kStandardInput ? "standard input" : script.string();
}

void add_value(const std::string &word, Values &values) {
  const auto equals = word.find('=');
  const auto name = word.substr(0, equals);
  if (equals == std::string::npos || !is_name(name)) {
    throw std::invalid_argument("\"" + word + "\" gives no value: write NAME=VALUE");
  }
  values[name] = word.substr(equals + 1);
}

std::vector<Step> read_plan(const fs::path &script, const Values &values, const Verbs &verbs,
                            std::vector<fs::path> *played) {
  PlanReader reader(verbs, played);
  Scope scope;
  for (const auto &[name, value] : values) scope[name] = {{value, -1}};
  reader.read(script, scope, "", 1);
  check_boxes(reader.steps);
  check_order(reader.steps);
  return std::move(reader.steps);
}

bool has_step(const std::vector<Step> &plan, bool Traits::*trait) {
  return std::any_of(plan.begin(), plan.end(), [&](const Step &step) { return step.row->traits.*trait; });
}

}  // namespace play
