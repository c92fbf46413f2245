#include "host/spbox/verbs.h"

namespace spbox {

std::vector<Verb> all_verbs() {
  std::vector<Verb> all{create_verb(), run_verb(), units_verb(), show_verb(), watch_verb(), status_verb()};
  for (Verb &change : change_verbs()) all.push_back(std::move(change));
  for (Verb (*verb)() : {technician_verb, play_verb,  test_verb, sweep_verb, record_verb, program_verb, daemon_verb,
                         break_verb,      mend_verb,  heal_verb, edit_verb,  times_verb,  model_verb,   deviate_verb,
                         points_verb,     trace_verb, log_verb,  dump_verb,  load_verb,   new_verb}) {
    all.push_back(verb());
  }
  return all;
}

}  // namespace spbox
