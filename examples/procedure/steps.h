// The steps of which procedures are made. A step is done, or it ends the work on the unit and says why.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

#include "../graceful.h"
#include "lmainte.h"
#include "telling.h"
#include "work.h"

namespace procedure {

using Step = Outcome (*)(Work &);

inline Outcome failed(const Work &work, const char *how, int32_t result) {
  return failed(std::string(work.unit.name()) + how, result, way_out_of(result));
}

inline Outcome not_read(const Work &work, int32_t result) {
  return failed(std::string("The state of ") + work.unit.name() + " could not be read", result, kTryAgain);
}

inline const char *done_to(const Work &work) {
  constexpr const char *kWords[] = {"replaced", "added", "removed"};  // by LMAINTE_EVENT_...
  return kWords[work.action];
}

// The server decides. Why it refuses is plain only where the unit's place says so itself.
inline Outcome judge(Work &work, int32_t mode) {
  const int32_t result = undisturbed(
      [&] { return lmainte_judge_control_fru(mode, work.time(LMAINTE_CMD_JUDGECTLFRU), &work.unit.record); });
  if (result == LMAINTE_OK) return kDone;
  if (result != LMAINTE_FRU_REFUSED && result != LMAINTE_FRU_REFUSED_2)
    return failed(work, " could not be judged", result);
  const bool is_in_place = work.unit.is_installed();
  const char *reason = is_in_place ? "it is in place" : "it is not in place";
  if (result == LMAINTE_FRU_REFUSED_2)
    reason = "the server cannot do without it";
  else if (is_in_place == (mode == LMAINTE_JUDGE_DELETE))
    reason =
        work.kind.is_board() && !work.server.is_high_end() ? "the server has to be off for it" : "the server refuses";
  std::printf("%s may not be %s now: %s.\n", work.unit.name(), done_to(work), reason);
  return kRefused;
}

inline Outcome may_be_removed(Work &work) {
  return judge(work, LMAINTE_JUDGE_DELETE);
}
inline Outcome may_be_added(Work &work) {
  return judge(work, LMAINTE_JUDGE_ADD);
}

// So that the technician finds it, and nobody else touches it.
inline Outcome mark(Work &work) {
  if (graceful::signal() != 0) return not_chosen(LMAINTE_OK);
  const int32_t result = work.mark();
  if (result == LMAINTE_BUSY || result == LMAINTE_FLAG_REFUSED) {
    std::printf(
        "%s may have a maintenance flag already:\nanother procedure is at work on it,\nor left it. To end it: %s\n",
        work.unit.name(), by_hand("setmainteflag", work.unit.name(), "end").c_str());
    return kRefused;
  }
  if (result != LMAINTE_OK) return failed(work, " could not be marked", result);
  const int32_t marked = lmainte_add_swap_fru_to_list(work.type(), work.number());
  if (marked < 0) return not_read(work, marked);
  std::printf("The LED of %s blinks, its maintenance flag is set.\n", work.unit.name());
  return kDone;
}

inline Outcome detach(Work &work) {
  if (graceful::signal() != 0) return not_chosen(LMAINTE_OK);
  const int32_t result = with_progress(std::string("Taking ") + work.unit.name() + " out of operation ",
                                       work.time_to_detach(), [&] { return work.detach(); });
  if (result == LMAINTE_OK) return kDone;
  return failed(
      work, work.may_be_in_operation() ? " is not out of operation" : " is out of operation, and still linked", result);
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
    std::printf(not_so, work.unit.name());
  }
}

inline Outcome take_out(Work &work) {
  constexpr uint32_t kGone = 2;
  return await(work, kGone, "Pull out %s now. Type 1 when it is out, q to give up: ", "%s is still in place.\n");
}

inline Outcome put_in(Work &work) {
  constexpr uint32_t kInPlace = 1;
  work.expect_another();
  return await(work, kInPlace, "Put in %s now. Type 1 when it is in place, q to give up: ",
               "%s is not in place, or did not stay there.\n");
}

