// Steps that mark a unit, and the last ones: its marks are taken back, and the log has the event.
#include "include/lmainte_procedure.h"
#include "procedure/asking.h"
#include "procedure/results.h"
#include "procedure/step.h"
#include "procedure/telling.h"
#include "procedure/text.h"
#include "procedure/words.h"
#include "procedure/work.h"

using namespace lmainte::procedure;  // NOLINT(google-build-using-namespace): the steps are its face

// So that the technician finds it, and nobody else touches it.
int32_t lmainte_step_mark(lmainte_work *work) {
  if (lmainte_session_signal() != 0) return not_chosen(LMAINTE_OK);
  if (work->marks.are_set()) return LMAINTE_OUTCOME_DONE;
  const int32_t result = work->marks.set();
  if (result == LMAINTE_BUSY || result == LMAINTE_FLAG_REFUSED) {
    lmainte_tell(words("%s may have a maintenance flag already: another procedure is at work on it, or left the flag "
                       "behind."),
                 work->name());
    advise(words("If nobody works on the unit, take its flag away with:"),
           program_command("setmainteflag", work->name(), "end"));
    return LMAINTE_OUTCOME_REFUSED;
  }
  if (result != LMAINTE_OK) return failed(text_of(words("%s could not be marked"), work->name()).view(), result);
  const int32_t marked = lmainte_add_swap_fru_to_list(work->type(), work->number());
  if (marked < 0) return not_read(*work, marked);
  lmainte_tell(words("The LED of %s blinks, and its maintenance flag is set."), work->name());
  return LMAINTE_OUTCOME_DONE;
}

int32_t lmainte_step_unmark(lmainte_work *work) {
  if (!work->take_marks_back()) return LMAINTE_OUTCOME_FAILED;
  lmainte_tell(words("The LED and the maintenance flag of %s are off."), work->name());
  if (work->marked_units() > 0) lmainte_tell(words("More units are marked for replacement: %d."), work->marked_units());
  tell("");
  return LMAINTE_OUTCOME_DONE;
}

int32_t lmainte_step_record(lmainte_work *work) {
  if (work->procedure.action == LMAINTE_ACTION_NONE) {
    lmainte_tell(words("%s is %s."), work->name(), words(work->procedure.done));
    return LMAINTE_OUTCOME_DONE;
  }
  const EventUnit event = {{}, {work->unit.record.ident[0], work->unit.record.ident[1]}, {}, 0};
  const int32_t result = lmainte_send_event(work->procedure.action, work->kind.event_kind, &event);
  lmainte_tell(words("%s is %s."), work->name(), words(work->procedure.done));
  return result == LMAINTE_OK ? LMAINTE_OUTCOME_DONE
                              : failed(words("The log has no record of this"), result, check_log());
}
