/*
 * @NAME@ - walks an operator through a check of one unit while the server runs.
 *
 *   @NAME@         asks which kind of unit
 *   @NAME@ KIND    cmu, iou, fan, psu or ddc
 *
 * Exit status: 0 checked, 1 something failed, 2 the operator gave up.
 */
#include <lmainte_procedure.h>

static int32_t switch_led(lmainte_work *work, int32_t mode) {
  return lmainte_control_led(mode, lmainte_work_limit(work, LMAINTE_CMD_CTLLED), lmainte_work_unit(work));
}

/* Done at every way out: after a q, a Ctrl-C, a failure. */
static int32_t led_off(lmainte_work *work, void *argument) {
  (void)argument;
  return switch_led(work, LMAINTE_LED_OFF);
}

/* Called by lmainte_operate_quietly, which keeps a Ctrl-C from the control program. */
static int32_t led_blink(void *argument) {
  return switch_led(argument, LMAINTE_LED_BLINK);
}

/* A step of this command's own. What takes it back is said before it is done. */
static int32_t find_the_unit(lmainte_work *work) {
  const char *name = lmainte_work_unit(work)->name;
  if (lmainte_work_undo_later(work, "The LED of the unit may still blink", led_off, NULL) != LMAINTE_OK)
    return LMAINTE_OUTCOME_FAILED;
  const int32_t longest = lmainte_work_limit(work, LMAINTE_CMD_CTLLED);
  const int32_t result = lmainte_operate_quietly("Switching the LED ", longest, led_blink, work);
  if (result != LMAINTE_OK) return lmainte_tell_failure(result, "The LED of %s does not blink", name);
  return lmainte_confirm("The LED of %s blinks. Type 1 when you see it, q to give up: ", name);
}

static int32_t say_so(lmainte_work *work) {
  lmainte_tell("%s is checked.", lmainte_work_unit(work)->name);
  return LMAINTE_OUTCOME_DONE;
}

/* The steps, in their order. lmainte_procedure.h has more. */
static const lmainte_step kSteps[] = {lmainte_step_show_state, find_the_unit, say_so, NULL};

int main(int argc, char **argv) {
  const lmainte_procedure procedure = {
      .name = "@NAME@", .verb = "check", .done = "checked", .action = LMAINTE_ACTION_NONE, .steps = kSteps};
  return lmainte_procedure_run(&procedure, argc, argv);
}
