#include "host/spbox/help.h"

#include <algorithm>

#include "host/box/advice.h"

namespace spbox {
namespace {

// The verbs stand behind the examples: on a small screen, they are what stays in sight.
constexpr const char *kDescription =
    "A service processor in a folder, to run maintenance commands in and look after.\n\n"
    "  spbox create box --model qe1          a full, healthy server\n"
    "  spbox run box ./replace_unit          a maintenance command in it\n"
    "  spbox fault box /PSU#3                what a technician finds ...\n"
    "  spbox pull box /PSU#3                 ... and does\n"
    "  spbox program box ctlled --exit 206   a control program that fails\n"
    "  spbox trace box --last 20             what the command left in the trace\n";
constexpr const char *kEnd =
    "Exit status: 0 done, 1 it could not be done, 2 the command line makes no sense;\n"
    "of `run`, the command's own.\n";

constexpr const char *kAtHand = "DIR may be left out where SPBOX is set to it, and in the box's folder.\n";

constexpr std::size_t kColumn = 20;

// Of a list: a name, and what it is, beside it or below it.
std::string item(const std::string &name, const std::string &help) {
  std::string text = "  " + name;
  if (text.size() >= kColumn) text += "\n" + std::string(kColumn, ' ');
  text.resize(std::max(text.size(), kColumn), ' ');
  for (const char c : help + "\n") text += c == '\n' ? "\n" + std::string(kColumn, ' ') : std::string(1, c);
  return text.substr(0, text.size() - kColumn);
}

bool is_repeated(const Word &word) {
  return std::holds_alternative<std::vector<std::string> *>(word.to) || std::holds_alternative<Rest>(word.to);
}

std::string with_value(const Word &word) {
  return word.value.empty() ? word.name : word.name + " " + word.value;
}

std::string section(const std::string &heading, const Verb &verb, bool options) {
  std::string items;
  for (const Word &word : verb.words) {
    if (word.is_option() == options && !word.is_hidden) items += item(with_value(word), word.help);
  }
  return items.empty() ? "" : "\n" + heading + ":\n" + items;
}

}  // namespace

std::string usage_of(const Verb &verb) {
  std::string words, rest, options;  // The words of another program stand last.
  bool has_more = false;
  for (const Word &word : verb.words) {
    const bool required = word.need == Need::kRequired && !word.is_box;  // there may be a box at hand
    if (!word.is_option()) {
      const std::string text = word.name + (is_repeated(word) ? "..." : "");
      const bool is_rest = std::holds_alternative<Rest>(word.to);
      (is_rest ? rest : words) += " " + (required ? text : "[" + text + "]");
    } else if (required) {
      options += " " + with_value(word);
    } else {
      has_more = true;
    }
  }
  return box::spbox_called("spbox") + " " + verb.name + (has_more ? " [OPTIONS]" : "") + words + options + rest;
}

std::string help_of(const Verb &verb) {
  return verb.line + "\n\nUsage: " + usage_of(verb) + "\n" + section("Arguments", verb, false) +
         section("Options", verb, true) + "\n" + verb.footer + "\n";
}

std::string description() {
  return kDescription;
}

std::string exit_statuses() {
  return kEnd;
}

std::string help_of_all(const std::vector<Verb> &verbs) {
  std::string text =
      std::string(kDescription) + "\nUsage: " + box::spbox_called("spbox") + " VERB [OPTIONS] ...\n\nVerbs:\n";
  for (const Verb &verb : verbs) text += item(verb.name, verb.line);
  return text + "\n" + box::advice({"help", "VERB"}) + " says more.\n" + box::advice({"--version"}) +
         " says which version this is.\n" + kAtHand + kEnd;
}

}  // namespace spbox
