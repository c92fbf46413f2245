// What stands around the steps: the session, the claim, maintenance mode, and the operator's choice of a unit.
#include "include/lmainte_procedure.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "procedure/asking.h"
#include "procedure/claim.h"
#include "procedure/kinds.h"
#include "procedure/maintenance_mode.h"
#include "procedure/marked.h"
#include "procedure/results.h"
#include "procedure/server.h"
#include "procedure/session.h"
#include "procedure/telling.h"
#include "procedure/text.h"
#include "procedure/words.h"
#include "procedure/work.h"

namespace lmainte::procedure {
namespace {

int32_t choose_kind(const Server &server, const lmainte_procedure &procedure, const Kind *&kind) {
  const Kind *there[Kinds::kMost];
  size_t count = 0;
  ListLine lines[Kinds::kMost + 2] = {{LMAINTE_LINE_HEAD, words("Kinds of unit\n\n"), 0, {}}};
  for (const Kind &row : kKinds) {
    if (row.count(server) == 0) continue;
    there[count++] = &row;
    lines[count] = {LMAINTE_LINE_HEAD, "%2d. %s\n", 0, {count, reinterpret_cast<uintptr_t>(words(row.many))}};
  }
  lines[count + 1] = {LMAINTE_LINE_END, nullptr, 0, {}};
  const int32_t result = lmainte_session_shown(lmainte_show_menu(lines));
  if (result != LMAINTE_OK) return failed(words("The menu could not be shown"), result, check_pager());
  int32_t choice = 0;
  const int32_t outcome =
      choose(static_cast<int32_t>(count), choice,
             text_of(words("\nWhat do you %s? Type its number, q to give up: "), words(procedure.verb)).view());
  if (outcome == LMAINTE_OUTCOME_DONE) kind = there[choice - 1];
  return outcome;
}

// Behind a refusal the list still stands above: only the number is asked for.
int32_t choose_unit(const Server &server, const lmainte_procedure &procedure, const Kind &kind, bool is_first,
                    AnyRecord &record, Unit &unit) {
  Units all(server, kind);
  int32_t result = all.read();
  if (result != LMAINTE_OK)
    return failed(text_of(words("The %s could not be read"), words(kind.many)).view(), result, try_again());
  if (is_first) result = all.show();
  if (result != LMAINTE_OK) return failed(words("The list could not be shown"), result, check_pager());
  const Text question = is_first ? text_of(words("\nWhich %s do you %s? Type its number, q to give up: "),
                                           words(kind.one), words(procedure.verb))
                                 : text_of(words("Type the number of another %s, q to give up: "), words(kind.one));
  int32_t number = 0;
  const int32_t outcome = choose(static_cast<int32_t>(all.count()), number, question.view());
  if (outcome != LMAINTE_OUTCOME_DONE) return outcome;
  if (!take_unit(kind, all.at(static_cast<size_t>(number) - 1), unit))
    return failed(words("The unit has no location name"), LMAINTE_FAILED,
                  words("Its record does not fit the model: call service."));
  result = read_one(server, kind, unit.record.number, record);
  return result == LMAINTE_OK ? LMAINTE_OUTCOME_DONE : failed(words("The unit could not be read"), result, try_again());
}

// What a step may return, and no more: a result of lmainte.h is none.
int32_t outcome_of(lmainte_step step, lmainte_work &work, size_t place) {
  const int32_t outcome = step(&work);
  if (outcome >= LMAINTE_OUTCOME_DONE && outcome <= LMAINTE_OUTCOME_REFUSED) return outcome;
  lmainte_tell(words("Step %d of the procedure ended with %d, which is no outcome of a step."),
               static_cast<int>(place + 1), outcome);
  return LMAINTE_OUTCOME_FAILED;
}

// A step that is not done ends the walk, and so does a signal. But once the unit has all that it needed, the steps that are
// left are walked all the same: the log is to know of it whether or not its LED can be switched off. Then no other unit is
// chosen, and what failed is not forgotten.
int32_t walk_steps(const lmainte_procedure &procedure, lmainte_work &work) {
  int32_t walked = LMAINTE_OUTCOME_DONE;
  for (size_t i = 0; procedure.steps[i] != nullptr; ++i) {
    const bool was_good = work.condition.value() == LMAINTE_CONDITION_GOOD;
    if (!was_good && lmainte_session_signal() != 0) return not_chosen(LMAINTE_OK);
    int32_t outcome = outcome_of(procedure.steps[i], work, i);
    if (outcome == LMAINTE_OUTCOME_DONE) continue;
    const bool is_good = work.condition.value() == LMAINTE_CONDITION_GOOD;
    if (is_good && outcome == LMAINTE_OUTCOME_REFUSED) outcome = LMAINTE_OUTCOME_FAILED;
    if (walked != LMAINTE_OUTCOME_FAILED) walked = outcome;
    if (!is_good) break;
  }
  return walked;
}

// A unit that is refused leaves the others to choose from.
int32_t work_on(const Server &server, const lmainte_procedure &procedure, const Kind &kind) {
  for (bool is_first = true;; is_first = false) {
    AnyRecord record{};
    Unit unit;
    int32_t outcome = choose_unit(server, procedure, kind, is_first, record, unit);
    if (outcome != LMAINTE_OUTCOME_DONE) return outcome;
    lmainte_work work(server, procedure, kind, unit, record);
    outcome = walk_steps(procedure, work);
    if (!work.take_back()) outcome = LMAINTE_OUTCOME_FAILED;
    if (outcome != LMAINTE_OUTCOME_REFUSED) return outcome;
  }
}

int32_t read_server(Server &server) {
  const int32_t result = server.read();
  if (result == LMAINTE_OK) return LMAINTE_OUTCOME_DONE;
  failed(words("The server's model could not be read"), result, try_again());
  if (server.model() == LMAINTE_MODEL_NONE)
    tell(words("If /tmp holds no marker file of a model, this is no service processor."));
  else
    tell(words("Check also that the files of times are there: controltime_* and cmdtime_* in /mgb/cli/etc."));
  return LMAINTE_OUTCOME_FAILED;
}

int32_t walk(const lmainte_procedure &procedure, const Kind *kind) {
  Server server;
  int32_t outcome = read_server(server);
  if (outcome != LMAINTE_OUTCOME_DONE) return outcome;
  if (kind != nullptr && kind->count(server) == 0) {
    lmainte_tell(words("This server has no %s."), words(kind->many));
    return LMAINTE_OUTCOME_FAILED;
  }
  if (!has_room_for_lists()) {
    tell(words("/tmp has no room for the lists. Remove files that nobody needs from it."));
    return LMAINTE_OUTCOME_FAILED;
  }
  Claim claim;
  outcome = claim.take();
  if (outcome != LMAINTE_OUTCOME_DONE) return outcome;
  Maintenance maintenance(server);
  outcome = maintenance.begin(claim.is_taken_over());
  if (outcome != LMAINTE_OUTCOME_DONE) return outcome;
  Marked marked(server);
  outcome = marked.begin(claim.is_taken_over());
  if (outcome == LMAINTE_OUTCOME_DONE && marked.has_all_back()) claim.settle();
  if (outcome == LMAINTE_OUTCOME_DONE && kind == nullptr) outcome = choose_kind(server, procedure, kind);
  if (outcome == LMAINTE_OUTCOME_DONE && kind != nullptr) outcome = work_on(server, procedure, *kind);
  const bool is_mode_back = maintenance.end(), is_free = claim.end();
  if (!is_mode_back || !is_free) outcome = LMAINTE_OUTCOME_FAILED;
  return outcome;
}

void tell_usage(const lmainte_procedure &procedure, FILE *out) {
  fprintf(out, "usage: %s", procedure.name);
  if (procedure.kind == nullptr) {
    fputs(" [KIND], where KIND is one of:", out);
    for (const Kind &kind : kKinds) fprintf(out, " %s", kind.word);
  }
  fputs("\n", out);
}

// Returns the exit status.
int tell_help(const lmainte_procedure &procedure) {
  tell_usage(procedure, stdout);
  if (fflush(stdout) == 0) return LMAINTE_OUTCOME_DONE;
  fprintf(stderr, "%s: the output cannot be written: %s.\n", procedure.name, strerror(errno));
  return LMAINTE_OUTCOME_FAILED;
}

// What the shipped procedures do: an author's word that is not here stays as it is.
[[maybe_unused]] constexpr const char *kTranslated[] = {noted("replace"), noted("replaced"), noted("add"),
                                                        noted("added"),   noted("remove"),   noted("removed"),
                                                        noted("check"),   noted("checked")};

// What its author has to mend: null where the procedure is as it should be.
const char *what_is_wrong(const lmainte_procedure &procedure) {
  const auto is_text = [](const char *text) { return text != nullptr && *text != '\0'; };
  if (!is_text(procedure.name) || !is_text(procedure.verb) || !is_text(procedure.done) || procedure.steps == nullptr)
    return "a procedure has a name, a verb, a word for done, and steps";
  for (const void *later : procedure.reserved) {
    if (later != nullptr) return "what is reserved in it is not cleared";
  }
  if (procedure.kind != nullptr && kind_named(procedure.kind) == nullptr) return "its kind of unit is none of them";
  return nullptr;
}

}  // namespace
}  // namespace lmainte::procedure

