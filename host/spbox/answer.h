// What a verb answers to a script that gives --json: one object, whatever the verb.
#pragma once

#include <string>

#include "host/spbox/json.h"
#include "host/spbox/verb.h"

namespace spbox {

Word json_option();

// Whether this command line has it. From then on what is said is kept for the answer; errors are told on standard error, too.
bool is_for_script();

// What the verb shows: members of the answer.
void answer(Json::Object members);

// The same, and people get this text.
void show(Json::Object members, const std::string &text);

// Prints the answer of this verb, also of one that failed; nothing where none is wanted:
// {"exit_status": 0, "said": ["a sentence"], "verb": "pull", and what the verb shows}. Returns the exit status.
int with_answer(const std::string &verb, int exit_status);

}  // namespace spbox
