// add_unit - walks an operator through adding a unit while the server runs.
//
//   add_unit         asks which kind of unit
//   add_unit KIND    cmu, iou, fan, psu or ddc
//
// Exit status: 0 added, 1 something failed, 2 the operator gave up.

#include "procedure.h"

namespace {

constexpr procedure::Step kSteps[] = {
    procedure::may_be_added,       // its place is empty, or holds a unit that is out of operation
    procedure::choose_division,    // how a board will be used
    procedure::mark,               // so that the technician finds the place
    procedure::put_in_if_missing,  // the technician's hands, and the proof that it is there
    procedure::bring_up,           // tested, set up and in operation
    procedure::unmark,             // no LED, no flag
    procedure::show_state,         // as it is now
    procedure::record,             // in the log
};

}  // namespace

int main(int argc, char **argv) {
  return procedure::run({"add_unit", "add", LMAINTE_EVENT_ADDED, kSteps}, argc, argv);
}
