/*
 * @NAME@ - walks an operator through a check of one unit while the server runs.
 *
 *   @NAME@         asks which kind of unit
 *   @NAME@ KIND    cmu, iou, fan, psu or ddc
 *
 * Exit status: 0 checked, 1 something failed, 2 the operator gave up.
 */
#include <lmainte_procedure.h>

/* A step of this command's own. One that switches something says before what takes it back: lmainte_work_undo_later. */
static int32_t find_the_unit(lmainte_work *work) {
  return lmainte_confirm("Type 1 when you see the LED of %s, q to give up: ", lmainte_work_unit(work)->name);
}

static int32_t say_so(lmainte_work *work) {
  lmainte_tell("%s is checked.", lmainte_work_unit(work)->name);
  return LMAINTE_OUTCOME_DONE;
}

/* The steps, in their order. lmainte_procedure.h has more. What is marked is taken back at every way out. */
static const lmainte_step kSteps[] = {
    lmainte_step_show_state, lmainte_step_mark, find_the_unit, lmainte_step_unmark, say_so, NULL};

int main(int argc, char **argv) {
  const lmainte_procedure procedure = {
      .name = "@NAME@", .verb = "check", .done = "checked", .action = LMAINTE_ACTION_NONE, .steps = kSteps};
  return lmainte_procedure_run(&procedure, argc, argv);
}
