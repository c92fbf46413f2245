/* The call of the system by which a program starts another one, for programs of the workstation: by it shells start what they find. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <stddef.h>
#include <unistd.h>

#include "host/emulator/emulator.h"

static __typeof__(execve) *g_execve;

/* Early: a call may come behind a fork. */
__attribute__((constructor)) static void find_call(void) {
  *(void **)&g_execve = dlsym(RTLD_NEXT, "execve");
}

/* NOLINTNEXTLINE(readability-inconsistent-declaration-parameter-name): the declaration is the system's. */
__attribute__((visibility("default"))) int execve(const char *path, char *const words[], char *const environment[]) {
  if (g_execve == NULL) find_call();
  return emulator_takes(path, words, environment) ? -1 : g_execve(path, words, environment);
}
