// What each control program does to the box, by name.
#pragma once

#include <string_view>

#include "host/box/inventory.h"
#include "host/box/programs.h"
#include "host/programs/arguments.h"

namespace programs {

// Exit statuses. The programs share some and have some of their own.
enum Status : int {
  kDone = 0,
  kUsage = 1,          // an argument line that makes no sense
  kFailed = 8,         // the box could not be read or written
  kRefused = 128,      // not now: the system or the unit is not in a state for it
  kBadBoard = 131,     // deleteboard: no such board
  kBadDivision = 136,  // setupfru: no such board
  kNotInMode = 200,    // ctlmainte: not in maintenance mode
  kNoJudgement = 203,  // judgectlfru: no such unit
  kFlagRefused = 204,  // setmainteflag: no such unit, or not under maintenance
  kNotDetached = 205,  // detachfru: no such unit
  kLedFailed = 206,    // ctlled: no such unit
  kTestFailed = 208,   // testfru, testsb: no such unit or board
  kFanFailed = 219,    // ctlfan: no such unit
  kNotCleared = 220,   // clearpci: no such unit
  kNoFanSpeed = 225,   // chkfanspeed: no such fan tray
  kNotLinked = 226     // linkboard: no such board unit
};

// A box as a control program sees it.
struct Machine {
  box::Place place;
  std::uint32_t model;
  box::Hardware &hardware;

  bool has_unit(std::string_view name) const;       // a location of the model
  bool has_expansion(std::string_view name) const;  // an I/O expansion unit or a part of one
};

using Action = int (*)(const Arguments &arguments, Machine &machine);

struct ControlProgram {
  std::string_view name;
  const char *options;  // as for getopt
  Action act;           // returns the exit status
};

// The program of this name, or null.
const ControlProgram *find_program(std::string_view name);

}  // namespace programs
