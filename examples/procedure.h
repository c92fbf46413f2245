// What the procedures have in common. A procedure is a list of steps for one unit:
//
//   constexpr procedure::Step kSteps[] = {procedure::may_be_removed, procedure::mark, ...};
//   int main(int argc, char **argv) {
//     return procedure::run({"replace_unit", "replace", LMAINTE_EVENT_REPLACED, kSteps}, argc, argv);
//   }
//
// Around the steps stands what every procedure owes: it is the only one at work, the server is in maintenance mode, the
// operator has chosen a unit. What a step switched is switched back at every way out: after a refusal, a failure, a "q",
// an interrupt, a lost terminal. Copy this header with the folder procedure, graceful.h, language.h and server.h.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <span>
#include <string>
#include <vector>

#include "graceful.h"
#include "language.h"
#include "lmainte.h"
#include "procedure/advice.h"
#include "procedure/asking.h"
#include "procedure/claim.h"
#include "procedure/disk_space.h"
#include "procedure/maintenance_mode.h"
#include "procedure/marked.h"
#include "procedure/results.h"
#include "procedure/steps.h"
#include "procedure/telling.h"
#include "procedure/unit_kinds.h"
#include "procedure/work.h"

namespace procedure {

struct Procedure {
  const char *name;  // of the command
  const char *verb;  // of the question
  int32_t action;    // LMAINTE_EVENT_...
  std::span<const Step> steps;
  const char *kind = nullptr;  // the word of the only kind that it is for; null: the operator chooses
};

inline Outcome choose_kind(const Server &server, const Procedure &procedure, const Kind *&kind) {
  std::vector<const Kind *> there;
  std::vector<ListLine> lines = {{LMAINTE_LINE_HEAD, "Kinds of unit\n\n", 0, {}}};
  for (const Kind &row : kKinds) {
    if (row.count(server) == 0) continue;
    there.push_back(&row);
    lines.push_back({LMAINTE_LINE_HEAD, "%2d. %s\n", 0, {there.size(), reinterpret_cast<uintptr_t>(row.many)}});
  }
  lines.push_back({LMAINTE_LINE_END, nullptr, 0, {}});
  const int32_t result = graceful::after_pager(lmainte_show_menu(lines.data()));
  if (result != LMAINTE_OK) return failed("The menu could not be shown", result, kCheckPager);
  int32_t choice = 0;
  const Outcome outcome = ask(static_cast<int32_t>(there.size()), choice,
                              "\nWhat do you %s? Type its number, q to give up: ", procedure.verb);
  if (outcome == kDone) kind = there[static_cast<size_t>(choice) - 1];
  return outcome;
}

inline int32_t show_list(const Kind &kind, const Units &units) {
  const auto word = [](const char *text) { return reinterpret_cast<uintptr_t>(text); };
  std::vector<ListLine> lines = {{LMAINTE_LINE_HEAD, "The %s of this server\n", 0, {word(kind.many)}},
                                 {LMAINTE_LINE_HEAD, kind.columns, 0, {}},
                                 {LMAINTE_LINE_FOOT, "\n", 0, {}}};
  if (kind.legend[0] == nullptr)
    lines.push_back({LMAINTE_LINE_FOOT, "%u %s.\n", 0, {units.count(), word(kind.many)}});
  else
    for (const char *const line : kind.legend) lines.push_back({LMAINTE_LINE_FOOT, "%s", 0, {word(line)}});
  lines.push_back({LMAINTE_LINE_END, nullptr, 0, {}});
  return units.show(lines.data());
}

// Behind a refusal the list still stands above: only the number is asked for.
inline Outcome choose_unit(const Server &server, const Procedure &procedure, const Kind &kind, bool is_first,
                           AnyRecord &record, Unit &unit) {
  Units all(server, kind);
  int32_t result = all.read();
  if (result != LMAINTE_OK) return failed(std::string("The ") + kind.many + " could not be read", result, kTryAgain);
  if (is_first) result = show_list(kind, all);
  if (result != LMAINTE_OK) return failed("The list could not be shown", result, kCheckPager);
  const auto count = static_cast<int32_t>(all.count());
  int32_t number = 0;
  const Outcome outcome =
      is_first ? ask(count, number, "\nWhich %s do you %s? Type its number, q to give up: ", kind.one, procedure.verb)
               : ask(count, number, "Type the number of another %s, q to give up: ", kind.one);
  if (outcome != kDone) return outcome;
  if (!take_unit(kind, all.at(static_cast<size_t>(number) - 1), unit))
    return failed("The unit has no location name", LMAINTE_FAILED, "Its record does not fit the model: call service.");
  result = read_one(server, kind, unit.record.number, record);
  return result == LMAINTE_OK ? kDone : failed("The unit could not be read", result, kTryAgain);
}

// A step that is not done ends the walk. But once the unit has all that it needed, the steps that are left are walked all
// the same: the log is to know of it whether or not its LED can be switched off.
inline Outcome walk_steps(const Procedure &procedure, Work &work) {
  Outcome walked = kDone;
  for (const Step step : procedure.steps) {
    const Outcome outcome = step(work);
    if (outcome == kDone) continue;
    walked = outcome;
    if (!work.is_settled()) break;
  }
  return walked;
}

// A unit that is refused leaves the others to choose from.
inline Outcome work_on(const Server &server, const Procedure &procedure, const Kind &kind) {
  for (bool is_first = true;; is_first = false) {
    AnyRecord record{};
    Unit unit;
    Outcome outcome = choose_unit(server, procedure, kind, is_first, record, unit);
    if (outcome != kDone) return outcome;
    Work work(server, kind, unit, record, procedure.action);
    outcome = walk_steps(procedure, work);
    if (!work.take_back()) outcome = kFailed;
    if (outcome != kRefused) return outcome;
  }
}

inline Outcome walk(const Procedure &procedure, const Kind *kind) {
  Server server;
  int32_t result = server.read_with_times();
  if (result != LMAINTE_OK) {
    failed("The server's model could not be read", result, kTryAgain);
    if (server.model() == LMAINTE_MODEL_NONE)
      tell("If /tmp holds no marker file of a model, this is no service processor.");
    else
      tell("Check also that the files of times are there: controltime_* and cmdtime_* in /mgb/cli/etc.");
    return kFailed;
  }
  if (kind != nullptr && kind->count(server) == 0) {
    tell("This server has no %s.", kind->many);
    return kFailed;
  }
  if (!has_room_for_lists()) {
    tell("/tmp has no room for the lists. Remove files that nobody needs from it.");
    return kFailed;
  }
  Claim claim;
  if (const Outcome outcome = claim.take(); outcome != kDone) return outcome;
  Maintenance maintenance(server);
  if (const Outcome outcome = maintenance.begin(claim.is_taken_over()); outcome != kDone) return outcome;
  Marked marked(server);
  Outcome outcome = marked.begin(claim.is_taken_over());
  if (outcome == kDone && marked.has_all_back()) claim.settle();
  if (outcome == kDone && kind == nullptr) outcome = choose_kind(server, procedure, kind);
  if (outcome == kDone) outcome = work_on(server, procedure, *kind);
  if (!maintenance.end()) outcome = kFailed;
  return outcome;
}

inline void tell_usage(const Procedure &procedure, std::FILE *out) {
  std::fprintf(out, "usage: %s", procedure.name);
  if (procedure.kind == nullptr) {
    std::fputs(" [KIND], where KIND is one of:", out);
    for (const Kind &kind : kKinds) std::fprintf(out, " %s", kind.word);
  }
  std::fputs("\n", out);
}

inline int run(const Procedure &procedure, int argc, char **argv) {
  if (argc == 2 && std::strcmp(argv[1], "--help") == 0) {
    tell_usage(procedure, stdout);
    return kDone;
  }
  const int most = procedure.kind == nullptr ? 2 : 1;
  const char *const word = argc == 2 ? argv[1] : procedure.kind;
  const Kind *const kind =
      word == nullptr ? nullptr : find_kind([&](const Kind &row) { return std::strcmp(row.word, word) == 0; });
  if (argc > most || (word != nullptr && kind == nullptr)) {
    tell_usage(procedure, stderr);
    return kFailed;
  }
  remember_folder(argv[0]);
  speak_the_operators_language();
  graceful::catch_signals();
  Outcome outcome = kFailed;
  {
    const graceful::Dialogue dialogue;
    if (graceful::Dialogue::begun()) {
      outcome = walk(procedure, kind);
    } else {
      std::fprintf(stderr, "%s: this is no terminal. Start it on the operator's terminal.\n", procedure.name);
    }
  }
  std::fflush(stdout);
  graceful::die_of_signal();
  return outcome;
}

}  // namespace procedure
