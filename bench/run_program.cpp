// lmainte_exec with a control program that ends at once, beside a bare fork, execve and waitpid.

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

#include "bench/memory_platform.h"
#include "bench/rows.h"
#include "include/lmainte.h"

extern "C" int __wrap_execve(const char *, char *const *, char *const *);
extern "C" pid_t __wrap_waitpid(pid_t, int *, int);
extern "C" pid_t __real_waitpid(pid_t, int *, int);

// Programs are not measured. Both sides start this child instead.
extern "C" int __wrap_execve(const char *, char *const *, char *const *) {
  _exit(0);
}

// The runner looks once a second whether the program has ended. Here it finds it ended at its first look.
extern "C" pid_t __wrap_waitpid(pid_t child, int *status, int options) {
  return __real_waitpid(child, status, options & ~WNOHANG);
}

namespace {

void run_program() {
  const int32_t status = lmainte_exec(LMAINTE_CMD_CTLLED, 10, "-u %s -m %d", "/CMU#2", 2);
  if (status != 0) std::abort();
}

void floor(const bench::Requests &requests) {
  char program[] = "/mgb/bin/ctlled", option[] = "-u", unit[] = "/CMU#2", mode[] = "-m", blink[] = "2";
  char *const arguments[] = {program, option, unit, mode, blink, nullptr};
  char *const environment[] = {nullptr};
  const pid_t child = fork();
  if (child == 0) execve(program, arguments, environment);
  int status = 0;
  if (waitpid(child, &status, 0) != child || status != 0) std::abort();
  bench::replay(requests);
}

}  // namespace

bench::Row bench::program_row() {
  return {.name = "run a control program",
          .floor = [asked = watch(run_program)] { floor(asked); },
          .call = run_program,
          .prepare = [] {},
          .starts_a_child = true};
}
