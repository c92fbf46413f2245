// Processes and time, as the library calls them. While no machine runs, they are the system's own.

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <utility>

#include <gtest/gtest.h>

#include "include/lmainte.h"
#include "tests/unit/doubles/machine.h"
#include "tests/unit/doubles/shared.h"
#include "tests/unit/doubles/system_calls.h"

using doubles::Machine;
using doubles::machine;
using doubles::Program;

// Saves what the library counted, in a build that counts.
extern "C" [[gnu::weak]] void __gcov_dump();

namespace doubles {

void leave(int status) {
  machine().active = false;
  if (__gcov_dump != nullptr) __gcov_dump();
  __real__exit(status);
}

}  // namespace doubles

namespace {

// A real child ends at once, so a wait for it need not be repeated. Signals that interrupt it are not the library's: a fuzzer
// has a timer of its own.
pid_t wait_for_real_child(pid_t pid, int *status) {
  for (;;) {
    const pid_t ended = __real_waitpid(pid, status, 0);
    if (ended != -1 || errno != EINTR) return ended;
  }
}

pid_t fork_in_earnest() {
  const pid_t child = __real_fork();
  machine().has_forked = true;
  if (child == 0) machine().begin_child();
  return child;
}

int end_of(int now, int seconds) {
  return seconds == Program::kNever ? Program::kNever : now + seconds;
}

// Copies a vector of texts, one a line, and returns how many there are.
template <size_t Size>
uint32_t copy_lines(char *const *texts, char (&lines)[Size]) {
  uint32_t count = 0;
  size_t used = 0;
  for (; texts[count] != nullptr; ++count)
    used += static_cast<size_t>(std::snprintf(lines + used, Size - used, "%s\n", texts[count]));
  return count;
}

pid_t wait_for_played(pid_t pid, int *status, bool no_hang) {
  auto &children = machine().children;
  const auto found = children.find(pid);
  if (found == children.end()) {
    errno = ECHILD;
    return -1;
  }
  auto &child = found->second;
  if (child.ends_at > machine().clock) {
    if (no_hang) return 0;
    if (child.ends_at == Program::kNever) ADD_FAILURE() << "a wait for ever";
    machine().clock = child.ends_at;
  }
  if (status != nullptr) *status = child.status;
  children.erase(found);
  return pid;
}

void signal_played(Machine::Child &child, int signal) {
  const int now = machine().clock;
  if (child.ends_at <= now) return;
  const bool polite = signal == SIGTERM;
  const int ends_at = polite ? end_of(now, child.program.seconds_after_sigterm) : now;
  if (ends_at >= child.ends_at) return;
  child.ends_at = ends_at;
  child.status = polite ? child.program.status_after_sigterm : signal;
}

}  // namespace

// Only the linker knows these names, so no header declares them.
#pragma GCC diagnostic ignored "-Wmissing-declarations"

extern "C" {

pid_t __wrap_getpid() {
  if (!machine().active) return __real_getpid();
  if (const auto handler = std::exchange(machine().interruption, nullptr)) handler();
  return machine().pid;
}

pid_t __wrap_fork() {
  if (!machine().active) return __real_fork();
  for (const auto &[path, text] : machine().disk) {
    machine().pages.push_back(text);
    machine().pages_path = path;
  }
  if (const auto *failure = machine().enter("fork")) return failed(*failure);
  if (machine().children_are_real) return fork_in_earnest();
  Program program;
  if (!machine().programs.empty()) {
    program = machine().programs.front();
    machine().programs.pop_front();
  }
  const pid_t child = machine().next_child++;
  machine().children[child] = {program, end_of(machine().clock, program.seconds), program.status};
  return child;
}

int __wrap_execve(const char *path, char *const arguments[], char *const environment[]) {
  if (!machine().active) return __real_execve(path, arguments, environment);
  if (const auto *failure = machine().enter(std::string("execve ") + path)) return failed(*failure);
  auto &executed = doubles::shared().executed;
  std::snprintf(executed.path, sizeof executed.path, "%s", path);
  executed.arguments_end = copy_lines(arguments, executed.arguments);
  copy_lines(environment, executed.environment);
  executed.happened = true;
  doubles::leave(machine().child_exits_with);
}

void __wrap__exit(int status) {
  if (machine().active && machine().in_child) {
    doubles::shared().left_by_exit = true;
    doubles::shared().blocks_left = static_cast<uint32_t>(machine().blocks());
  }
  doubles::leave(status);
}

pid_t __wrap_waitpid(pid_t pid, int *status, int options) {
  if (!machine().active) return __real_waitpid(pid, status, options);
  const bool no_hang = (options & WNOHANG) != 0;
  machine().seen_pids.push_back(g_show_file_pid);
  const std::string who = machine().children_are_real ? "child" : std::to_string(pid);
  if (const auto *failure = machine().enter("waitpid " + who + (no_hang ? " nohang" : ""))) return failed(*failure);
  if (machine().children_are_real) return wait_for_real_child(pid, status);
  return wait_for_played(pid, status, no_hang);
}

int __wrap_kill(pid_t pid, int signal) {
  if (!machine().active) return __real_kill(pid, signal);
  const std::string call = "kill " + std::to_string(pid) + " " + std::to_string(signal);
  const doubles::Failure *failure = nullptr;
  if (signal == SIGKILL)
    machine().note(call);  // to a child of one's own this cannot fail
  else
    failure = machine().enter(call);
  if (failure != nullptr) return failed(*failure);
  const auto found = machine().children.find(pid);
  if (found == machine().children.end()) {
    ADD_FAILURE() << "a signal to the process " << pid;
    return -1;
  }
  signal_played(found->second, signal);
  errno = EAGAIN;
  return 0;
}

// One that fails is interrupted at once.
unsigned __wrap_sleep(unsigned seconds) {
  if (!machine().active) return __real_sleep(seconds);
  if (machine().enter("sleep " + std::to_string(seconds)) != nullptr) return seconds;
  for (; seconds > 0; --seconds) {
    ++machine().clock;
    machine().asleep();
  }
  errno = EAGAIN;
  return 0;
}

time_t __wrap_time(time_t *result) {
  if (!machine().active) return __real_time(result);
  const auto *failure = machine().enter("time");
  const auto now = failure != nullptr ? failed(*failure) : machine().wall_clock(machine().clock);
  if (result != nullptr) *result = static_cast<time_t>(now);
  return static_cast<time_t>(now);
}

// A shell that knows how a file is made and how it is removed.
int __wrap_system(const char *command) {
  if (!machine().active) return __real_system(command);
  if (const auto *failure = machine().enter(std::string("system ") + command)) return failed(*failure);
  const std::string line = command;
  if (line.rfind("rm -f ", 0) == 0) machine().disk.erase(line.substr(6));
  const auto into = line.find(" > ");
  if (into != std::string::npos) machine().disk[line.substr(into + 3)] = "";
  errno = EAGAIN;
  return 0;
}

}  // extern "C"
