/* Calls by which a program starts another one, but for execve itself: where that one is of another machine, it is emulated. In all else
   each does what the C library does. */
#define _GNU_SOURCE
#define _FILE_OFFSET_BITS 64
#include <dlfcn.h>
#include <errno.h>
#include <limits.h>
#include <spawn.h>
#include <stdarg.h>
#include <stdbool.h>
#include <stddef.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include "host/emulator/emulator.h"

#define EXPORT __attribute__((visibility("default")))

typedef int become_function(const char *, char *const[], char *const[]);
typedef int spawn_function(pid_t *, const char *, const posix_spawn_file_actions_t *, const posix_spawnattr_t *,
                           char *const[], char *const[]);

static struct {
  become_function *execve, *execvpe;
  spawn_function *posix_spawn, *posix_spawnp;
} g_next;

/* Early: a call may come in a signal handler, or behind a fork. */
__attribute__((constructor)) static void find_calls(void) {
  *(void **)&g_next.execvpe = dlsym(RTLD_NEXT, "execvpe");
  *(void **)&g_next.posix_spawn = dlsym(RTLD_NEXT, "posix_spawn");
  *(void **)&g_next.posix_spawnp = dlsym(RTLD_NEXT, "posix_spawnp");
  *(void **)&g_next.execve = dlsym(RTLD_NEXT, "execve");
}

/* Constructors of others may come first. */
static void be_ready(void) {
  if (g_next.execve == NULL) find_calls();
}

/* ---- By a path, or by a name on the PATH */

static bool is_program(const char *path) {
  struct stat about;
  return stat(path, &about) == 0 && S_ISREG(about.st_mode) && access(path, X_OK) == 0;
}

/* The path that is found for a name, or null; `room` has PATH_MAX bytes. Without a PATH the C library looks where nothing is emulated. */
static const char *found(const char *name, char *room) {
  if (name == NULL || name[0] == '\0' || strchr(name, '/') != NULL) return name;
  const int saved = errno;
  const char *folder = getenv("PATH"), *path = NULL;
  while (folder != NULL && path == NULL) {
    const size_t length = strcspn(folder, ":");
    path = emulator_path(folder, length, name, room);
    if (path != NULL && !is_program(path)) path = NULL;
    folder = folder[length] == '\0' ? NULL : folder + length + 1;
  }
  errno = saved;
  return path;
}

static int become_path(const char *path, char *const words[], char *const environment[]) {
  be_ready();
  return emulator_takes(path, words, environment) ? -1 : g_next.execve(path, words, environment);
}

static int become_found(const char *name, char *const words[], char *const environment[]) {
  char room[PATH_MAX];
  be_ready();
  return emulator_takes(found(name, room), words, environment) ? -1 : g_next.execvpe(name, words, environment);
}

/* NOLINTBEGIN(readability-inconsistent-declaration-parameter-name): the declarations are the system's. */
EXPORT int execv(const char *path, char *const words[]) {
  return become_path(path, words, environ);
}

EXPORT int execvp(const char *name, char *const words[]) {
  return become_found(name, words, environ);
}

EXPORT int execvpe(const char *name, char *const words[], char *const environment[]) {
  return become_found(name, words, environment);
}

/* ---- With the words one by one. Behind the null that ends them the environment may come. */

/* NOLINTBEGIN(clang-analyzer-valist.Uninitialized): who calls has begun it, which clang 14 does not see. */
static int become_listed(become_function *become, const char *program, const char *first, va_list *more,
                         bool has_environment) {
  va_list counted;
  size_t count = 0;
  va_copy(counted, *more);
  for (const char *word = first; word != NULL; word = va_arg(counted, const char *)) ++count;
  va_end(counted);
  const char *words[count + 1];
  words[0] = first;
  for (size_t i = 1; i <= count; ++i) words[i] = va_arg(*more, const char *);
  char *const *const environment = has_environment ? va_arg(*more, char *const *) : environ;
  return become(program, (char *const *)words, environment);
}
/* NOLINTEND(clang-analyzer-valist.Uninitialized) */

EXPORT int execl(const char *path, const char *first, ...) {
  va_list more;
  va_start(more, first);
  const int result = become_listed(become_path, path, first, &more, false);
  va_end(more);
  return result;
}

EXPORT int execle(const char *path, const char *first, ...) {
  va_list more;
  va_start(more, first);
  const int result = become_listed(become_path, path, first, &more, true);
  va_end(more);
  return result;
}

EXPORT int execlp(const char *name, const char *first, ...) {
  va_list more;
  va_start(more, first);
  const int result = become_listed(become_found, name, first, &more, false);
  va_end(more);
  return result;
}

/* ---- As a child */

typedef struct {
  pid_t *process;
  const posix_spawn_file_actions_t *actions;
  const posix_spawnattr_t *attributes;
} spawning;

static int spawn_emulator(char *const words[], char *const environment[], void *more) {
  const spawning *const how = more;
  return g_next.posix_spawn(how->process, words[0], how->actions, how->attributes, words, environment);
}

/* The error, as these calls return it; -1 where the program is none of the machine. */
static int spawn_on_machine(spawning how, const char *path, char *const words[], char *const environment[]) {
  char room[PATH_MAX];
  const int saved = errno;
  const emulator_found it = emulator_program(path, room);
  if (it.program == NULL && it.error == 0) return -1;
  int error = 0;
  if (it.program == NULL) {
    error = g_next.posix_spawn(how.process, path, how.actions, how.attributes, words, environment);
    if (error == ENOEXEC) error = it.error;
  } else {
    error = access(it.program, R_OK | X_OK) == 0 ? 0 : errno;
    if (error == 0) error = emulator_run(spawn_emulator, &how, it.program, words, environment);
  }
  errno = saved;
  return error;
}

EXPORT int posix_spawn(pid_t *process, const char *path, const posix_spawn_file_actions_t *actions,
                       const posix_spawnattr_t *attributes, char *const words[], char *const environment[]) {
  be_ready();
  const int error = spawn_on_machine((spawning){process, actions, attributes}, path, words, environment);
  return error >= 0 ? error : g_next.posix_spawn(process, path, actions, attributes, words, environment);
}

EXPORT int posix_spawnp(pid_t *process, const char *name, const posix_spawn_file_actions_t *actions,
                        const posix_spawnattr_t *attributes, char *const words[], char *const environment[]) {
  char room[PATH_MAX];
  be_ready();
  const int error = spawn_on_machine((spawning){process, actions, attributes}, found(name, room), words, environment);
  return error >= 0 ? error : g_next.posix_spawnp(process, name, actions, attributes, words, environment);
}
/* NOLINTEND(readability-inconsistent-declaration-parameter-name) */
