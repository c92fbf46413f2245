// Steps that take a unit out of operation, have it exchanged by the technician, and bring it up again.
#include "include/lmainte_procedure.h"
#include "procedure/asking.h"
#include "procedure/beside.h"
#include "procedure/results.h"
#include "procedure/step.h"
#include "procedure/telling.h"
#include "procedure/text.h"
#include "procedure/words.h"
#include "procedure/work.h"

namespace lmainte::procedure {
namespace {

enum Expectation : uint32_t { kInPlace = 1, kGone = 2 };

// Until the unit is in place or gone, as it is expected, or the operator gives up.
int32_t await(lmainte_work &work, Expectation expectation, const char *request, const char *not_so) {
  constexpr int32_t kLongest = 15;  // seconds; the library looks for fourteen
  for (;;) {
    const int32_t outcome = confirm(text_of(words(request), work.name()).view());
    if (outcome != LMAINTE_OUTCOME_DONE) return outcome;
    AnyRecord seen{};
    const int32_t result = with_progress(Text(words("Watching the unit ")), kLongest, [&] {
      return lmainte_chk_fru_install(expectation, work.kind.type, work.unit.record.number, work.server.model(), &seen);
    });
    if (result == LMAINTE_OK) {
      work.take(seen);
      return LMAINTE_OUTCOME_DONE;
    }
    if (result != LMAINTE_NOT_REACHED) return not_read(work, result);
    tell(text_of(words(not_so), work.name()).view());
  }
}

int32_t exchange(lmainte_work &work) {
  for (const lmainte_step step : {lmainte_step_detach, lmainte_step_take_out, lmainte_step_put_in}) {
    if (step == lmainte_step_detach && !work.condition.may_run()) continue;
    const int32_t outcome = step(&work);
    if (outcome != LMAINTE_OUTCOME_DONE) return outcome;
  }
  return LMAINTE_OUTCOME_DONE;
}

// Tests a whole board or a unit, links half a board. Returns the operation's result.
int32_t test(lmainte_work &work) {
  const bool is_half = work.kind.is_board() && !work.is_whole_board();
  if (is_half)
    lmainte_tell(words("The other unit of the board is missing, so %s is only linked now. The board is tested and "
                       "divided when the other unit is added."),
                 work.name());
  const Text message = text_of(is_half ? words("Linking %s ") : words("Testing %s "), work.name());
  return with_progress(message, work.time_to_bring_up(), [&] { return work.bring_up(); });
}

void tell_fault(const lmainte_work &work, int32_t result) {
  lmainte_tell(words("%s %s (result %d). Exchange it for another one."), work.name(), words(meaning_of(result).reason),
               result);
  if (!work.is_whole_board()) return;
  lmainte_tell(words("The test is of the whole board: the fault may be in its %s. A board on which a domain runs does "
                     "not pass its test either."),
               work.kind.type == LMAINTE_TYPE_CMU ? words("I/O unit") : words("CPU/memory unit"));
}

int32_t not_brought_up(const lmainte_work &work, int32_t result) {
  const char *const how = work.condition.value() == LMAINTE_CONDITION_HALF_PASSED
                              ? words("%s was not checked to the end")
                              : words("%s is not in operation");
  return failed(text_of(how, work.name()).view(), result);
}

}  // namespace
}  // namespace lmainte::procedure

using namespace lmainte::procedure;  // NOLINT(google-build-using-namespace): the steps are its face

int32_t lmainte_step_detach(lmainte_work *work) {
  if (lmainte_session_signal() != 0) return not_chosen(LMAINTE_OK);
  const int32_t result = with_progress(text_of(words("Taking %s out of operation "), work->name()),
                                       work->time_to_detach(), [&] { return work->detach(); });
  if (result == LMAINTE_OK) return LMAINTE_OUTCOME_DONE;
  const char *const how = work->condition.may_run() ? words("%s could not be taken out of operation")
                                                    : words("%s is out of operation, but could not be unlinked");
  return failed(text_of(how, work->name()).view(), result);
}

int32_t lmainte_step_take_out(lmainte_work *work) {
  if (work->condition.may_run()) {
    lmainte_tell(words("%s may be in operation, so it is not pulled out."), work->name());
    return LMAINTE_OUTCOME_FAILED;
  }
  const int32_t outcome = await(*work, kGone, noted("Pull out %s now. Type 1 when it is out, q to give up: "),
                                noted("%s is still in place."));
  if (outcome == LMAINTE_OUTCOME_DONE) work->condition.is_exchanged();
  return outcome;
}

int32_t lmainte_step_put_in(lmainte_work *work) {
  work->condition.is_exchanged();
  return await(*work, kInPlace, noted("Put in %s now. Type 1 when it is in place, q to give up: "),
               noted("%s is not in place, or did not stay there."));
}

// A place may hold the unit already, out of operation: then nobody has to put it in.
int32_t lmainte_step_put_in_if_missing(lmainte_work *work) {
  if (!work->unit.is_installed()) return lmainte_step_put_in(work);
  return confirm(text_of(words("%s is in place and out of operation.\nType 1 to test it and put it into operation, q "
                               "to give up: "),
                         work->name())
                     .view());
}

// A unit that is no good is exchanged until one is, or the operator gives up.
int32_t lmainte_step_bring_up(lmainte_work *work) {
  for (;;) {
    int32_t result = work->read();
    if (result != LMAINTE_OK) return not_read(*work, result);
    result = test(*work);
    if (result == LMAINTE_OK) {
      work->condition.is_good();
      return LMAINTE_OUTCOME_DONE;
    }
    if (!meaning_of(result).is_fault_of_unit) return not_brought_up(*work, result);
    tell_fault(*work, result);
    const int32_t outcome = exchange(*work);
    if (outcome != LMAINTE_OUTCOME_DONE) return outcome;
  }
}

// The unit is gone for good. The extended system boards of its board belong to no domain any more.
int32_t lmainte_step_give_up_parts(lmainte_work *work) {
  work->condition.is_good();
  if (work->division == 0) return LMAINTE_OUTCOME_DONE;
  const int32_t time = work->time(LMAINTE_CMD_DELETEBOARD);
  const int32_t result = with_late_progress(Text(words("Giving up the extended system boards ")), time, [&] {
    return lmainte_clear_xsb(work->division, time, &work->unit.record);
  });
  if (result == LMAINTE_OK) return LMAINTE_OUTCOME_DONE;
  Text command("/mgb/cli/usr/bin/deleteboard -q y -c unassign");
  for (int32_t part = 0; part < work->division; ++part) command.add_format(" %02u-%d", work->number(), part);
  advise(text_of(words("The extended system boards of %s are still assigned: %s.\nStop the domain that runs on them, "
                       "then give them up with:"),
                 work->name(), reason_of(result).c_str())
             .view(),
         command);
  return LMAINTE_OUTCOME_FAILED;
}
