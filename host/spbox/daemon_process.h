// The box's daemon, for as long as a command is in the box.
#pragma once

#include <sys/types.h>

#include <filesystem>

#include "host/box/place.h"

namespace spbox {

class DaemonProcess {
 public:
  // Starts the daemon and waits until requests are answered. A command that asks for nothing does without it: where it
  // cannot be started a person is told so, and that is all. Throws where the system has no process for it.
  DaemonProcess(const std::filesystem::path &program, const box::Place &place);
  ~DaemonProcess();
  DaemonProcess(const DaemonProcess &) = delete;
  DaemonProcess &operator=(const DaemonProcess &) = delete;

 private:
  pid_t pid_;
};

}  // namespace spbox
