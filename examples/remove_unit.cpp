// remove_unit - walks an operator through removing a unit for good while the server runs.
//
//   remove_unit         asks which kind of unit
//   remove_unit KIND    cmu, iou, fan, psu or ddc
//
// Exit status: 0 removed, 1 something failed, 2 the operator gave up.

#include "procedure.h"

namespace {

constexpr procedure::Step kSteps[] = {
    procedure::may_be_removed,  // another one carries the load
    procedure::tell_what_runs,  // a board without a fault is not taken without a question
    procedure::mark,            // so that the technician finds it
    procedure::detach,          // out of operation
    procedure::take_out,        // the technician's hands, and the proof that it is gone
    procedure::give_up_parts,   // what a board was set up for
    procedure::unmark,          // no LED, no flag
    procedure::show_state,      // as it is now
    procedure::record,          // in the log
};

}  // namespace

int main(int argc, char **argv) {
  return procedure::run({"remove_unit", "remove", LMAINTE_EVENT_REMOVED, kSteps}, argc, argv);
}
