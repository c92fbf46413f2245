#include "host/spbox/command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>

#include "host/base/listed.h"
#include "host/base/number.h"
#include "host/box/advice.h"
#include "host/spbox/box_at_hand.h"
#include "host/spbox/help.h"
#include "host/spbox/spelling.h"

namespace spbox {
namespace {

using Words = std::vector<std::string>;

[[noreturn]] void refuse(const std::string &what) {
  throw UsageError(what);
}

// What was given for a row: its values, or none where it was not given.
struct Given {
  const Word *row;
  Words values;
  CLI::Option *option;
};

bool is_option(const std::string &word) {
  return word.size() > 1 && word.front() == '-';
}

// The rows of the words that have their place, in their order.
std::vector<const Word *> places_of(const Verb &verb) {
  std::vector<const Word *> places;
  for (const Word &row : verb.words) {
    if (!row.is_option()) places.push_back(&row);
  }
  return places;
}

bool is_rest(const Word &row) {
  return std::holds_alternative<Rest>(row.to);
}

// Where the words stand that have their place: neither options nor their values. Of a verb that runs another program, they end
// before "--"; of any other, only they follow it.
std::vector<std::size_t> placed_words(const Verb &verb, const Words &line) {
  const bool has_rest = std::ranges::any_of(verb.words, is_rest);
  const auto takes_value = [&](const std::string &word) {
    return std::ranges::any_of(verb.words,
                               [&](const Word &known) { return known.name == word && !known.value.empty(); });
  };
  std::vector<std::size_t> placed;
  bool options_may_come = true;
  for (std::size_t at = 0; at < line.size(); ++at) {
    if (options_may_come && line[at] == "--") {
      if (has_rest) break;
      options_may_come = false;
    } else if (!options_may_come || !is_option(line[at])) {
      placed.push_back(at);
    } else if (takes_value(line[at])) {
      ++at;
    }
  }
  return placed;
}

// Whether the box stands in a line with these words: the one in its place is a folder, or there are enough for all places. An empty
// one is a variable that is not set.
bool names_box(const std::vector<const Word *> &places, std::size_t of_box, const Words &words) {
  std::error_code gone;
  if (words.size() <= of_box) return false;
  if (words[of_box].empty() || std::filesystem::is_directory(words[of_box], gone)) return true;
  const bool takes_any_number = std::ranges::any_of(
      places, [](const Word *row) { return is_rest(*row) || std::holds_alternative<Words *>(row->to); });
  return !takes_any_number && words.size() >= places.size();
}

// Puts the box at hand where the line names none, and the verb needs one.
void add_box_at_hand(const Verb &verb, Words &line) {
  const auto places = places_of(verb);
  const auto row = std::ranges::find_if(places, [](const Word *word) { return word->is_box; });
  if (row == places.end()) return;
  const auto of_box = static_cast<std::size_t>(row - places.begin());
  const auto placed = placed_words(verb, line);
  Words words;
  for (const std::size_t at : placed) words.push_back(line[at]);
  if (names_box(places, of_box, words)) return;
  const auto box = box_at_hand();
  if (!box) return;
  const std::size_t at = of_box == 0 ? 0 : placed.size() > of_box ? placed[of_box] : line.size();
  line.insert(line.begin() + static_cast<std::ptrdiff_t>(at), (is_option(box->string()) ? "./" : "") + box->string());
}

// Takes the words of another program off the line: they begin behind the words that have their place before them, or
// behind "--".
Words take_rest(const Verb &verb, Words &line) {
  const auto places = places_of(verb);
  const auto row = std::ranges::find_if(places, [](const Word *word) { return is_rest(*word); });
  if (row == places.end()) return {};
  const auto placed = placed_words(verb, line);
  const auto before = static_cast<std::size_t>(row - places.begin());
  auto at = placed.size() > before ? line.begin() + static_cast<std::ptrdiff_t>(placed[before])
                                   : std::ranges::find(line, "--");
  Words rest(at, line.end());
  line.erase(at, line.end());
  if (!rest.empty() && rest.front() == "--") rest.erase(rest.begin());
  return rest;
}

Words option_names(const Verb &verb) {
  Words names{"--help"};
  for (const Word &row : verb.words) {
    if (row.is_option()) names.push_back(row.name);
  }
  return names;
}

// What the parser could not place: options that there are not come before words too many. Behind "--" stand no options.
void refuse_leftovers(const Verb &verb, Words left) {
  const auto end_of_options = std::find(left.begin(), left.end(), "--");
  const auto option = std::find_if(left.begin(), end_of_options, is_option);
  if (option != end_of_options) {
    const std::string name = option->substr(0, option->find('='));
    refuse(box::advice({verb.name}) + " has no option " + name + "." + did_you_mean(name, option_names(verb)));
  }
  if (end_of_options != left.end()) left.erase(end_of_options);
  if (!left.empty()) refuse("`" + left.front() + "` is one word too many for `" + usage_of(verb) + "`.");
}

// A line ends behind an option that takes a value, or a value is given to one that takes none.
void refuse_mismatch(const Verb &verb, const Words &line) {
  for (const Word &row : verb.words) {
    if (!row.value.empty() && line.back() == row.name)
      refuse(row.name + " takes a value: " + row.name + " " + row.value + ".");
    for (const std::string &word : line) {
      if (row.value.empty() && word.starts_with(row.name + "=")) refuse(row.name + " takes no value.");
    }
  }
  refuse("`" + usage_of(verb) + "` is how it is written.");
}

// Puts what was given for a row where it goes.
class Taking {
 public:
  explicit Taking(const Given &given)
      : name_(given.row->name), values_(given.values), is_folder_((name_ + given.row->value).ends_with("DIR")) {}

