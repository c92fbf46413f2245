/*
 * lmainte_procedure.h - maintenance commands as lists of steps
 *
 * A procedure walks an operator through work on one unit while the server runs. It is a list of steps:
 *
 *   static const lmainte_step kSteps[] = {
 *       lmainte_step_may_be_removed, lmainte_step_show_state, lmainte_step_mark, lmainte_step_detach,
 *       lmainte_step_take_out, lmainte_step_put_in, lmainte_step_bring_up, lmainte_step_unmark,
 *       lmainte_step_show_state, lmainte_step_record, NULL};
 *
 *   int main(int argc, char **argv) {
 *     static const lmainte_procedure kReplace = {
 *         .name = "replace_unit", .verb = "replace", .done = "replaced", .action = LMAINTE_EVENT_REPLACED, .steps = kSteps};
 *     return lmainte_procedure_run(&kReplace, argc, argv);
 *   }
 *
 * Around the steps stands what every procedure owes:
 *
 *   1. the session       the terminal's mode and the signals; both are as they were when the command ends
 *   2. the claim         one procedure at a time. One that was killed is taken over: maintenance mode is ended, and the
 *                        marks of units with a maintenance flag are taken back. What an author's step switched for a
 *                        unit without a flag is found by nobody, so let lmainte_step_mark come first
 *   3. maintenance mode  begun before the first step and ended after the last
 *   4. the unit          the operator chooses a kind and a unit; a unit that is refused leaves the others
 *   5. the way back      what a step switched is switched back at every way out: after a refusal, a failure, a "q", an
 *                        interrupt, a lost terminal. What cannot be switched back is told, and is in the log. A step
 *                        that ends the process itself, by exit() or an exception, leaves all as it is
 *
 * Rules that hold where a function does not say otherwise:
 *
 * - It is read as C99 or later, and as C++11 or later; to name the fields of a procedure as above, C++ needs C++20.
 * - It stands on lmainte.h and on the platform of lmainte_platform.h, and needs nothing else but the C library.
 * - One thread, and one procedure in a process. From the session's begin to its end SIGINT, SIGQUIT, SIGTERM, SIGHUP,
 *   SIGALRM and SIGCHLD belong to this library; then they are as they were.
 * - No argument is null.
 * - Texts are copied, or are read only during the call. Records belong to the library.
 * - What the operator reads is in lines of 80 columns. A name from the hardware is shown, never obeyed by the terminal.
 * - Texts for the operator are looked up in the message catalogue "lmainte_procedure", and are English without it.
 */
#ifndef LMAINTE_PROCEDURE_H
#define LMAINTE_PROCEDURE_H

#include <stddef.h>
#include <stdint.h>

#include "lmainte.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __GNUC__
#pragma GCC visibility push(default)
#endif

/* ---- How a step ends, and a procedure ---------------------------------------------------------------------------- */

/* A step's result, and but for the last one the exit status of a procedure. */
enum {
  LMAINTE_OUTCOME_DONE = 0,
  LMAINTE_OUTCOME_FAILED = 1,   /* something failed; the operator was told what, and what to do */
  LMAINTE_OUTCOME_GIVEN_UP = 2, /* the operator typed q, the input ended, or a signal came */
  LMAINTE_OUTCOME_REFUSED = 3   /* of a step: not this unit, not now. The operator may choose another one */
};

/* ---- The procedure ----------------------------------------------------------------------------------------------- */

/* The work on the unit that the operator has chosen. It lives until the last step has ended and all is switched back. */
typedef struct lmainte_work lmainte_work;

/* One step. It returns LMAINTE_OUTCOME_...; all but DONE end the walk, and so does a signal. Any other number is told, and
 * ends the walk as FAILED. Once the unit has all that it needed (LMAINTE_CONDITION_GOOD), the steps that are left are walked
 * all the same. */
typedef int32_t (*lmainte_step)(lmainte_work *work);

/* The action of a procedure that sends no event: a check, for example. 0 is LMAINTE_EVENT_REPLACED. */
enum { LMAINTE_ACTION_NONE = -1 };

