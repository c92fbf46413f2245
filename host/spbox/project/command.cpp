// @NAME@ - walks an operator through a check of one unit while the server runs.
//
//   @NAME@         asks which kind of unit
//   @NAME@ KIND    cmu, iou, fan, psu or ddc
//
// Exit status: 0 checked, 1 something failed, 2 the operator gave up.
#include <lmainte_procedure.h>

namespace {

int32_t switch_led(lmainte_work *work, int32_t mode) {
  return lmainte_control_led(mode, lmainte_work_limit(work, LMAINTE_CMD_CTLLED), lmainte_work_unit(work));
}

// Done at every way out: after a q, a Ctrl-C, a failure.
int32_t led_off(lmainte_work *work, void * /*argument*/) {
  return switch_led(work, LMAINTE_LED_OFF);
}

// A step of this command's own. What takes it back is said before it is done.
int32_t find_the_unit(lmainte_work *work) {
  const char *name = lmainte_work_unit(work)->name;
  if (lmainte_work_undo_later(work, "The LED of the unit may still blink", led_off, nullptr) != LMAINTE_OK)
    return LMAINTE_OUTCOME_FAILED;
  // A Ctrl-C does not reach the control program.
  const int32_t result = lmainte::operate_quietly("Switching the LED ", lmainte_work_limit(work, LMAINTE_CMD_CTLLED),
                                                  [&] { return switch_led(work, LMAINTE_LED_BLINK); });
  if (result != LMAINTE_OK) return lmainte_tell_failure(result, "The LED of %s does not blink", name);
  return lmainte_confirm("The LED of %s blinks. Type 1 when you see it, q to give up: ", name);
}

int32_t say_so(lmainte_work *work) {
  lmainte_tell("%s is checked.", lmainte_work_unit(work)->name);
  return LMAINTE_OUTCOME_DONE;
}

// The steps, in their order. lmainte_procedure.h has more.
constexpr lmainte_step kSteps[] = {lmainte_step_show_state, find_the_unit, say_so, nullptr};

constexpr lmainte_procedure kProcedure = {
    .name = "@NAME@", .verb = "check", .done = "checked", .action = LMAINTE_ACTION_NONE, .steps = kSteps};

}  // namespace

int main(int argc, char **argv) {
  return lmainte_procedure_run(&kProcedure, argc, argv);
}
