// What runs beside a command, for as long as it is in the box: the box's daemon, and the platform of a command of another machine.
// Each has a root as the command has, and reaches no more.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

#include "host/base/descriptor.h"
#include "host/spbox/children.h"
#include "host/spbox/enclosure.h"

namespace spbox {

// A program that says its process id, and a line, when it is ready, and a line that says why where it fails.
struct Beside {
  std::string name;                  // "the box's daemon"
  std::vector<std::string> command;  // without the descriptor on which it says so
  std::string without;               // what a command does where it does not run
  std::string since;                 // and since it has ended
};
Beside daemon_of(const RootPlan &plan);
Beside platform_of(const RootPlan &plan);

class BesideProcess {
 public:
  // Starts it and waits until it is ready. A command that asks for nothing does without it: where it cannot be started a person is told
  // why, and that is all. Throws where the system has no process for it.
  BesideProcess(const RootPlan &plan, Children &children, Beside what);
  // Ends it. A person is told why where it has ended by itself, or has something to say.
  ~BesideProcess();
  BesideProcess(const BesideProcess &) = delete;
  BesideProcess &operator=(const BesideProcess &) = delete;

 private:
  void await();

  Children &children_;
  Beside what_;
  pid_t bwrap_ = -1;
  base::Descriptor says_;
  std::optional<pid_t> ready_;
};

}  // namespace spbox
