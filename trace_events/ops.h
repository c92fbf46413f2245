// The trace events of src/ops.
#pragma once

#include "trace_events/event.h"

namespace trace_events {

struct Ops;

// lmainte_control_mainte
struct ControlMainte : PlainBlock<Ops, 0x02F> {
  enum Point : Code { kCommand = point(2), kEnded };
  enum Error : Code { kNoTimeLimit = error(1), kNoMode, kRefused };
};

// lmainte_report_vanta
struct ReportVanta : PlainBlock<Ops, 0x030> {
  enum Point : Code { kCommand = point(2), kEnded };
  enum Error : Code { kNoTimeLimit = error(1), kNoMode, kRefused };
};

// lmainte_control_fan
struct ControlFan : PlainBlock<Ops, 0x031> {
  enum Point : Code { kCommand = point(2), kEnded };
  enum Error : Code { kNoTimeLimit = error(1), kNoMode, kNeedsUnit, kRefused };
};

// lmainte_detach_fru
struct DetachFru : PlainBlock<Ops, 0x032> {
  enum Point : Code { kUnit = point(2), kEnded };
  enum Error : Code { kNoTimeLimit = error(1), kNoUnit, kRefused };
};

// lmainte_control_led
struct ControlLed : PlainBlock<Ops, 0x033> {
  enum Point : Code { kCommand = point(2), kUnit, kEnded };
  enum Error : Code { kNoTimeLimit = error(1), kNoUnit, kNoMode, kRefused };
};

// lmainte_set_mainteflag
struct SetMainteflag : PlainBlock<Ops, 0x034> {
  enum Point : Code { kCommand = point(2), kUnit, kEnded };
  enum Error : Code { kNoTimeLimit = error(1), kNoUnit, kNoMode, kRefused };
};

// lmainte_judge_control_fru
struct JudgeControlFru : PlainBlock<Ops, 0x035> {
  enum Point : Code { kUnit = point(2), kEnded };
  enum Error : Code { kNoTimeLimit = error(1), kNoUnit, kNoMode, kRefused };
};

// lmainte_test_fru
struct TestFru : PlainBlock<Ops, 0x036> {
  enum Point : Code { kUnit = point(2), kEnded };
  enum Error : Code { kNoTimeLimit = error(1), kNoUnit, kRefused };
};

// lmainte_check_fanspeed
struct CheckFanspeed : PlainBlock<Ops, 0x054> {
  enum Point : Code { kCommand = point(2), kEnded };
  enum Error : Code { kNoTimeLimit = error(1), kNoUnit, kRefused };
};

// lmainte_clear_status
struct ClearStatus : PlainBlock<Ops, 0x047> {
  enum Point : Code { kUnit = point(2), kEnded };
  enum Error : Code { kNoTimeLimit = error(1), kNoUnit, kRefused };
};

// lmainte_set_xsb
struct SetXsb : SecondBlock<Ops, 0x01A> {
  enum Point : Code { kUnit = point(2), kCommand, kEnded };
  enum Error : Code { kNoTimeLimit = error(1), kNoUnit, kNoDivision, kRefused };
};

// lmainte_clear_xsb
struct ClearXsb : SecondBlock<Ops, 0x01B> {
  enum Point : Code { kUnit = point(2), kCommand, kEnded };
  enum Error : Code { kNoTimeLimit = error(1), kNoUnit, kNoDivision, kRefused };
};

// lmainte_test_sb
struct TestSb : SecondBlock<Ops, 0x01C> {
  enum Point : Code { kUnit = point(2), kCommand, kEnded };
  enum Error : Code { kNoTimeLimit = error(1), kNoUnit, kRefused };
};

// lmainte_link_board
struct LinkBoard : SecondBlock<Ops, 0x01E> {
  enum Point : Code { kUnit = point(2), kCommand, kEnded };
  enum Error : Code { kNoTimeLimit = error(1), kNoUnit, kNoBoard, kNoMode, kRefused };
};

struct Ops : Room<ControlMainte, ReportVanta, ControlFan, DetachFru, ControlLed, SetMainteflag, JudgeControlFru,
                  TestFru, CheckFanspeed, ClearStatus, SetXsb, ClearXsb, TestSb, LinkBoard> {};

}  // namespace trace_events