/* What a field holds that is not given. C clears it. */
#ifdef __cplusplus
#define LMAINTE_UNLESS_GIVEN(value) = value
#else
#define LMAINTE_UNLESS_GIVEN(value)
#endif

/* What a procedure is. Clear what is not needed: later versions put fields in the place of `reserved`, and the size, 60 bytes
 * or 120 where a pointer has eight, stays. */
typedef struct lmainte_procedure {
  const char *name LMAINTE_UNLESS_GIVEN(nullptr);           /* of the command */
  const char *verb LMAINTE_UNLESS_GIVEN(nullptr);           /* in questions: "Which power supply do you replace?" */
  const char *done LMAINTE_UNLESS_GIVEN(nullptr);           /* in sentences: "/PSU#0 is replaced." */
  int32_t action LMAINTE_UNLESS_GIVEN(LMAINTE_ACTION_NONE); /* LMAINTE_EVENT_..., or LMAINTE_ACTION_NONE */
  const lmainte_step *steps LMAINTE_UNLESS_GIVEN(nullptr);  /* ended by NULL */
  /* The word of the only kind that it is for, such as "fan"; NULL: the operator chooses. */
  const char *kind LMAINTE_UNLESS_GIVEN(nullptr);
  void *data LMAINTE_UNLESS_GIVEN(nullptr); /* the author's own; lmainte_work_data returns it */
  const void *reserved[8] LMAINTE_UNLESS_GIVEN({});
} lmainte_procedure;

/*
 * Runs the procedure, from the command line to the exit status. main returns what it returns.
 *
 * argc, argv  of main. One word is taken, where the procedure has no kind of its own: the word of a kind, cmu, iou, fan, psu
 *             or ddc. "--help" prints the usage
 *
 * Returns LMAINTE_OUTCOME_DONE, _FAILED or _GIVEN_UP. After a signal it does not return: the command dies of it, so
 * that a shell sees what happened. Not done, and told on standard error: words that make no sense; standard input or
 * output that is no terminal; a procedure without name, verb, done or steps, or with a kind that there is not; one that is
 * started within another.
 */
int lmainte_procedure_run(const lmainte_procedure *procedure, int argc, char **argv);

/* ---- The unit ---------------------------------------------------------------------------------------------------- */

/* Where the unit stands in the procedure. What is done and said at the way out follows from it. */
enum {
  LMAINTE_CONDITION_UNTOUCHED = 0, /* nothing was done to it. Nothing to do */
  LMAINTE_CONDITION_IN_DOUBT = 1,  /* taking it out of operation failed on the way. Told and logged */
  LMAINTE_CONDITION_OUT = 2, /* the unit that was found there is out of operation. It is put back into operation */
  LMAINTE_CONDITION_EXCHANGED = 3,   /* another unit is expected, or in place and not tested. Told and logged */
  LMAINTE_CONDITION_REJECTED = 4,    /* it did not pass, and is out of operation. Told and logged, with the reason */
  LMAINTE_CONDITION_HALF_PASSED = 5, /* in operation, but not checked to the end. Told and logged */
  LMAINTE_CONDITION_GOOD = 6         /* it has all that it needed. Nothing of it is undone any more */
};

int32_t lmainte_work_condition(const lmainte_work *work);

/* The unit as the operations take it: type, number, unit id and location name. It stays while the work lives. */
const UnitRecord *lmainte_work_unit(const lmainte_work *work);

/* The unit's status word, LMAINTE_STATUS_..., as it was read last. */
uint32_t lmainte_work_status(const lmainte_work *work);

/* The unit's record, as lmainte_get_fru_data fills it in for its kind: SbData for cmu and iou, FantrayData, PsuData,
 * BpUnitData. It is overwritten by lmainte_work_read, and by the steps take_out, put_in and bring_up. */
const void *lmainte_work_record(const lmainte_work *work);

/* Reads the record and the status word anew, as the steps take_out and put_in do. Returns LMAINTE_OK, or the reader's
 * result; then the old ones stay. */
int32_t lmainte_work_read(lmainte_work *work);

