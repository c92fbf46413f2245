// remove_unit - walks an operator through removing a unit for good while the server runs.
//
//   remove_unit         asks which kind of unit
//   remove_unit KIND    cmu, iou, fan, psu or ddc
//
// Exit status: 0 removed, 1 something failed, 2 the operator gave up.

#include "lmainte_procedure.h"

namespace {

constexpr lmainte_step kSteps[] = {
    lmainte_step_may_be_removed,  // another one carries the load
    lmainte_step_tell_what_runs,  // a board without a fault is not taken without a question
    lmainte_step_mark,            // so that the technician finds it
    lmainte_step_detach,          // out of operation
    lmainte_step_take_out,        // the technician's hands, and the proof that it is gone
    lmainte_step_give_up_parts,   // what a board was set up for
    lmainte_step_unmark,          // no LED, no flag
    lmainte_step_show_state,      // as it is now
    lmainte_step_record,          // in the log
    nullptr};

constexpr lmainte_procedure kProcedure = {
    .name = "remove_unit", .verb = "remove", .done = "removed", .action = LMAINTE_EVENT_REMOVED, .steps = kSteps};

}  // namespace

int main(int argc, char **argv) {
  return lmainte_procedure_run(&kProcedure, argc, argv);
}
