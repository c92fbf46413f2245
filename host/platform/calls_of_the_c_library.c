/* Calls of the C library that stand before the C library's own: by these the library makes its lists and starts the pager, and
   commands make files of their own. In a box that counts no points, each does what the C library does. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <stdarg.h>
#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/statvfs.h>
#include <sys/wait.h>
#include <unistd.h>

#include "host/emulator/emulator.h"
#include "host/include/lmainte_host.h"
#include "host/platform/files_in_tmp.h"
#include "include/lmainte_record.h"

#define EXPORT __attribute__((visibility("default")))

static struct {
  __typeof__(fopen) *fopen, *fopen64;
  __typeof__(open) *open, *open64;
  __typeof__(statvfs) *statvfs;
  __typeof__(statvfs64) *statvfs64;
  __typeof__(execve) *execve;
  __typeof__(waitpid) *waitpid;
} g_next;

static void *found(const char *name) {
  return dlsym(RTLD_NEXT, name);
}

/* Early: a call may come in a signal handler, or behind a fork. */
__attribute__((constructor)) static void find_calls(void) {
  *(void **)&g_next.fopen = found("fopen");
  *(void **)&g_next.fopen64 = found("fopen64");
  *(void **)&g_next.open64 = found("open64");
  *(void **)&g_next.statvfs = found("statvfs");
  *(void **)&g_next.statvfs64 = found("statvfs64");
  *(void **)&g_next.execve = found("execve");
  *(void **)&g_next.waitpid = found("waitpid");
  *(void **)&g_next.open = found("open");
}

/* Constructors of others may come first. */
static void be_ready(void) {
  if (g_next.open == NULL) find_calls();
}

static bool is_below(const char *path, const char *folder, size_t length) {
  return strncmp(path, folder, length) == 0 && path[length] == '/';
}

/* The files of a box that lies there are none of the command's. */
static bool is_in_tmp(const char *path) {
  static const char folder[] = "/tmp";
  if (path == NULL || !is_below(path, folder, sizeof folder - 1)) return false;
  const char *const box = getenv(LMAINTE_HOST_ROOT);
  return box == NULL || box[0] == '\0' || !is_below(path, box, strlen(box));
}

/* What is written there is refused from now on, as on a full disk; the file itself stays, and is empty. */
static void take_room_from(int fd) {
  const int full = g_next.open("/dev/full", O_WRONLY | O_CLOEXEC);
  if (full < 0) return;
  dup3(full, fd, (fcntl(fd, F_GETFD) & FD_CLOEXEC) != 0 ? O_CLOEXEC : 0);
  close(full);
}

static FILE *opened_file(__typeof__(fopen) *call, const char *path, const char *mode) {
  if (!is_in_tmp(path) || mode == NULL || (mode[0] != 'w' && mode[0] != 'a')) return call(path, mode);
  if (!platform_makes_file()) {
    errno = ENOSPC;
    return NULL;
  }
  FILE *const file = call(path, mode);
  if (file != NULL && strchr(mode, '+') == NULL && !platform_has_room()) take_room_from(fileno(file));
  return file;
}

static int opened(__typeof__(open) *call, const char *path, int flags, mode_t mode) {
  if (!is_in_tmp(path) || (flags & O_CREAT) == 0) return call(path, flags, mode);
  if (!platform_makes_file()) {
    errno = ENOSPC;
    return -1;
  }
  const int fd = call(path, flags, mode);
  if (fd >= 0 && (flags & O_ACCMODE) == O_WRONLY && !platform_has_room()) take_room_from(fd);
  return fd;
}

int platform_opens(const char *path, int flags, mode_t mode) {
  be_ready();
  return g_next.open(path, flags, mode);
}

/* NOLINTBEGIN(readability-inconsistent-declaration-parameter-name): the declarations are the system's. */
EXPORT FILE *fopen(const char *path, const char *mode) {
  be_ready();
  return opened_file(g_next.fopen, path, mode);
}

EXPORT FILE *fopen64(const char *path, const char *mode) {
  be_ready();
  return opened_file(g_next.fopen64, path, mode);
}

/* What stands behind the flags, where they say that a mode does. */
static mode_t mode_in(int flags, va_list more) {
  if ((flags & O_CREAT) == 0 && (flags & O_TMPFILE) != O_TMPFILE) return 0;
  /* NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): who calls has begun it, which clang 14 does not see. */
  return va_arg(more, mode_t);
}

EXPORT int open(const char *path, int flags, ...) {
  va_list more;
  va_start(more, flags);
  const mode_t mode = mode_in(flags, more);
  va_end(more);
  be_ready();
  return opened(g_next.open, path, flags, mode);
}

EXPORT int open64(const char *path, int flags, ...) {
  va_list more;
  va_start(more, flags);
  const mode_t mode = mode_in(flags, more);
  va_end(more);
  be_ready();
  return opened(g_next.open64, path, flags, mode);
}

EXPORT int statvfs(const char *path, struct statvfs *at) {
  be_ready();
  const int result = g_next.statvfs(path, at);
  if (result == 0 && !platform_has_room() && (is_in_tmp(path) || strcmp(path, "/tmp") == 0))
    at->f_bfree = at->f_bavail = 0;
  return result;
}

EXPORT int statvfs64(const char *path, struct statvfs64 *at) {
  be_ready();
  const int result = g_next.statvfs64(path, at);
  if (result == 0 && !platform_has_room() && (is_in_tmp(path) || strcmp(path, "/tmp") == 0))
    at->f_bfree = at->f_bavail = 0;
  return result;
}

static bool is_pager(const char *path, char *const *arguments) {
  const char *const name = path == NULL ? NULL : strrchr(path, '/');
  return name != NULL && strcmp(name, "/busybox") == 0 && arguments != NULL && arguments[0] != NULL &&
         arguments[1] != NULL && strcmp(arguments[1], "more") == 0;
}

EXPORT int execve(const char *path, char *const arguments[], char *const environment[]) {
  be_ready();
  const int refusal = is_pager(path, arguments) ? platform_starts_pager(arguments[2]) : 0;
  if (refusal != 0) {
    errno = refusal;
    return -1;
  }
  lmainte_record_program(path, arguments);
  return emulator_takes(path, arguments, environment) ? -1 : g_next.execve(path, arguments, environment);
}

EXPORT pid_t waitpid(pid_t child, int *status, int options) {
  be_ready();
  int own = 0;
  const pid_t ended = g_next.waitpid(child, &own, options);
  if (ended <= 0) return ended;
  lmainte_record_program_end(ended, own);
  if (status != NULL) *status = own;
  return ended;
}
/* NOLINTEND(readability-inconsistent-declaration-parameter-name) */