/* What server this is. */
const lmainte_model_data *lmainte_work_server(const lmainte_work *work);

/* How many seconds the model gives to a control program, LMAINTE_CMD_...; 0 for any other number. */
int32_t lmainte_work_limit(const lmainte_work *work, uint32_t cmd_id);

/* The author's own: `data` of the procedure. */
void *lmainte_work_data(const lmainte_work *work);

/* ---- An author's own steps --------------------------------------------------------------------------------------- */

/* How many undoings one unit may have at a time. */
#define LMAINTE_UNDO_MOST 16

/* Takes back what a step switched. `argument` is that of lmainte_work_undo_later. Returns LMAINTE_OK, or another value
 * where it could not. */
typedef int32_t (*lmainte_undo)(lmainte_work *work, void *argument);

/*
 * Says what takes back what this step is about to switch. It is done at the way out, whichever it is: first the unit is
 * put back into operation where lmainte_step_detach took it out, then the last undoing that was said is the first that
 * is done, then the marks of lmainte_step_mark are taken back. An undoing runs as under lmainte_operate_quietly: it asks
 * nothing, and says no undoing of its own.
 *
 * what      what may stay where the undoing fails: "The alarm of /FAN_A#0 may still be off". The operator is told it, and the
 *           log has LMAINTE_LEFT_MARKED. It must stay readable
 * argument  handed over to undo. It must stay until then
 *
 * Say it before you switch: a program that was stopped at its limit may have done its work. Returns LMAINTE_OK, or
 * LMAINTE_FAILED: `what` or `undo` is NULL, LMAINTE_UNDO_MOST are said already, or an undoing runs. Nothing is to be
 * switched then.
 */
int32_t lmainte_work_undo_later(lmainte_work *work, const char *what, lmainte_undo undo, void *argument);

/* Does now what was said with this function and argument, and forgets it. Returns what it returned, LMAINTE_FAILED
 * where nothing of the kind was said. One that failed is not tried again; it is told and logged. */
int32_t lmainte_work_undo_now(lmainte_work *work, lmainte_undo undo, void *argument);

/* Forgets what was said with this function and argument: what was switched is to stay. */
void lmainte_work_keep(lmainte_work *work, lmainte_undo undo, void *argument);

/* The forms of an author's own events, up to 255. Those below belong to the libraries. */
enum { LMAINTE_LOG_OWN = 128 };

/* Saves an event about the unit in the log, laid out as those of LMAINTE_LEFT_...: `code` means what the author says. Returns
 * LMAINTE_OK, or LMAINTE_FAILED: the form is not an author's, or the log could not be written, which the operator was told. */
int32_t lmainte_work_log(const lmainte_work *work, uint8_t form, uint8_t code);

/*
 * Runs an operation that takes time, such as one of lmainte.h that runs a control program.
 *
 * message    shown with a line of dots: "Checking /FAN_A#0 "
 * longest    how many seconds it may take
 * operation  is called once, with argument
 *
 * A child of the command shows the progress, at once or when five seconds have passed, and answers a Ctrl-C: the program
 * is not torn away, the operator is told to wait, and the next question is not asked. An operation prints nothing, asks
 * nothing and starts no other. Returns what the operation returned.
 */
int32_t lmainte_operate(const char *message, int32_t longest, int32_t (*operation)(void *argument), void *argument);
int32_t lmainte_operate_quietly(const char *message, int32_t longest, int32_t (*operation)(void *argument),
                                void *argument);

/* ---- The operator ------------------------------------------------------------------------------------------------ */

#ifdef __GNUC__
#define LMAINTE_PRINTF(text, values) __attribute__((__format__(__printf__, text, values)))
#else
#define LMAINTE_PRINTF(text, values)
#endif

/* Tells the operator something: the sentences, cut at 2047 bytes, in lines of 80 columns, and the end of the line. */
void lmainte_tell(const char *format, ...) LMAINTE_PRINTF(1, 2);

/* Tells that something failed, why by the result of an operation of lmainte.h, and what to do. Returns
 * LMAINTE_OUTCOME_FAILED, so that a step can end with it. */
