// What each control program does to the box, by name.
#pragma once

#include <string_view>

#include "host/programs/arguments.h"
#include "host/programs/exit_statuses.h"
#include "host/programs/machine.h"

namespace programs {

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