// How a board is to be used: as one extended system board, as one whose memory is mirrored or, with three uses, as four.
inline Outcome choose_use(Work &work, int32_t uses) {
  int32_t choice = 0;
  const Outcome outcome = ask(uses, choice,
                              "\n1. One extended system board\n2. One, its memory mirrored\n%s"
                              "How is the board of %s to be used? Type %s, q to give up: ",
                              uses == 3 ? "3. Four\n" : "", work.unit.name(), uses == 3 ? "1, 2 or 3" : "1 or 2");
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

// What another unit would do better: null where the unit is not to blame.
inline const char *fault_of_unit(int32_t result) {
  switch (result) {
    case LMAINTE_TEST_FAILED:
      return "failed its test";
    case LMAINTE_FANSPEED_FAILED:
      return "does not run at its speed";
    case LMAINTE_LINK_FAILED:
      return "does not answer";
    default:
      return nullptr;
  }
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
      std::printf(
          "The other unit of its board is missing: %s is linked, no more.\n"
          "The board is tested and divided when that is added, too.\n",
          work.unit.name());
    result = with_progress((is_half ? "Linking " : "Testing ") + std::string(work.unit.name()) + " ",
                           work.time_to_bring_up(), [&] { return work.bring_up(); });
    if (result == LMAINTE_OK) {
      work.settle();
      return kDone;
    }
    const char *const fault = fault_of_unit(result);
    if (fault == nullptr)
      return failed(work, work.has_passed() ? " could not be checked to the end" : " is not in operation", result);
    std::printf("%s %s (result %d). Exchange it for another one.\n", work.unit.name(), fault, result);
    if (work.is_whole_board())
      std::printf("A board is tested as a whole, and not while a domain runs on it:\nthe fault may be in its %s.\n",
                  work.kind.type == LMAINTE_TYPE_CMU ? "I/O unit" : "CPU/memory unit");
    if (const Outcome outcome = exchange(work); outcome != kDone) return outcome;
  }
}

// The unit is gone for good. The extended system boards of its board belong to no domain any more.
inline Outcome give_up_parts(Work &work) {
  work.settle();
  if (work.division == 0) return kDone;
  const int32_t result = undisturbed(
      [&] { return lmainte_clear_xsb(work.division, work.time(LMAINTE_CMD_DELETEBOARD), &work.unit.record); });
  if (result == LMAINTE_OK) return kDone;
  failed(std::string("The extended system boards of ") + work.unit.name() + " are still assigned", result,
         "Stop the domain that runs on them. Then give them up with:");
  std::fputs("/mgb/cli/usr/bin/deleteboard -q y -c unassign", stdout);
  for (int32_t part = 0; part < work.division; ++part) std::printf(" %02u-%d", work.number(), part);
  std::puts("");
  return kFailed;
}

inline Outcome unmark(Work &work) {
  if (!work.take_back()) return kFailed;
  const int32_t left = lmainte_delete_swap_fru_from_list(work.type(), work.number());
  std::printf("LED and maintenance flag of %s are off.\n", work.unit.name());
  if (left > 0) std::printf("More units are marked for replacement: %d.\n", left);
  std::puts("");
  return kDone;
}

inline Outcome show_state(Work &work) {
  int32_t result = work.read();
  if (result != LMAINTE_OK) return not_read(work, result);
  const ListLine lines[] = {{LMAINTE_LINE_HEAD, "Unit          State\n", 0, {}},
                            {LMAINTE_LINE_FOOT, "\n", 0, {}},
                            {LMAINTE_LINE_END, nullptr, 0, {}}};
  result = graceful::after_pager(work.kind.show_status(work.record, lines));
  return result == LMAINTE_OK ? kDone : failed("The unit's state could not be shown", result, kCheckPager);
}

// The log has the event.
inline Outcome record(Work &work) {
  const EventUnit event = {{}, {work.unit.record.ident[0], work.unit.record.ident[1]}, {}, 0};
  const int32_t result = lmainte_send_event(work.action, work.kind.event_kind, &event);
  if (result != LMAINTE_OK) return failed("The log has no record of it", result, "Is the disk of the log full?");
  std::printf("%s is %s.\n", work.unit.name(), done_to(work));
  return kDone;
}

}  // namespace procedure