int32_t lmainte_tell_failure(int32_t result, const char *format, ...) LMAINTE_PRINTF(2, 3);

/* Tells what to do, and on a line of its own the command that does it: as it stands, behind LMAINTE_PROCEDURE_WAY where
 * that is set. A command that is not on the PATH is given with its folder; where it stands beside the procedure that runs,
 * that is done here. */
void lmainte_advise(const char *command, const char *format, ...) LMAINTE_PRINTF(2, 3);

/*
 * Asks the operator for a number from 1 to count. After Ctrl-Z and fg the question is asked again.
 *
 * count   how many choices there are. Where there is none, the operator is told so
 * choice  receives the number. Untouched unless it returns LMAINTE_OUTCOME_DONE
 *
 * Returns LMAINTE_OUTCOME_DONE; _GIVEN_UP after a q, the end of the input or a signal; _FAILED when it could not be asked,
 * or there is nothing to choose. But for the first, the operator was told.
 */
int32_t lmainte_choose(int32_t count, int32_t *choice, const char *format, ...) LMAINTE_PRINTF(3, 4);

/* Asks the operator to type 1. Returns as lmainte_choose. */
int32_t lmainte_confirm(const char *format, ...) LMAINTE_PRINTF(1, 2);

/* The same question as lmainte_choose, where a table stands above it in the pager: a q that was meant for the pager does
 * not give up at once. It is for questions before anything is switched, and says that nothing is changed yet. */
int32_t lmainte_choose_behind_table(int32_t count, int32_t *choice, const char *format, ...) LMAINTE_PRINTF(3, 4);

/* ---- The session of a command that is no procedure --------------------------------------------------------------- */

/*
 * What a command owes the operator's terminal, without a procedure around it:
 *
 *   lmainte_session_begin();
 *   while (...) { ... lmainte_session_shown(lmainte_show_psu_list(...)); ... lmainte_choose(...); ... }
 *   lmainte_session_end();
 *
 * From begin to end a signal ends the wait for the operator and for the pager, the pager too, and what is typed between
 * questions is not shown. A terminal that a killed command has left without echo is put right.
 *
 * lmainte_session_begin  the texts are in the operator's language from here on. Returns LMAINTE_OK, or LMAINTE_FAILED where
 *                        standard input or output is no terminal: questions fail then, lists run through in one go
 * lmainte_session_shown  is given the result of what the library showed, and returns it: a pager that was killed leaves the
 *                        terminal in a mode of its own. Where /tmp has no room, what was shown may be cut short: it says so
 * lmainte_session_signal the signal that asks the command to end, 0 where none came. A step of a procedure may ask, too
 * lmainte_session_end    the terminal is as it was found. After a signal the command dies of it here
 *
 * lmainte_procedure_run does all of this itself.
 */
int32_t lmainte_session_begin(void);
int32_t lmainte_session_shown(int32_t result);
int32_t lmainte_session_signal(void);
void lmainte_session_end(void);

/* ---- The steps --------------------------------------------------------------------------------------------------- */

/* Ask the server whether the unit may be removed, or added. REFUSED with the reason where it may not. A unit that is in
 * place and faulted is not added: it would fail its test once more. */
int32_t lmainte_step_may_be_removed(lmainte_work *work);
int32_t lmainte_step_may_be_added(lmainte_work *work);

/* Shows the unit's status table. */
int32_t lmainte_step_show_state(lmainte_work *work);

/* Tells which domains run on a board, and asks before one without a fault is taken out of operation. */
int32_t lmainte_step_tell_what_runs(lmainte_work *work);

/* How a board is to be used: choose_mirroring asks for a board that is replaced whether its memory is mirrored, where the
 * inventory does not tell; choose_division asks for a board that is added how it is divided. */
int32_t lmainte_step_choose_mirroring(lmainte_work *work);
int32_t lmainte_step_choose_division(lmainte_work *work);

/* The unit's maintenance flag, its LED, and for a fan tray faster fans: set, and taken back. All are taken back at the
 * way out, too. A unit that has a flag already is refused, but for one that this procedure has marked. */
