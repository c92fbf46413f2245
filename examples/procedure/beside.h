// What the operator sees while an operation runs: that time passes, and that Ctrl-C was heard.
#pragma once

#include <sys/prctl.h>
#include <sys/types.h>
#include <unistd.h>

#include <csignal>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <string>

#include "../graceful.h"
#include "lmainte.h"

namespace procedure {

enum class Line : time_t {
  kAtOnce = 0,
  kWhenSlow = 5  // seconds: an operation of three control programs takes three
};

// A child of the command beside an operation. The operation itself, and the control programs that it runs, do not hear
// of Ctrl-C: this child does, and answers at once. It also draws the library's progress line, no longer than the
// operation may take.
class Beside {
 public:
  Beside(const std::string &message, int32_t longest, Line line) : child_(start(message, longest, line)) {}
  ~Beside() {
    if (child_ > 0) lmainte_dot_end(child_);
  }
  Beside(const Beside &) = delete;
  Beside &operator=(const Beside &) = delete;

 private:
  // The child's process id, or less than 0 where there is none.
  static pid_t start(const std::string &message, int32_t longest, Line line) {
    const pid_t command = getpid();
    sigset_t before;
    sigset_t heard;
    sigemptyset(&heard);
    for (const int number : {SIGINT, SIGQUIT, SIGTERM}) sigaddset(&heard, number);
    sigprocmask(SIG_BLOCK, &heard, &before);
    std::fflush(stdout);
    const pid_t child = fork();
    if (child == 0) {
      prctl(PR_SET_PDEATHSIG, SIGTERM);  // it does not outlive a command that is killed
      if (getppid() == command) run(heard, message, longest, line);
      _exit(0);
    }
    sigprocmask(SIG_SETMASK, &before, nullptr);
    return child;
  }

  static void run(const sigset_t &heard, const std::string &message, int32_t longest, Line line) {
    const timespec quiet = {static_cast<time_t>(line), 0};
    int32_t indicator = 0;
    bool has_answered = false;
    for (;;) {
      const int number = indicator == 0 ? sigtimedwait(&heard, nullptr, &quiet) : sigwaitinfo(&heard, nullptr);
      if (number == SIGTERM) break;
      if (number < 0 && indicator == 0) {
        constexpr int32_t kToStopIt = 15;  // seconds: the library does, when a control program has spent its time
        const DotParam request = {1, message.c_str(), longest + kToStopIt};
        indicator = lmainte_dot_start(&request);
      } else if (number > 0 && !has_answered) {
        has_answered = true;
        std::puts("\nInterrupted: please wait until this step has ended.");
        std::fflush(stdout);
      }
    }
    if (indicator > 0) lmainte_dot_end(indicator);
  }

  pid_t child_;
};

// Runs an operation. Ctrl-C does not reach its control programs, nor cut the library's waiting short; it is heeded
// before the next question.
template <class Operation>
int32_t with_progress(const std::string &message, int32_t longest, Operation operation, Line line = Line::kAtOnce) {
  const graceful::Undisturbed undisturbed;
  const Beside beside(message, longest, line);
  return operation();
}

// The same for an operation that takes a second or two, unless a control program is slow or hangs.
template <class Operation>
int32_t with_late_progress(const std::string &message, int32_t longest, Operation operation) {
  return with_progress(message, longest, operation, Line::kWhenSlow);
}

}  // namespace procedure
