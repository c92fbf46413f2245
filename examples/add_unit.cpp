// add_unit - walks an operator through adding a unit while the server runs.
//
//   add_unit         asks which kind of unit
//   add_unit KIND    cmu, iou, fan, psu or ddc
//
// Exit status: 0 added, 1 something failed, 2 the operator gave up.

#include "lmainte_procedure.h"

namespace {

constexpr lmainte_step kSteps[] = {
    lmainte_step_may_be_added,       // its place is empty, or holds a unit that is out of operation
    lmainte_step_choose_division,    // how a board will be used
    lmainte_step_mark,               // so that the technician finds the place
    lmainte_step_put_in_if_missing,  // the technician's hands, and the proof that it is there
    lmainte_step_bring_up,           // tested, set up and in operation
    lmainte_step_unmark,             // no LED, no flag
    lmainte_step_show_state,         // as it is now
    lmainte_step_record,             // in the log
    nullptr};

constexpr lmainte_procedure kProcedure = {
    .name = "add_unit", .verb = "add", .done = "added", .action = LMAINTE_EVENT_ADDED, .steps = kSteps};

}  // namespace

int main(int argc, char **argv) {
  return lmainte_procedure_run(&kProcedure, argc, argv);
}