namespace procedure = lmainte::procedure;

int lmainte_procedure_run(const lmainte_procedure *procedure, int argc, char **argv) {
  static bool is_running = false;
  const char *const wrong = procedure == nullptr ? "there is no procedure"
                            : is_running         ? "a procedure runs already"
                                                 : procedure::what_is_wrong(*procedure);
  if (wrong != nullptr) {
    const bool is_named = procedure != nullptr && procedure->name != nullptr;
    fprintf(stderr, "%s: %s.\n", is_named ? procedure->name : "lmainte_procedure_run", wrong);
    return LMAINTE_OUTCOME_FAILED;
  }
  if (argc == 2 && strcmp(argv[1], "--help") == 0) {
    return procedure::tell_help(*procedure);
  }
  const int most = procedure->kind == nullptr ? 2 : 1;
  const char *const word = argc == 2 ? argv[1] : procedure->kind;
  const procedure::Kind *const kind = word == nullptr ? nullptr : procedure::kind_named(word);
  if (argc > most || (word != nullptr && kind == nullptr)) {
    procedure::tell_usage(*procedure, stderr);
    return LMAINTE_OUTCOME_FAILED;
  }
  is_running = true;
  procedure::remember_folder(argv[0]);
  int32_t outcome = LMAINTE_OUTCOME_FAILED;
  if (lmainte_session_begin() == LMAINTE_OK)
    outcome = procedure::walk(*procedure, kind);
  else
    fprintf(stderr, procedure::words("%s: this is no terminal. Start it on the operator's terminal.\n"),
            procedure->name);
  lmainte_session_end();
  is_running = false;
  return outcome;
}
