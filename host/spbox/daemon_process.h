// The box's daemon, for as long as a command is in the box. It has a root as the command has, and reaches no more.
#pragma once

#include <sys/types.h>

#include <optional>

#include "host/base/descriptor.h"
#include "host/spbox/children.h"
#include "host/spbox/enclosure.h"

namespace spbox {

class DaemonProcess {
 public:
  // Starts the daemon and waits until requests are answered. A command that asks for nothing does without it: where it
  // cannot be started a person is told why, and that is all. Throws where the system has no process for it.
  DaemonProcess(const RootPlan &plan, Children &children);
  // Ends it. A person is told why where it has ended by itself.
  ~DaemonProcess();
  DaemonProcess(const DaemonProcess &) = delete;
  DaemonProcess &operator=(const DaemonProcess &) = delete;

 private:
  void await();

  Children &children_;
  pid_t bwrap_ = -1;
  base::Descriptor says_;  // its process id when it is ready, and a line that says why where it fails
  std::optional<pid_t> ready_;
};

}  // namespace spbox
