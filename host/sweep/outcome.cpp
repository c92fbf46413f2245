#include "host/sweep/outcome.h"

#include "host/base/number.h"
#include "host/base/shown.h"
#include "host/script/script.h"

namespace sweep {
namespace {

std::string told(const char *what, const std::string &text) {
  return script::as_line({what, text}) + "\n";
}

}  // namespace

std::string text_of(const Course &course, const std::vector<Fault> &faults, const std::vector<std::size_t> &followers) {
  std::string text = told("happened", course.happened ? "yes" : "no");
  for (const std::size_t number : followers) text += told("follower", std::to_string(number));
  for (const std::string &line : course.played) text += faults.empty() ? "" : told("played", line);
  for (const Fault &fault : faults) {
    text += told("fault", fault.what);
    for (const std::string &line : fault.shown_by) text += told("shown", line);
  }
  return text + "end\n";
}

Outcome outcome_in(const std::string &text) {
  Outcome outcome;
  script::Reader reader(text, "a replay", {.has_quotes = true, .has_semicolons = false});
  while (const auto statement = reader.next()) {
    const auto &words = statement->words;
    if (words[0] == "end") outcome.is_told = true;
    if (words.size() < 2) continue;
    if (words[0] == "happened") outcome.happened = words[1] == "yes";
    if (words[0] == "follower") outcome.followers.push_back(base::number_in<std::size_t>(words[1]).value_or(0));
    if (words[0] == "played") outcome.played.push_back(words[1]);
    if (words[0] == "fault") outcome.faults.push_back({words[1], {}});
    if (words[0] == "shown" && !outcome.faults.empty()) outcome.faults.back().shown_by.push_back(words[1]);
  }
  return outcome;
}

std::string finding_of(const std::string &headline, const Outcome &outcome, const Fault &fault) {
  std::string text =
      "# " + base::shown(headline) + "\n# " + base::shown(fault.what) + ".\n#\n#   spbox play --speed full THIS\n\n";
  for (const std::string &line : outcome.played) text += line + "\n";
  for (const std::string &line : fault.shown_by) text += line + "\n";
  return text;
}

}  // namespace sweep
