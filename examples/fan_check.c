/*
 * fan_check - checks a fan tray while the server runs, in C.
 *
 *   fan_check    shows the list of fan trays and asks for one
 *
 * The tray is marked while it is checked: its LED blinks. Its fans run at low speed and, if the operator wants, at high speed.
 * The log has the result. Whatever happens, the fans run slowly and the marks are gone at the end.
 *
 * Exit status: 0 the tray is good, 1 it is not, or something failed, 2 the operator gave up.
 */
#include <stdbool.h>

#include "lmainte_procedure.h"

/* What the steps know of one another. */
struct check {
  bool is_whole; /* at both speeds */
  bool is_good;
};

/* The author's own events, of this form. */
enum { FORM = LMAINTE_LOG_OWN, EVENT_GOOD = 1, EVENT_NOT_GOOD = 2 };

static int32_t set_speed(lmainte_work *work, int32_t speed) {
  return lmainte_control_fan(speed, lmainte_work_limit(work, LMAINTE_CMD_CTLFAN), NULL);
}

static int32_t slow_down(lmainte_work *work, void *argument) {
  (void)argument;
  return set_speed(work, LMAINTE_FAN_LOW);
}

static int32_t check_at(lmainte_work *work, int32_t speed) {
  const int32_t result = set_speed(work, speed);
  if (result != LMAINTE_OK) return result;
  return lmainte_check_fanspeed(lmainte_work_limit(work, LMAINTE_CMD_CHKFANSPEED), lmainte_work_unit(work)->name);
}

/* ---- The steps ---------------------------------------------------------------------------------------------------- */

static int32_t ask_how(lmainte_work *work) {
  struct check *check = lmainte_work_data(work);
  int32_t choice = 0;
  const int32_t outcome = lmainte_choose(
      2, &choice, "1. At low speed\n2. At low and at high speed, which is loud\nType 1 or 2, q to give up: ");
  check->is_whole = choice == 2;
  return outcome;
}

/* Called by lmainte_operate, while a line of dots shows that time passes. */
static int32_t check_speeds(void *argument) {
  lmainte_work *work = argument;
  const struct check *check = lmainte_work_data(work);
  const int32_t result = check_at(work, LMAINTE_FAN_LOW);
  return result == LMAINTE_OK && check->is_whole ? check_at(work, LMAINTE_FAN_HIGH) : result;
}

/* What undoes it is said before it is done: a program that was stopped at its limit may have switched the fans. */
static int32_t check_fans(lmainte_work *work) {
  struct check *check = lmainte_work_data(work);
  const int32_t longest =
      2 * (lmainte_work_limit(work, LMAINTE_CMD_CTLFAN) + lmainte_work_limit(work, LMAINTE_CMD_CHKFANSPEED));
  if (lmainte_work_undo_later(work, "The fans may still run fast", slow_down, NULL) != LMAINTE_OK)
    return LMAINTE_OUTCOME_FAILED;
  const int32_t result = lmainte_operate("Checking the fans ", longest, check_speeds, work);
  check->is_good = result == LMAINTE_OK;
  if (result == LMAINTE_OK || result == LMAINTE_FANSPEED_FAILED) return LMAINTE_OUTCOME_DONE;
  return lmainte_tell_failure(result, "%s was not checked", lmainte_work_unit(work)->name);
}

static int32_t record(lmainte_work *work) {
  const struct check *check = lmainte_work_data(work);
  const char *name = lmainte_work_unit(work)->name;
  const int32_t logged = lmainte_work_log(work, FORM, check->is_good ? EVENT_GOOD : EVENT_NOT_GOOD);
  if (check->is_good)
    lmainte_tell("%s is good.", name);
  else
    lmainte_advise("replace_unit fan", "%s is not good. Exchange it with:", name);
  return logged == LMAINTE_OK && check->is_good ? LMAINTE_OUTCOME_DONE : LMAINTE_OUTCOME_FAILED;
}

/* The mark comes first: by the unit's flag the next procedure finds what this one leaves if it is killed. */
static const lmainte_step kSteps[] = {lmainte_step_mark,       ask_how, check_fans, lmainte_step_unmark,
                                      lmainte_step_show_state, record,  NULL};

int main(int argc, char **argv) {
  struct check check = {false, false};
  const lmainte_procedure procedure = {.name = "fan_check",
                                       .verb = "check",
                                       .done = "checked",
                                       .action = LMAINTE_ACTION_NONE,
                                       .steps = kSteps,
                                       .kind = "fan",
                                       .data = &check};
  return lmainte_procedure_run(&procedure, argc, argv);
}
