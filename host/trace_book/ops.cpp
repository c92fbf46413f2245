#include "trace_events/ops.h"
#include "host/trace_book/phrases.h"

namespace trace_book {

using namespace trace_events;

namespace {

constexpr std::array kSharedOfOps{
    SharedPhrase{"ended", "the program ended", "exit status"},
    SharedPhrase{"no-time-limit", "the time limit is not positive"},
    SharedPhrase{"no-mode", "no such mode", "mode"},
    SharedPhrase{"no-unit", "the unit is null"},
};

}  // namespace

template <>
inline constexpr Page kPage<ControlMainte>{
    "lmainte_control_mainte",
    {
        {ControlMainte::kCommand, "switch maintenance mode", kCommand, Value{"mode", Form::kMainteMode}},
        {ControlMainte::kRefused, "maintenance mode was not switched", Value{"mode", Form::kMainteMode}, "exit status"},
    },
};

template <>
inline constexpr Page kPage<ReportVanta>{
    "lmainte_report_vanta",
    {
        {ReportVanta::kCommand, "report the maintenance", kCommand, Value{"mode", Form::kReportMode}},
        {ReportVanta::kRefused, "the maintenance was not reported", Value{"mode", Form::kReportMode}, "exit status"},
    },
};

template <>
inline constexpr Page kPage<ControlFan>{
    "lmainte_control_fan",
    {
        {ControlFan::kCommand, "set the fans' speed", kCommand, Value{"mode", Form::kFanMode}},
        {ControlFan::kNeedsUnit, "full speed needs a unit", Value{"mode", Form::kFanMode}},
        {ControlFan::kRefused, "the fans' speed was not set", Value{"mode", Form::kFanMode}, "exit status"},
    },
};

template <>
inline constexpr Page kPage<DetachFru>{
    "lmainte_detach_fru",
    {
        {DetachFru::kUnit, "detach the unit", "type", "number"},
        {DetachFru::kRefused, "the unit was not detached", "exit status"},
    },
};

template <>
inline constexpr Page kPage<ControlLed>{
    "lmainte_control_led",
    {
        {ControlLed::kCommand, "switch the LED", kCommand, Value{"mode", Form::kLedMode}},
        {ControlLed::kUnit, "of the unit", "type", "number"},
        {ControlLed::kRefused, "the LED was not switched", Value{"mode", Form::kLedMode}, "exit status"},
    },
};

template <>
inline constexpr Page kPage<SetMainteflag>{
    "lmainte_set_mainteflag",
    {
        {SetMainteflag::kCommand, "set the maintenance flag", kCommand, Value{"mode", Form::kFlagMode}},
        {SetMainteflag::kUnit, "of the unit", "type", "number"},
        {SetMainteflag::kRefused, "the maintenance flag was not set", Value{"mode", Form::kFlagMode}, "exit status"},
    },
};

template <>
inline constexpr Page kPage<JudgeControlFru>{
    "lmainte_judge_control_fru",
    {
        {JudgeControlFru::kUnit, "judge whether the unit may be added or removed", "type", "number"},
        {JudgeControlFru::kRefused, "the unit may not be added or removed now", "exit status"},
    },
};

template <>
inline constexpr Page kPage<TestFru>{
    "lmainte_test_fru",
    {
        {TestFru::kUnit, "test the unit", "type", "number"},
        {TestFru::kRefused, "the test failed", "exit status"},
    },
};

template <>
inline constexpr Page kPage<CheckFanspeed>{
    "lmainte_check_fanspeed",
    {
        {CheckFanspeed::kCommand, "check the fans' speed", kCommand},
        {CheckFanspeed::kNoUnit, "the unit's name is null"},
        {CheckFanspeed::kRefused, "the fans do not turn as they should", "exit status"},
    },
};

template <>
inline constexpr Page kPage<ClearStatus>{
    "lmainte_clear_status",
    {
        {ClearStatus::kUnit, "clear the status of the slot", kUnitId, kUnitId},
        {ClearStatus::kNoUnit, "the request is null"},
        {ClearStatus::kRefused, "the status was not cleared", "exit status"},
    },
};

template <>
inline constexpr Page kPage<SetXsb>{
    "lmainte_set_xsb",
    {
        {SetXsb::kUnit, "of the board", "type", "number"},
        {SetXsb::kCommand, "set up the board", kCommand},
        {SetXsb::kNoDivision, "no such division, or none of that mirroring", "division", "mirroring"},
        {SetXsb::kRefused, "the board was not set up", "exit status"},
    },
};

template <>
inline constexpr Page kPage<ClearXsb>{
    "lmainte_clear_xsb",
    {
        {ClearXsb::kUnit, "of the board", "type", "number"},
        {ClearXsb::kCommand, "delete the board", kCommand},
        {ClearXsb::kNoDivision, "no such division", "division"},
        {ClearXsb::kRefused, "the board was not deleted", "exit status"},
    },
};

template <>
inline constexpr Page kPage<TestSb>{
    "lmainte_test_sb",
    {
        {TestSb::kUnit, "of the board", "type", "number"},
        {TestSb::kCommand, "test the board", kCommand},
        {TestSb::kRefused, "the test failed", "exit status"},
    },
};

template <>
inline constexpr Page kPage<LinkBoard>{
    "lmainte_link_board",
    {
        {LinkBoard::kUnit, "of the board", "type", "number"},
        {LinkBoard::kCommand, "link the board", kCommand},
        {LinkBoard::kNoBoard, "the unit is no board", "type"},
        {LinkBoard::kRefused, "the board was not linked", "exit status"},
    },
};

Functions ops_functions() {
  static constexpr auto kFunctions = functions_of<kSharedOfOps>(Ops{});
  return kFunctions;
}

}  // namespace trace_book
