// How the operator is asked, and how they give up. The questions are in steps.h.
#pragma once

#include <csignal>
#include <cstdint>
#include <string>

#include "../graceful.h"
#include "lmainte.h"
#include "lmainte_host.h"
#include "results.h"
#include "telling.h"

namespace procedure {

// The operator typed q, the input ended, a signal came, or the terminal failed.
inline Outcome not_chosen(int32_t result) {
  if (graceful::signal() == 0 && result < 0)
    return failed("The question could not be asked", result, "Start the procedure on the operator's terminal.");
  tell(graceful::signal() != 0 ? "Interrupted." : "Given up.");
  return kGaveUp;
}

// The library's answer to a question. After Ctrl-Z and fg the question is asked again.
inline int32_t answer_to(const std::string &question, int32_t count, int32_t &choice) {
  constexpr size_t kRoomForAnswer = 4;
  const std::string lines = in_lines(question, kColumns - kRoomForAnswer);
  const graceful::Continued continued;
  int32_t result = LMAINTE_HOST_INTERRUPTED;
  while (result == LMAINTE_HOST_INTERRUPTED && graceful::signal() == 0)
    result = lmainte_ask_select(count, &choice, "%s", lines.c_str());
  return graceful::signal() == 0 ? result : LMAINTE_HOST_INTERRUPTED;
}

// Asks for one of count choices: kDone with the operator's, or the way out.
template <class... Values>
Outcome ask(int32_t count, int32_t &choice, const char *format, Values... values) {
  const int32_t result = answer_to(text_of(format, values...), count, choice);
  return result == LMAINTE_HOST_CHOSEN ? kDone : not_chosen(result);
}

template <class... Values>
Outcome confirm(const char *format, Values... values) {
  int32_t choice = 0;
  return ask(1, choice, format, values...);
}

// The same behind a table in the pager: a q that was meant for the pager does not give up at once.
template <class... Values>
Outcome ask_behind_table(int32_t count, int32_t &choice, const char *format, Values... values) {
  for (;;) {
    int32_t result = answer_to(text_of(format, values...), count, choice);
    if (result == LMAINTE_HOST_CHOSEN) return kDone;
    if (result != LMAINTE_HOST_GAVE_UP) return not_chosen(result);
    int32_t gives_up = 0;
    result = answer_to("Nothing is changed yet. Type 1 to give up, 2 to go on: ", 2, gives_up);
    if (result != LMAINTE_HOST_CHOSEN || gives_up == 1) return not_chosen(result);
  }
}

}  // namespace procedure
