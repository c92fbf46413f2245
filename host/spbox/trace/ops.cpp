#include "host/spbox/trace/phrases.h"

namespace spbox {
namespace {

constexpr Phrase kMainte[] = {
    point(2, "switch maintenance mode", "command", "mode"),
    point(3, "the program ended", "exit status"),
    error(1, "the time limit is not positive"),
    error(2, "no such mode", "mode"),
    error(3, "maintenance mode was not switched", "mode", "exit status"),
};
constexpr Phrase kVanta[] = {
    point(2, "report the maintenance", "command", "mode"),
    point(3, "the program ended", "exit status"),
    error(1, "the time limit is not positive"),
    error(2, "no such mode", "mode"),
    error(3, "the maintenance was not reported", "mode", "exit status"),
};
constexpr Phrase kFan[] = {
    point(2, "set the fans' speed", "command", "mode"), point(3, "the program ended", "exit status"),
    error(1, "the time limit is not positive"),         error(2, "no such mode", "mode"),
    error(3, "full speed needs a unit", "mode"),        error(4, "the fans' speed was not set", "mode", "exit status"),
};
constexpr Phrase kFanSpeed[] = {
    point(2, "check the fans' speed", "command"),
    point(3, "the program ended", "exit status"),
    error(1, "the time limit is not positive"),
    error(2, "the unit's name is null"),
    error(3, "the fans do not turn as they should", "exit status"),
};

// A program for one unit, in one of several modes.
constexpr Phrase kUnitInMode[] = {
    point(3, "of the unit", "type", "number"),  point(4, "the program ended", "exit status"),
    error(1, "the time limit is not positive"), error(2, "the unit is null"),
    error(3, "no such mode", "mode"),
};
constexpr Phrase kLed[] = {
    point(2, "switch the LED", "command", "mode"),
    error(4, "the LED was not switched", "mode", "exit status"),
};
constexpr Phrase kFlag[] = {
    point(2, "set the maintenance flag", "command", "mode"),
    error(4, "the maintenance flag was not set", "mode", "exit status"),
};

// A program for one field-replaceable unit.
constexpr Phrase kFru[] = {
    point(3, "the program ended", "exit status"),
    error(1, "the time limit is not positive"),
    error(2, "the unit is null"),
    error(3, "no such mode", "mode"),
};
constexpr Phrase kDetach[] = {
    point(2, "detach the unit", "type", "number"),
    error(4, "the unit was not detached", "exit status"),
};
constexpr Phrase kJudge[] = {
    point(2, "judge whether the unit may be added or removed", "type", "number"),
    error(4, "the unit may not be added or removed now", "exit status"),
};
constexpr Phrase kTest[] = {
    point(2, "test the unit", "type", "number"),
    error(4, "the test failed", "exit status"),
};

// A program for one system board.
constexpr Phrase kBoard[] = {
    point(2, "of the board", "type", "number"),
    point(4, "the program ended", "exit status"),
    error(1, "the time limit is not positive"),
    error(2, "the unit is null"),
};
constexpr Phrase kSetXsb[] = {
    point(3, "set up the board", "command"),
    error(3, "no such division, or none of that mirroring", "division", "mirroring"),
    error(4, "the board was not set up", "exit status"),
};
constexpr Phrase kClearXsb[] = {
    point(3, "delete the board", "command"),
    error(3, "no such division", "division"),
    error(4, "the board was not deleted", "exit status"),
};
constexpr Phrase kTestBoard[] = {
    point(3, "test the board", "command"),
    error(3, "the test failed", "exit status"),
};
constexpr Phrase kLinkBoard[] = {
    point(3, "link the board", "command"),
    error(3, "the unit is no board", "type"),
    error(4, "no such mode", "mode"),
    error(5, "the board was not linked", "exit status"),
};
constexpr Phrase kClearStatus[] = {
    point(2, "clear the status of the slot", "unit id", "unit id"),
    point(3, "the program ended", "exit status"),
    error(1, "the time limit is not positive"),
    error(2, "the request is null"),
    error(3, "the status was not cleared", "exit status"),
};

constexpr Function kFunctions[] = {
    {"lmainte_control_mainte", Space::kPlain, 0x02F, kMainte},
    {"lmainte_report_vanta", Space::kPlain, 0x030, kVanta},
    {"lmainte_control_fan", Space::kPlain, 0x031, kFan},
    {"lmainte_detach_fru", Space::kPlain, 0x032, kDetach, {kFru}},
    {"lmainte_control_led", Space::kPlain, 0x033, kLed, {kUnitInMode}},
    {"lmainte_set_mainteflag", Space::kPlain, 0x034, kFlag, {kUnitInMode}},
    {"lmainte_judge_control_fru", Space::kPlain, 0x035, kJudge, {kFru}},
    {"lmainte_test_fru", Space::kPlain, 0x036, kTest, {kFru}},
    {"lmainte_check_fanspeed", Space::kPlain, 0x054, kFanSpeed},
    {"lmainte_clear_status", Space::kPlain, 0x047, kClearStatus},
    {"lmainte_set_xsb", Space::kSecond, 0x01A, kSetXsb, {kBoard}},
    {"lmainte_clear_xsb", Space::kSecond, 0x01B, kClearXsb, {kBoard}},
    {"lmainte_test_sb", Space::kSecond, 0x01C, kTestBoard, {kBoard}},
    {"lmainte_link_board", Space::kSecond, 0x01E, kLinkBoard, {kBoard}},
};

}  // namespace

Functions ops_functions() {
  return kFunctions;
}

}  // namespace spbox
