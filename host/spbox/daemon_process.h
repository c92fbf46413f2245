// The box's daemon, for as long as a command is in the box.
#pragma once

#include <sys/types.h>

#include <filesystem>

#include "host/base/descriptor.h"
#include "host/box/place.h"

namespace spbox {

class DaemonProcess {
 public:
  // Starts the daemon and waits until requests are answered. A command that asks for nothing does without it: where it
  // cannot be started a person is told why, and that is all. Throws where the system has no process for it.
  DaemonProcess(const std::filesystem::path &program, const box::Place &place);
  // Ends it. A person is told why where it has ended by itself.
  ~DaemonProcess();
  DaemonProcess(const DaemonProcess &) = delete;
  DaemonProcess &operator=(const DaemonProcess &) = delete;

 private:
  void await();

  pid_t pid_ = -1;
  base::Descriptor says_;  // an empty line when it is ready, and a line that says why where it fails
  bool ready_ = false;
};

}  // namespace spbox
