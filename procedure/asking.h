// How the operator is asked, and how they give up.
#pragma once

#include <cstdint>
#include <string_view>

namespace lmainte::procedure {

// The operator typed q, the input ended, a signal came, or the terminal failed: tells it, and returns the step's outcome.
int32_t not_chosen(int32_t result);

// Asks for one of count choices. LMAINTE_OUTCOME_DONE with the operator's, or the way out.
int32_t choose(int32_t count, int32_t &choice, std::string_view question);

// The same behind a table in the pager: a q that was meant for the pager does not give up at once.
int32_t choose_behind_table(int32_t count, int32_t &choice, std::string_view question);

int32_t confirm(std::string_view question);

}  // namespace lmainte::procedure