int32_t lmainte_step_mark(lmainte_work *work);
int32_t lmainte_step_unmark(lmainte_work *work);

/* Takes the unit out of operation, and a board off the server's links. */
int32_t lmainte_step_detach(lmainte_work *work);

/* Ask for the technician's hands, and watch until the unit is gone, or in place. take_out fails for a unit that may be in
 * operation: lmainte_step_detach comes before it. put_in_if_missing leaves a unit where it is that is there already. */
int32_t lmainte_step_take_out(lmainte_work *work);
int32_t lmainte_step_put_in(lmainte_work *work);
int32_t lmainte_step_put_in_if_missing(lmainte_work *work);

/* Tests the unit, sets a board up, and puts it into operation. One that does not pass is exchanged until one does, or the
 * operator gives up. */
int32_t lmainte_step_bring_up(lmainte_work *work);

/* Gives up the extended system boards of a board that is removed for good. */
int32_t lmainte_step_give_up_parts(lmainte_work *work);

/* Sends the event of the procedure's action to the log, if it has one, and says that the unit is done. */
int32_t lmainte_step_record(lmainte_work *work);

/* ---- What a procedure leaves undone ------------------------------------------------------------------------------ */

/*
 * An event of 48 bytes under the head LMAINTE_LEFT_HEAD, big-endian, saved by mgblog_save: the operator may be gone. All
 * but these places are 0.
 */
enum { LMAINTE_LEFT_HEAD = 0x00030000, LMAINTE_LEFT_SIZE = 48, LMAINTE_LEFT_SOURCE = 215, LMAINTE_LEFT_FORM = 3 };
enum {
  LMAINTE_LEFT_SOURCE_AT = 8, /* LMAINTE_LEFT_SOURCE, as in the events of lmainte_send_event */
  LMAINTE_LEFT_FORM_AT = 9,   /* LMAINTE_LEFT_FORM */
  LMAINTE_LEFT_CODE_AT = 11,  /* below */
  LMAINTE_LEFT_UNIT_AT = 19   /* the two words of the unit id; 0 for the server as a whole */
};
enum {
  LMAINTE_LEFT_EMPTY = 1,     /* the place of the unit stays empty */
  LMAINTE_LEFT_OUT = 2,       /* the unit is in place and out of operation */
  LMAINTE_LEFT_IN_DOUBT = 3,  /* it may be out of operation */
  LMAINTE_LEFT_REJECTED = 4,  /* it is in place and did not pass */
  LMAINTE_LEFT_UNTESTED = 5,  /* it is in place and was not tested */
  LMAINTE_LEFT_UNCHECKED = 6, /* it is in operation, but was not checked to the end */
  LMAINTE_LEFT_UNKNOWN = 7,   /* its state could not be read */
  LMAINTE_LEFT_MARKED = 8, /* its LED, its flag, the fans, or what an author's step switched may not be as they were */
  LMAINTE_LEFT_IN_MODE = 9 /* the server is still in maintenance mode */
};

/* What an operator types before a command that is to run on the service processor, where it is not their own shell: in the
 * environment of the command, or missing. */
#define LMAINTE_PROCEDURE_WAY "SPBOX_RUN"

#undef LMAINTE_UNLESS_GIVEN
#undef LMAINTE_PRINTF

#ifdef __GNUC__
#pragma GCC visibility pop
#endif

#ifdef __cplusplus
}

/* The same for C++: an operation is anything that is called without arguments and returns a result of lmainte.h. */
namespace lmainte {

template <class Operation>
int32_t operate(const char *message, int32_t longest, Operation operation) {
  return lmainte_operate(
      message, longest, [](void *called) { return (*static_cast<Operation *>(called))(); }, &operation);
}

template <class Operation>
int32_t operate_quietly(const char *message, int32_t longest, Operation operation) {
  return lmainte_operate_quietly(
      message, longest, [](void *called) { return (*static_cast<Operation *>(called))(); }, &operation);
}

}  // namespace lmainte
#endif

#endif
