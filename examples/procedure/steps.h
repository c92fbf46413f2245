// The steps of which procedures are made, with all questions and sentences of the walk. A step is done, or it ends the work on
// the unit and says why.
#pragma once

#include <cstdint>
#include <string>

#include "../graceful.h"
#include "advice.h"
#include "asking.h"
#include "beside.h"
#include "lmainte.h"
#include "results.h"
#include "telling.h"
#include "unit_kinds.h"
#include "work.h"

namespace procedure {

using Step = Outcome (*)(Work &);

inline Outcome failed(const Work &work, const char *how, int32_t result) {
  return failed(std::string(work.unit.name()) + how, result);
}

inline Outcome not_read(const Work &work, int32_t result) {
  return failed(std::string("The state of ") + work.unit.name() + " could not be read", result, kTryAgain);
}

// What the procedure does to a unit, in words, by LMAINTE_EVENT_...
inline const char *verb_of(const Work &work) {
  constexpr const char *kWords[] = {"replace", "add", "remove"};
  return kWords[work.action];
}
inline const char *done_to(const Work &work) {
  constexpr const char *kWords[] = {"replaced", "added", "removed"};
  return kWords[work.action];
}

// Why the server refuses is plain only where the unit's place says so itself.
inline const char *reason_of_refusal(const Work &work, int32_t mode, int32_t result) {
  if (result == LMAINTE_FRU_REFUSED_2) return "the server cannot do without it";
  const bool is_in_place = work.unit.is_installed();
  if (is_in_place != (mode == LMAINTE_JUDGE_DELETE))
    return is_in_place ? "it is in place and in operation" : "it is not in place";
  return work.kind.is_board() && !work.server.is_high_end() ? "the server has to be off for it" : "the server refuses";
}

inline Outcome judge(Work &work, int32_t mode) {
  const int32_t time = work.time(LMAINTE_CMD_JUDGECTLFRU);
  const int32_t result = with_late_progress(std::string("Asking the server about ") + work.unit.name() + " ", time,
                                            [&] { return lmainte_judge_control_fru(mode, time, &work.unit.record); });
  if (result == LMAINTE_OK) return kDone;
  if (result != LMAINTE_FRU_REFUSED && result != LMAINTE_FRU_REFUSED_2)
    return failed(work, " could not be judged", result);
  tell("%s may not be %s now: %s.", work.unit.name(), done_to(work), reason_of_refusal(work, mode, result));
  return kRefused;
}

inline Outcome may_be_removed(Work &work) {
  return judge(work, LMAINTE_JUDGE_DELETE);
}

// A unit that is in place and faulty would only fail its test once more.
inline Outcome may_be_added(Work &work) {
  const Outcome outcome = judge(work, LMAINTE_JUDGE_ADD);
  if (outcome != kDone || !work.unit.is_installed() || !work.unit.is_faulted()) return outcome;
  advise(text_of("%s is in place and faulted, so nothing can be added there. To exchange it for another one, start:",
                 work.unit.name()),
         procedure_command("replace_unit", work.kind.word));
  return kRefused;
}

// What runs on a board is told. A board without a fault is not taken out of operation without a question.
inline Outcome tell_what_runs(Work &work) {
  if (!work.kind.is_board() || !work.server.is_high_end()) return kDone;
  std::string domains;
  const int32_t result = read_domains(work.server, work.unit.record.number, domains);
  if (result != LMAINTE_OK) return failed("The domains could not be read", result, kTryAgain);
  if (domains.empty()) return kDone;
  if (!work.unit.is_healthy()) {
    tell("%s is in use by %s, where other boards take over.\n", work.unit.name(), domains.c_str());
    return kDone;
  }
  int32_t choice = 0;
  return ask_behind_table(1, choice,
                          "%s has no fault, and is in use by %s.\nType 1 to %s it all the same, q to give up: ",
                          work.unit.name(), domains.c_str(), verb_of(work));
}

// So that the technician finds it, and nobody else touches it.
inline Outcome mark(Work &work) {
  if (graceful::signal() != 0) return not_chosen(LMAINTE_OK);
  const int32_t result = work.mark();
  if (result == LMAINTE_BUSY || result == LMAINTE_FLAG_REFUSED) {
    tell("%s may have a maintenance flag already: another procedure is at work on it, or left the flag behind.",
         work.unit.name());
    advise("If nobody works on the unit, take its flag away with:",
           program_command("setmainteflag", work.unit.name(), "end"));
    return kRefused;
  }
  if (result != LMAINTE_OK) return failed(work, " could not be marked", result);
  const int32_t marked = lmainte_add_swap_fru_to_list(work.type(), work.number());
  if (marked < 0) return not_read(work, marked);
  tell("The LED of %s blinks, and its maintenance flag is set.", work.unit.name());
  return kDone;
}

inline Outcome detach(Work &work) {
  if (graceful::signal() != 0) return not_chosen(LMAINTE_OK);
  const int32_t result = with_progress(std::string("Taking ") + work.unit.name() + " out of operation ",
                                       work.time_to_detach(), [&] { return work.detach(); });
  if (result == LMAINTE_OK) return kDone;
  return failed(work,
                work.may_be_in_operation() ? " could not be taken out of operation"
                                           : " is out of operation, but could not be unlinked",
                result);
}

// Until the unit is in place or gone, as it is expected, or the operator gives up.
inline Outcome await(Work &work, uint32_t expectation, const char *request, const char *not_so) {
  constexpr int32_t kLongest = 15;  // seconds; the library looks for fourteen
  for (;;) {
    if (const Outcome outcome = confirm(request, work.unit.name()); outcome != kDone) return outcome;
    const int32_t result = with_progress("Watching the unit ", kLongest, [&] {
      return lmainte_chk_fru_install(expectation, work.kind.type, work.unit.record.number, work.server.model(),
                                     &work.record);
    });
    if (result == LMAINTE_OK) return kDone;
    if (result != LMAINTE_NOT_REACHED) return not_read(work, result);
    tell(not_so, work.unit.name());
  }
}

inline Outcome take_out(Work &work) {
  constexpr uint32_t kGone = 2;
  return await(work, kGone, "Pull out %s now. Type 1 when it is out, q to give up: ", "%s is still in place.");
}

inline Outcome put_in(Work &work) {
  constexpr uint32_t kInPlace = 1;
  work.expect_another();
  return await(work, kInPlace, "Put in %s now. Type 1 when it is in place, q to give up: ",
               "%s is not in place, or did not stay there.");
}

// A place may hold the unit already, out of operation: then nobody has to put it in.
inline Outcome put_in_if_missing(Work &work) {
  if (!work.unit.is_installed()) return put_in(work);
  return confirm("%s is in place and out of operation.\nType 1 to test it and put it into operation, q to give up: ",
                 work.unit.name());
}

// How a board is to be used: as one extended system board, as one whose memory is mirrored or, with three uses, as four.
inline Outcome choose_use(Work &work, int32_t uses) {
  int32_t choice = 0;
  const Outcome outcome =
      ask_behind_table(uses, choice,
                       "1. One extended system board (XSB)\n2. One XSB, and its memory is mirrored\n%s"
                       "How is the board of %s to be used? Type %s, q to give up: ",
                       uses == 3 ? "3. Four XSBs\n" : "", work.unit.name(), uses == 3 ? "1, 2 or 3" : "1 or 2");
  if (outcome != kDone) return outcome;
  work.division = choice == 3 ? 4 : 1;
  work.is_mirrored = choice == 2;
  return kDone;
}

// Of a board that is added. It is divided once both its units are there.
inline Outcome choose_division(Work &work) {
  return work.division == 0 ? kDone : choose_use(work, 3);
}

// Of a board that is replaced, as far as the inventory does not tell. A half of one is not divided.
inline Outcome choose_mirroring(Work &work) {
  return work.division == 1 && work.is_whole_board() ? choose_use(work, 2) : kDone;
}

inline Outcome exchange(Work &work) {
  if (work.may_be_in_operation())
    if (const Outcome outcome = detach(work); outcome != kDone) return outcome;
  if (const Outcome outcome = take_out(work); outcome != kDone) return outcome;
  return put_in(work);
}

// A unit that is no good is exchanged until one is, or the operator gives up.
inline Outcome bring_up(Work &work) {
  for (;;) {
    int32_t result = work.read();
    if (result != LMAINTE_OK) return not_read(work, result);
    const bool is_half = work.kind.is_board() && !work.is_whole_board();
    if (is_half)
      tell(
          "The other unit of the board is missing, so %s is only linked now. The board is tested and divided when the "
          "other unit is added.",
          work.unit.name());
    result = with_progress((is_half ? "Linking " : "Testing ") + std::string(work.unit.name()) + " ",
                           work.time_to_bring_up(), [&] { return work.bring_up(); });
    if (result == LMAINTE_OK) {
      work.settle();
      return kDone;
    }
    const Meaning &meaning = meaning_of(result);
    if (!meaning.is_fault_of_unit)
      return failed(work, work.has_passed() ? " was not checked to the end" : " is not in operation", result);
    tell("%s %s (result %d). Exchange it for another one.", work.unit.name(), meaning.reason, result);
    if (work.is_whole_board())
      tell(
          "The test is of the whole board: the fault may be in its %s. A board on which a domain runs does not pass "
          "its test either.",
          work.kind.type == LMAINTE_TYPE_CMU ? "I/O unit" : "CPU/memory unit");
    if (const Outcome outcome = exchange(work); outcome != kDone) return outcome;
  }
}

// The unit is gone for good. The extended system boards of its board belong to no domain any more.
inline Outcome give_up_parts(Work &work) {
  work.settle();
  if (work.division == 0) return kDone;
  const int32_t time = work.time(LMAINTE_CMD_DELETEBOARD);
  const int32_t result = with_late_progress("Giving up the extended system boards ", time,
                                            [&] { return lmainte_clear_xsb(work.division, time, &work.unit.record); });
  if (result == LMAINTE_OK) return kDone;
  std::string command = "/mgb/cli/usr/bin/deleteboard -q y -c unassign";
  for (int32_t part = 0; part < work.division; ++part) command += text_of(" %02u-%d", work.number(), part);
  advise(
      text_of("The extended system boards of %s are still assigned: %s.\nStop the domain that runs on them, then give "
              "them up with:",
              work.unit.name(), reason_of(result).c_str()),
      command);
  return kFailed;
}

inline Outcome unmark(Work &work) {
  if (!work.take_back()) return kFailed;
  const int32_t left = lmainte_delete_swap_fru_from_list(work.type(), work.number());
  tell("The LED and the maintenance flag of %s are off.", work.unit.name());
  if (left > 0) tell("More units are marked for replacement: %d.", left);
  tell(std::string());
  return kDone;
}

inline Outcome show_state(Work &work) {
  int32_t result = work.read();
  if (result != LMAINTE_OK) return not_read(work, result);
  const ListLine lines[] = {{LMAINTE_LINE_HEAD, "Unit          State\n", 0, {}}, {LMAINTE_LINE_END, nullptr, 0, {}}};
  result = graceful::after_pager(work.kind.show_status(work.record, lines));
  if (result != LMAINTE_OK) return failed("The unit's state could not be shown", result, kCheckPager);
  tell(std::string());
  return kDone;
}

// The log has the event.
inline Outcome record(Work &work) {
  const EventUnit event = {{}, {work.unit.record.ident[0], work.unit.record.ident[1]}, {}, 0};
  const int32_t result = lmainte_send_event(work.action, work.kind.event_kind, &event);
  if (result != LMAINTE_OK) return failed("The log has no record of this", result, "Is the disk of the log full?");
  tell("%s is %s.", work.unit.name(), done_to(work));
  return kDone;
}

}  // namespace procedure
