#include "procedure/asking.h"

#include "include/lmainte_procedure.h"
#include "procedure/results.h"
#include "procedure/session.h"
#include "procedure/telling.h"
#include "procedure/text.h"
#include "procedure/words.h"

namespace lmainte::procedure {
namespace {

// The library's answer to a question. After Ctrl-Z and fg the question is asked again.
int32_t answer_to(std::string_view question, int32_t count, int32_t &choice) {
  constexpr size_t kRoomForAnswer = 4;
  const Text lines = in_lines(question, kColumns - kRoomForAnswer);
  // The library asks in 1023 bytes at most. What stands above the last line of a longer question is told.
  constexpr size_t kLongest = 1000;
  const size_t last = lines.view().size() > kLongest ? lines.view().rfind('\n') : std::string_view::npos;
  const size_t asked = last == std::string_view::npos ? 0 : last + 1;
  const Continued continued;
  int32_t result = LMAINTE_ASK_INTERRUPTED;
  while (result == LMAINTE_ASK_INTERRUPTED && lmainte_session_signal() == 0) {
    if (asked > 0) tell(lines.view().substr(0, last));
    result = lmainte_ask_select(count, &choice, "%s", lines.c_str() + asked);
  }
  return lmainte_session_signal() == 0 ? result : LMAINTE_ASK_INTERRUPTED;
}

int32_t nothing_to_choose() {
  tell(words("There is nothing to choose from."));
  return LMAINTE_OUTCOME_FAILED;
}

}  // namespace

int32_t not_chosen(int32_t result) {
  if (lmainte_session_signal() == 0 && result < 0)
    return failed(words("The question could not be asked"), result,
                  words("Start the procedure on the operator's terminal."));
  tell(lmainte_session_signal() != 0 ? words("Interrupted.") : words("Given up."));
  return LMAINTE_OUTCOME_GIVEN_UP;
}

int32_t choose(int32_t count, int32_t &choice, std::string_view question) {
  if (count < 1) return nothing_to_choose();
  const int32_t result = answer_to(question, count, choice);
  return result == LMAINTE_ASK_CHOSEN ? LMAINTE_OUTCOME_DONE : not_chosen(result);
}

int32_t choose_behind_table(int32_t count, int32_t &choice, std::string_view question) {
  if (count < 1) return nothing_to_choose();
  for (;;) {
    int32_t result = answer_to(question, count, choice);
    if (result == LMAINTE_ASK_CHOSEN) return LMAINTE_OUTCOME_DONE;
    if (result != LMAINTE_ASK_GAVE_UP) return not_chosen(result);
    int32_t gives_up = 0;
    result = answer_to(words("Nothing is changed yet. Type 1 to give up, 2 to go on: "), 2, gives_up);
    if (result != LMAINTE_ASK_CHOSEN || gives_up == 1) return not_chosen(result);
  }
}

int32_t confirm(std::string_view question) {
  int32_t choice = 0;
  return choose(1, choice, question);
}

}  // namespace lmainte::procedure

namespace procedure = lmainte::procedure;

int32_t lmainte_choose(int32_t count, int32_t *choice, const char *format, ...) {
  PROCEDURE_TEXT(question, format);
  return procedure::choose(count, *choice, question.view());
}

int32_t lmainte_choose_behind_table(int32_t count, int32_t *choice, const char *format, ...) {
  PROCEDURE_TEXT(question, format);
  return procedure::choose_behind_table(count, *choice, question.view());
}

int32_t lmainte_confirm(const char *format, ...) {
  PROCEDURE_TEXT(question, format);
  return procedure::confirm(question.view());
}
