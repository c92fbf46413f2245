// A program that works in the background, without a terminal: spbox, mostly. It does not outlive its owner.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "host/base/descriptor.h"

namespace terminal {

class BackgroundProgram {
 public:
  // Starts a program, found by the environment variable PATH, without input. It is killed with this object, and when the
  // thread ends that started it, however that ends. What waits here throws Interrupted as soon as the descriptor
  // `alarm` becomes readable. Throws std::system_error.
  explicit BackgroundProgram(const std::vector<std::string> &command, int alarm = -1);
  ~BackgroundProgram();
  BackgroundProgram(BackgroundProgram &&other) noexcept;
  BackgroundProgram(const BackgroundProgram &) = delete;
  BackgroundProgram &operator=(const BackgroundProgram &) = delete;
  BackgroundProgram &operator=(BackgroundProgram &&) = delete;

  // The exit status, 128 + n where signal n ended it; nothing when it still runs then. Waits for ever where no patience
  // is given.
  std::optional<int> wait(std::optional<std::chrono::milliseconds> patience = {});

  // Whether the program wrote a byte to descriptor 3 before it closed it or ended; nothing when it did neither in time.
  std::optional<bool> wait_until_ready(std::chrono::milliseconds patience);

  // Standard output and standard error until now, in the order in which they came. Throws std::system_error.
  std::string output() const;
  void kill();
  pid_t pid() const { return pid_; }

  // Who waits for several watches these descriptors: of the program's end, and of what it writes to descriptor 3.
  int end() const { return process_.get(); }
  int told() const { return told_.get(); }

 private:
  pid_t pid_ = -1;
  int alarm_;
  std::optional<int> status_;
  base::Descriptor process_, output_, told_;
};

}  // namespace terminal
