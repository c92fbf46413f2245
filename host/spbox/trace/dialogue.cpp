#include "host/spbox/trace/phrases.h"

namespace spbox {
namespace {

constexpr Phrase kAskSelect[] = {
    point(2, "the prompt returned", "result"),
    error(1, "the second argument is null"),
    error(2, "the format is null"),
    error(3, "typed-ahead input was not discarded", "result"),
    error(4, "echo was not switched on", "result"),
    error(5, "echo was not switched off: the answer does not count", "result"),
};
constexpr Phrase kTtyControl[] = {
    point(2, "change the terminal", "mode", "setting"),
    error(1, "the terminal's attributes cannot be read", "result", "errno"),
    error(2, "no such mode", "mode", "setting"),
    error(3, "the terminal's queue was not discarded", "result", "errno"),
    error(4, "the terminal's attributes cannot be set", "result", "errno"),
};
constexpr Phrase kDotStart[] = {
    point(2, "a child shows the progress", "child"),
    point(3, "a mark was shown", "seconds"),
    point(4, "the progress is at its end", "signal came"),
    point(9, "the signal to end the progress came"),
    error(1, "the request is null"),
    error(2, "the request is refused", "enabled", "seconds"),
    error(3, "no child could be made", "errno"),
    error(4, "the clock cannot be read", "errno"),
    error(5, "the signal's handler was not set", "result"),
};
constexpr Phrase kDotEnd[] = {
    point(2, "whether the child has ended", "process"),
    point(3, "SIGTERM was sent", "child"),
    error(1, "there is no such child", "child"),
};
constexpr Phrase kShowFile[] = {
    point(2, "the child runs the pager"),
    error(1, "the path is null"),
    error(2, "no child could be made", "errno"),
    error(3, "the pager cannot be run", "errno"),
    error(4, "the wait for the pager failed", "result", "errno"),
    error(5, "the pager was killed", "wait status"),
    error(6, "the pager could not be started", "wait status"),
};
constexpr Phrase kShowMenu[] = {
    error(1, "the lines are null"),
    error(2, "the list file cannot be created", "errno"),
    error(3, "the pager failed", "result"),
    error(4, "the list file cannot be removed", "result", "errno"),
};

// Lists and status tables of units.
constexpr Phrase kTable[] = {
    error(0, "the list file cannot be created", "errno"),
    error(1, "a unit has no name", "result"),
    error(2, "the pager failed", "result"),
    error(3, "the list file cannot be removed", "result", "errno"),
};
constexpr Phrase kUnits[] = {
    error(1, "the records are null"),
    error(2, "the lines are null"),
};
constexpr Phrase kUnit[] = {
    error(1, "the record is null"),
    error(2, "the lines are null"),
};
constexpr Phrase kBoards[] = {
    error(1, "no such kind of board", "kind"),
    error(2, "the boards' records are null"),
    error(3, "the extended system boards' records are null"),
    error(4, "the lines are null"),
};
constexpr Phrase kBoard[] = {
    error(1, "no such kind of board", "kind"),
    error(2, "the record is null"),
    error(3, "the lines are null"),
};
constexpr Phrase kIoUnits[] = {
    error(1, "the boards' records are null"),
    error(2, "the expansion units' records are null"),
    error(3, "the lines are null"),
};
constexpr Phrase kEmptyList[] = {
    error(1, "the lines are null"),
    error(2, "the list file cannot be created", "errno"),
};

constexpr Function kFunctions[] = {
    {"lmainte_ask_select", Space::kPlain, 0x000, kAskSelect},
    {"lmainte_tty_control", Space::kPlain, 0x001, kTtyControl},
    {"lmainte_dot_start", Space::kPlain, 0x037, kDotStart},
    {"lmainte_dot_end", Space::kPlain, 0x038, kDotEnd},
    {"lmainte_show_file", Space::kPlain, 0x02E, kShowFile},
    {"lmainte_show_menu", Space::kSecond, 0x017, kShowMenu},
    {"lmainte_show_psu_list", Space::kPlain, 0x013, kUnits, {kTable, 3}},
    {"lmainte_show_fantray_list", Space::kPlain, 0x012, kUnits, {kTable, 3}},
    {"lmainte_show_ddca_list", Space::kSecond, 0x013, kUnits, {kTable, 3}},
    {"lmainte_show_ioupci_list", Space::kPlain, 0x01A, kUnit, {kTable, 3}},
    {"lmainte_show_ioxpci_list", Space::kPlain, 0x017, kUnit, {kTable, 3}},
    {"lmainte_show_iounit_list", Space::kPlain, 0x019, kIoUnits, {kTable, 4}},
    {"lmainte_show_iox_list or lmainte_show_ioxpsu_list", Space::kPlain, 0x015, kEmptyList},
    {"lmainte_show_cmu_iou_list", Space::kSecond, 0x015, kBoards, {kTable, 5}},
    {"lmainte_show_psu_status", Space::kPlain, 0x023, kUnit, {kTable, 3}},
    {"lmainte_show_fantray_status", Space::kPlain, 0x022, kUnit, {kTable, 3}},
    {"lmainte_show_ddca_status", Space::kSecond, 0x014, kUnit, {kTable, 3}},
    {"lmainte_show_sb_status", Space::kSecond, 0x016, kBoard, {kTable, 4}},
};

}  // namespace

Functions dialogue_functions() {
  return kFunctions;
}

}  // namespace spbox
