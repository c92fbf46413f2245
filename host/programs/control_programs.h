// What each control program does to the box, by name.
#pragma once

#include <string_view>

#include "host/programs/arguments.h"
#include "host/programs/machine.h"

namespace programs {

// Exit statuses. The programs share some and have some of their own.
enum Status : int {
  kDone = 0,
  kUsage = 1,           // an argument line that makes no sense
  kBoardMissing = 6,    // setupfru: the board is not installed
  kFailed = 8,          // the box, or a record that decides, could not be read or written
  kRefused = 128,       // not now: the system or the unit is not in a state for it
  kNoBoard = 131,       // deleteboard: no such board
  kNoPart = 132,        // deleteboard: the board is not divided so
  kPartActive = 133,    // deleteboard: an extended system board is active
  kNoDivision = 136,    // setupfru: no such board, or the model divides none
  kBoardActive = 137,   // setupfru: an extended system board of the board is active
  kNotInMode = 200,     // ctlmainte: not in maintenance mode
  kNoJudgement = 203,   // judgectlfru: no such unit
  kFlagRefused = 204,   // setmainteflag: no such unit, or not under maintenance
  kNotDetached = 205,   // detachfru: no such unit
  kLedFailed = 206,     // ctlled: no such unit
  kTestFailed = 208,    // testfru, testsb: no such unit or board, or one that is faulted
  kFanFailed = 219,     // ctlfan: no such unit
  kNotCleared = 220,    // clearpci: no such slot
  kNoFanSpeed = 225,    // chkfanspeed: no such fan tray, or one that does not turn as it should
  kNotLinked = 226,     // linkboard: no such board unit, or one that is faulted
  kIndispensable = 232  // judgectlfru: the server cannot do without the unit
};

using Action = int (*)(const Arguments &arguments, Machine &machine);

// In three groups: what concerns the system, one unit, a system board.
int ctlmainte(const Arguments &arguments, Machine &machine);
int ctlfan(const Arguments &arguments, Machine &machine);
int vantamainte(const Arguments &arguments, Machine &machine);
int ioadm(const Arguments &arguments, Machine &machine);
int waitmgbready(const Arguments &arguments, Machine &machine);

int judgectlfru(const Arguments &arguments, Machine &machine);
int testfru(const Arguments &arguments, Machine &machine);
int detachfru(const Arguments &arguments, Machine &machine);
int ctlled(const Arguments &arguments, Machine &machine);
int setmainteflag(const Arguments &arguments, Machine &machine);
int clearpci(const Arguments &arguments, Machine &machine);
int chkfanspeed(const Arguments &arguments, Machine &machine);

int setupfru(const Arguments &arguments, Machine &machine);
int deleteboard(const Arguments &arguments, Machine &machine);
int testsb(const Arguments &arguments, Machine &machine);
int linkboard(const Arguments &arguments, Machine &machine);

struct ControlProgram {
  std::string_view name;
  const char *options;  // as for getopt
  Action act;           // returns the exit status
};

// The program of this name, or null.
const ControlProgram *find_program(std::string_view name);

}  // namespace programs
