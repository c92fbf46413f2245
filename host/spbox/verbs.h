// The verbs of spbox.
#pragma once

#include <string>
#include <vector>

#include "host/spbox/verb.h"

namespace spbox {

Verb create_verb();
Verb run_verb();
Verb units_verb();
Verb show_verb();
Verb watch_verb();
Verb status_verb();
std::vector<Verb> change_verbs();  // pull, insert, fault, degrade, repair
Verb technician_verb();
Verb play_verb();
Verb test_verb();
Verb sweep_verb();
Verb record_verb();
Verb program_verb();
Verb daemon_verb();
Verb break_verb();
Verb mend_verb();
Verb heal_verb();
Verb edit_verb();
Verb times_verb();
Verb model_verb();
Verb deviate_verb();
Verb points_verb();
Verb trace_verb();
Verb log_verb();
Verb replay_verb();
Verb dump_verb();
Verb load_verb();
Verb new_verb();

// All of them, in the order of the help.
std::vector<Verb> all_verbs();

}  // namespace spbox
