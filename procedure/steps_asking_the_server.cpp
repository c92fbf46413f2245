// Steps that change nothing: may it be done, what runs there, how is the unit, how is a board to be used.
#include "include/lmainte_procedure.h"
#include "procedure/asking.h"
#include "procedure/beside.h"
#include "procedure/kinds.h"
#include "procedure/results.h"
#include "procedure/step.h"
#include "procedure/telling.h"
#include "procedure/text.h"
#include "procedure/words.h"
#include "procedure/work.h"

namespace lmainte::procedure {

int32_t not_read(const lmainte_work &work, int32_t result) {
  return failed(text_of(words("The state of %s could not be read"), work.name()).view(), result, try_again());
}

namespace {

// Why the server refuses is plain only where the unit's place says so itself.
const char *reason_of_refusal(const lmainte_work &work, int32_t mode, int32_t result) {
  if (result == LMAINTE_FRU_REFUSED_2) return words("the server cannot do without it");
  const bool is_in_place = work.unit.is_installed();
  if (is_in_place != (mode == LMAINTE_JUDGE_DELETE))
    return is_in_place ? words("it is in place and in operation") : words("it is not in place");
  return work.kind.is_board() && !work.server.is_high_end() ? words("the server has to be off for it")
                                                            : words("the server refuses");
}

int32_t judge(const lmainte_work &work, int32_t mode) {
  const int32_t time = work.time(LMAINTE_CMD_JUDGECTLFRU);
  const int32_t result = with_late_progress(text_of(words("Asking the server about %s "), work.name()), time,
                                            [&] { return lmainte_judge_control_fru(mode, time, &work.unit.record); });
  if (result == LMAINTE_OK) return LMAINTE_OUTCOME_DONE;
  if (result != LMAINTE_FRU_REFUSED && result != LMAINTE_FRU_REFUSED_2)
    return failed(text_of(words("The server could not be asked about %s"), work.name()).view(), result);
  lmainte_tell(words("%s may not be %s now: %s."), work.name(), words(work.procedure.done),
               reason_of_refusal(work, mode, result));
  return LMAINTE_OUTCOME_REFUSED;
}

// How a board is to be used: as one extended system board, as one whose memory is mirrored or, with three uses, as four.
int32_t choose_use(lmainte_work &work, int32_t uses) {
  int32_t choice = 0;
  const bool may_be_divided = uses == 3;
  const Text question = text_of(words("1. One extended system board (XSB)\n2. One XSB, and its memory is mirrored\n%s"
                                      "How is the board of %s to be used? Type %s, q to give up: "),
                                may_be_divided ? words("3. Four XSBs\n") : "", work.name(),
                                may_be_divided ? words("1, 2 or 3") : words("1 or 2"));
  const int32_t outcome = choose_behind_table(uses, choice, question.view());
  if (outcome != LMAINTE_OUTCOME_DONE) return outcome;
  work.division = choice == 3 ? 4 : 1;
  work.is_mirrored = choice == 2;
  return LMAINTE_OUTCOME_DONE;
}

}  // namespace
}  // namespace lmainte::procedure

using namespace lmainte::procedure;  // NOLINT(google-build-using-namespace): the steps are its face

int32_t lmainte_step_may_be_removed(lmainte_work *work) {
  return judge(*work, LMAINTE_JUDGE_DELETE);
}

int32_t lmainte_step_may_be_added(lmainte_work *work) {
  const int32_t outcome = judge(*work, LMAINTE_JUDGE_ADD);
  if (outcome != LMAINTE_OUTCOME_DONE || !work->unit.is_installed() || !work->unit.is_faulted()) return outcome;
  advise(text_of(words("%s is in place and faulted, so nothing can be added there. To exchange it for another one, "
                       "start:"),
                 work->name())
             .view(),
         procedure_command("replace_unit", work->kind.word));
  return LMAINTE_OUTCOME_REFUSED;
}

int32_t lmainte_step_show_state(lmainte_work *work) {
  int32_t result = work->read();
  if (result != LMAINTE_OK) return not_read(*work, result);
  const ListLine lines[] = {{LMAINTE_LINE_HEAD, words("Unit          State\n"), 0, {}},
                            {LMAINTE_LINE_END, nullptr, 0, {}}};
  result = lmainte_session_shown(work->kind.show_status(work->record, lines));
  if (result != LMAINTE_OK) return failed(words("The unit's state could not be shown"), result, check_pager());
  tell("");
  return LMAINTE_OUTCOME_DONE;
}

int32_t lmainte_step_tell_what_runs(lmainte_work *work) {
  if (!work->kind.is_board() || !work->server.is_high_end()) return LMAINTE_OUTCOME_DONE;
  Text domains;
  const int32_t result = read_domains(work->server, work->unit.record.number, domains);
  if (result != LMAINTE_OK) return failed(words("The domains could not be read"), result, try_again());
  if (domains.view().empty()) return LMAINTE_OUTCOME_DONE;
  if (!work->unit.is_healthy()) {
    lmainte_tell(words("%s is in use by %s, where other boards take over.\n"), work->name(), domains.c_str());
    return LMAINTE_OUTCOME_DONE;
  }
  int32_t choice = 0;
  return choose_behind_table(
      1, choice,
      text_of(words("%s has no fault, and is in use by %s.\nType 1 to %s it all the same, q to give up: "),
              work->name(), domains.c_str(), words(work->procedure.verb))
          .view());
}

// Of a board that is added. It is divided once both its units are there.
int32_t lmainte_step_choose_division(lmainte_work *work) {
  return work->division == 0 ? LMAINTE_OUTCOME_DONE : choose_use(*work, 3);
}

// Of a board that is replaced, as far as the inventory does not tell. A half of one is not divided.
int32_t lmainte_step_choose_mirroring(lmainte_work *work) {
  return work->division == 1 && work->is_whole_board() ? choose_use(*work, 2) : LMAINTE_OUTCOME_DONE;
}
