#include "procedure/beside.h"

#include <pthread.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>

#include "include/lmainte_procedure.h"
#include "procedure/words.h"

namespace lmainte::procedure {
namespace {

pid_t g_watcher = 0;

// In the indicator, as soon as the library has forked it: it does not outlive a watcher that is killed.
void end_with_watcher() {
  prctl(PR_SET_PDEATHSIG, SIGTERM);
  if (getppid() != g_watcher) _exit(0);
}

void watch(const sigset_t &heard, const char *message, int32_t longest, Line line) {
  const timespec quiet = {static_cast<time_t>(line), 0};
  g_watcher = getpid();
  pthread_atfork(nullptr, nullptr, end_with_watcher);
  int32_t indicator = 0;
  bool has_answered = false;
  for (;;) {
    const int number = indicator == 0 ? sigtimedwait(&heard, nullptr, &quiet) : sigwaitinfo(&heard, nullptr);
    if (number == SIGTERM) break;
    if (number < 0 && indicator == 0) {
      constexpr int32_t kToStopIt = 15;  // seconds: the library does, when a control program has spent its time
      constexpr int32_t kMost = 86400;
      const DotParam request = {1, message, std::clamp(longest, 0, kMost) + kToStopIt};
      indicator = lmainte_dot_start(&request);
    } else if (number > 0 && !has_answered) {
      has_answered = true;
      printf("\n%s\n", words("Interrupted: please wait until this step has ended."));
      fflush(stdout);
    }
  }
  if (indicator > 0) lmainte_dot_end(indicator);
}

// The child's process id, or less than 0 where there is none.
pid_t start(const char *message, int32_t longest, Line line) {
  const pid_t command = getpid();
  sigset_t before;
  sigset_t heard;
  sigemptyset(&heard);
  for (const int number : {SIGINT, SIGQUIT, SIGTERM}) sigaddset(&heard, number);
  sigprocmask(SIG_BLOCK, &heard, &before);
  fflush(stdout);
  const pid_t child = fork();
  if (child == 0) {
    prctl(PR_SET_PDEATHSIG, SIGTERM);  // it does not outlive a command that is killed
    if (getppid() == command) watch(heard, message, longest, line);
    _exit(0);
  }
  sigprocmask(SIG_SETMASK, &before, nullptr);
  return child;
}

int32_t operate(const char *message, int32_t longest, int32_t (*operation)(void *), void *argument, Line line) {
  return with_progress(
      Text(message), longest, [&] { return operation(argument); }, line);
}

}  // namespace

Beside::Beside(const char *message, int32_t longest, Line line)
    : child_(start(shown(message).c_str(), longest, line)) {}

Beside::~Beside() {
  if (child_ > 0) lmainte_dot_end(child_);
}

}  // namespace lmainte::procedure

namespace procedure = lmainte::procedure;

int32_t lmainte_operate(const char *message, int32_t longest, int32_t (*operation)(void *argument), void *argument) {
  return procedure::operate(message, longest, operation, argument, procedure::Line::kAtOnce);
}

int32_t lmainte_operate_quietly(const char *message, int32_t longest, int32_t (*operation)(void *argument),
                                void *argument) {
  return procedure::operate(message, longest, operation, argument, procedure::Line::kWhenSlow);
}
