#include "host/spbox/verbs.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "host/spbox/answer.h"

namespace spbox {

namespace {

// The output of these is a command's, or a play's, or fills the terminal. `spbox test` and `spbox sweep` report as JSON in a file.
constexpr std::array<std::string_view, 6> kWithoutAnswer{"run", "watch", "play", "test", "sweep", "record"};

}  // namespace

std::vector<Verb> all_verbs() {
  std::vector<Verb> all{create_verb(), run_verb(), units_verb(), show_verb(), watch_verb(), status_verb()};
  for (Verb &change : change_verbs()) all.push_back(std::move(change));
  for (Verb (*verb)() : {technician_verb, play_verb,  test_verb, sweep_verb,  record_verb, program_verb, daemon_verb,
                         break_verb,      mend_verb,  heal_verb, edit_verb,   times_verb,  model_verb,   deviate_verb,
                         points_verb,     trace_verb, log_verb,  replay_verb, dump_verb,   load_verb,    new_verb}) {
    all.push_back(verb());
  }
  for (Verb &verb : all) {
    if (std::ranges::find(kWithoutAnswer, verb.name) == kWithoutAnswer.end()) verb.words.push_back(json_option());
  }
  return all;
}

}  // namespace spbox
