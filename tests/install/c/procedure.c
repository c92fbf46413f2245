/* A procedure of one step. */
#include <lmainte_procedure.h>

static const lmainte_step kSteps[] = {lmainte_step_show_state, NULL};

int main(int argc, char **argv) {
  static const lmainte_procedure kProcedure = {
      .name = "procedure", .verb = "look at", .done = "looked at", .action = LMAINTE_EVENT_REPLACED, .steps = kSteps};
  return lmainte_procedure_run(&kProcedure, argc, argv);
}
