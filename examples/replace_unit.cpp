// replace_unit - walks an operator through replacing a unit while the server runs.
//
//   replace_unit         asks which kind of unit
//   replace_unit KIND    cmu, iou, fan, psu or ddc
//
// Exit status: 0 replaced, 1 something failed, 2 the operator gave up.

#include "procedure.h"

namespace {

constexpr procedure::Step kSteps[] = {
    procedure::may_be_removed,    // another one carries the load
    procedure::show_state,        // what is wrong with it
    procedure::tell_what_runs,    // a board without a fault is not taken without a question
    procedure::choose_mirroring,  // of an undivided board
    procedure::mark,              // so that the technician finds it
    procedure::detach,            // out of operation
    procedure::take_out,          // the technician's hands, and the proof that it is gone
    procedure::put_in,            // the same for the new one
    procedure::bring_up,          // tested, set up and in operation
    procedure::unmark,            // no LED, no flag
    procedure::show_state,        // as it is now
    procedure::record,            // in the log
};

}  // namespace

int main(int argc, char **argv) {
  return procedure::run({"replace_unit", "replace", LMAINTE_EVENT_REPLACED, kSteps}, argc, argv);
}