  void operator()(bool *to) const { *to = true; }
  void operator()(std::string *to) const {
    if (is_option(name_) && values_.back().empty()) refuse_empty();
    *to = values_.back();
  }
  void operator()(Words *to) const { *to = values_; }
  void operator()(const Rest &rest) const {
    if (values_.front().empty()) refuse_empty();
    *rest.to = values_;
  }
  void operator()(std::filesystem::path *to) const {
    if (values_.back().empty()) refuse_empty();
    *to = (is_option(values_.back()) ? "./" : "") + values_.back();  // such a word came behind "--": advice repeats it
  }
  void operator()(const Number &number) const {
    const auto value = base::number_in<std::int64_t>(values_.back());
    if (!value || *value < number.least || *value > number.most) {
      refuse(name_ + " takes a number from " + std::to_string(number.least) + " to " + std::to_string(number.most) +
             ", not `" + values_.back() + "`.");
    }
    number.take(*value);
  }
  void operator()(const Choice &choice) const {
    const std::string &value = values_.back();
    if (std::find(choice.names.begin(), choice.names.end(), value) == choice.names.end()) {
      refuse("there is no " + choice.what + " `" + value + "`. Give " + base::listed(choice.names, " or ") + ".");
    }
    *choice.to = value;
  }

 private:
  [[noreturn]] void refuse_empty() const {
    refuse(name_ + " is empty. Is a variable not set?" + (is_folder_ ? " The current folder is a dot." : ""));
  }

  const std::string &name_;
  const Words &values_;
  bool is_folder_;
};

bool was_given(const std::vector<Given> &all, const std::string &name) {
  return std::any_of(all.begin(), all.end(),
                     [&](const Given &given) { return given.row->name == name && !given.values.empty(); });
}

void judge(const Verb &verb, const std::vector<Given> &all) {
  for (const Given &given : all) {
    const Word &row = *given.row;
    if (given.values.empty()) {
      if (row.is_box) refuse("no box is named. Give its folder, set SPBOX to it, or go there.");
      if (row.need == Need::kRequired) refuse(row.name + " is missing, as in `" + usage_of(verb) + "`.");
      continue;
    }
    if (row.is_option() && !row.value.empty() && given.values.size() > 1) refuse(row.name + " is given twice.");
    for (const std::string &other : row.excludes) {
      if (was_given(all, other)) refuse(row.name + " and " + other + " cannot be given together.");
    }
  }
}

void take(const std::vector<Given> &all, bool flags) {
  for (const Given &given : all) {
    const bool is_flag = std::holds_alternative<bool *>(given.row->to);
    if (is_flag == flags && !given.values.empty()) std::visit(Taking(given), given.row->to);
  }
}

void add_to(CLI::App &app, Given &given) {
  const Word &row = *given.row;
  if (std::holds_alternative<bool *>(row.to)) {
    given.option = app.add_flag(row.name)->disable_flag_override();
    return;
  }
  given.option = app.add_option(row.name, given.values);
  if (!std::holds_alternative<Words *>(row.to)) given.option->expected(1)->allow_extra_args(false);
  given.option->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

}  // namespace

Asked read_line(const Verb &verb, Words line) {
  add_box_at_hand(verb, line);
  Words rest = take_rest(verb, line);
  bool help = false;
  CLI::App app;
  app.set_help_flag("");
  app.add_flag("-h,--help", help);
  app.allow_extras();
  std::vector<Given> all;
  for (const Word &row : verb.words) all.push_back({&row, {}, nullptr});
  for (Given &given : all) {
    if (!std::holds_alternative<Rest>(given.row->to)) add_to(app, given);
  }
  try {
    app.parse(Words(line.rbegin(), line.rend()));  // it takes them from behind
  } catch (const CLI::ParseError &) {
    refuse_mismatch(verb, line);
  }
  if (help) return Asked::kForHelp;
  refuse_leftovers(verb, app.remaining());
  for (Given &given : all) {
    if (std::holds_alternative<Rest>(given.row->to)) given.values = rest;
    if (std::holds_alternative<bool *>(given.row->to) && given.option->count() > 0) given.values = {"given"};
  }
  take(all, true);  // --json says how it is told that the rest makes no sense
  judge(verb, all);
  take(all, false);
  if (verb.check) verb.check();
  return Asked::kToAct;
}

}  // namespace spbox
