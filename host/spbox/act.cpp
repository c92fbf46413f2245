#include "host/spbox/act.h"

#include <algorithm>
#include <exception>
#include <filesystem>
#include <new>
#include <optional>

#include "host/base/told.h"
#include "host/box/advice.h"
#include "host/box/box_error.h"
#include "host/box/confinement.h"
#include "host/recorder/deed.h"
#include "host/spbox/command_line.h"
#include "host/spbox/help.h"
#include "host/spbox/making.h"
#include "host/spbox/new_box.h"
#include "host/spbox/standard_output.h"
#include "host/spbox/steady_box.h"

namespace spbox {
namespace {

using Words = std::vector<std::string>;

// None where the verb takes none.
std::optional<box::Place> box_of(const Verb &verb) {
  for (const Word &word : verb.words) {
    if (word.is_box) return box::Place(*std::get<std::filesystem::path *>(word.to));
  }
  return std::nullopt;
}

// The words without the folder of the box.
Words behind(const box::Place &place, Words words) {
  const auto folder = std::ranges::find(words, place.root().string());
  if (folder != words.end()) words.erase(folder);
  return words;
}

int act_confined(const Verb &verb, const box::Place &place) {
  const SteadyBox steady(place);
  box::confine_to(place);
  try {
    return verb.act();
  } catch (const std::bad_alloc &) {
    throw;
  } catch (const std::exception &) {
    if (!steady.is_another()) throw;
    throw box::BoxError(place.root().string() + " was made anew meanwhile. Try again.");
  }
}

int show_help(const Verb &verb) {
  print(help_of(verb));
  return 0;
}

}  // namespace

int complain_of(const std::exception &error, const std::string &way_out, int status) {
  complain(base::told(error) + way_out);
  return status;
}

int act(const Verb &verb, const std::vector<std::string> &words) {
  try {
    if (read_line(verb, words) == Asked::kForHelp) return show_help(verb);
    const auto place = box_of(verb);
    if (place) clear_up_making(*place);
    if (verb.prepare) verb.prepare();
    recorder::Deed deed(place.value_or(box::Place("")),
                        place && verb.as_step ? verb.as_step(behind(*place, words)) : Words());
    const int status = verb.works_on_box && verb.acts_confined ? act_confined(verb, place.value()) : verb.act();
    if (status == 0) deed.was_done();
    return status;
  } catch (const UsageError &error) {
    return complain_of(error, " " + box::advice({"help", verb.name}) + " says more.", kUsage);
  }
}

}  // namespace spbox
