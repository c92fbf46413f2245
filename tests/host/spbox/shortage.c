/* Loaded before the C library, into spbox alone: from main on, memory fails from the SHORT_OF_MEMORY'th request on, forks
 * fail where SHORT_OF_PROCESSES is set, nothing is removed where NOTHING_GOES is set, and where PROCESSES_END is set each
 * process has ended when its command line is read, and the shell's command in MEANWHILE is run before spbox is confined to what it
 * has found. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/types.h>
#include <unistd.h>

extern void *__libc_malloc(size_t size);
extern void *__libc_calloc(size_t count, size_t size);
extern void *__libc_realloc(void *memory, size_t size);
extern char *program_invocation_short_name;

typedef int Main(int count, char **words, char **environment);

static Main *real_main;
static long left = -1; /* requests that do not fail; below 0: none fails */
static int short_of_processes, nothing_goes, processes_end;

static int fails(void) {
  if (left > 0 && --left > 0) return 0;
  if (left < 0) return 0;
  errno = ENOMEM;
  return 1;
}

void *malloc(size_t size) {
  return fails() ? NULL : __libc_malloc(size);
}
void *calloc(size_t count, size_t size) {
  return fails() ? NULL : __libc_calloc(count, size);
}
void *realloc(void *memory, size_t size) {
  return fails() ? NULL : __libc_realloc(memory, size);
}

pid_t fork(void) {
  if (!short_of_processes) return ((pid_t(*)(void))dlsym(RTLD_NEXT, "fork"))();
  errno = EAGAIN;
  return -1;
}

static int stays(void) {
  if (nothing_goes) errno = EACCES;
  return nothing_goes;
}

int unlinkat(int folder, const char *name, int flags) {
  return stays() ? -1 : ((int (*)(int, const char *, int))dlsym(RTLD_NEXT, "unlinkat"))(folder, name, flags);
}
int remove(const char *name) {
  return stays() ? -1 : ((int (*)(const char *))dlsym(RTLD_NEXT, "remove"))(name);
}
int rmdir(const char *name) {
  return stays() ? -1 : ((int (*)(const char *))dlsym(RTLD_NEXT, "rmdir"))(name);
}

ssize_t read(int fd, void *to, size_t size) {
  char name[64], file[64] = "";
  ssize_t length = 0;
  if (processes_end) {
    snprintf(name, sizeof name, "/proc/self/fd/%d", fd);
    length = readlink(name, file, sizeof file - 1);
  }
  if (length > 8 && strcmp(file + length - 8, "/cmdline") == 0) {
    errno = ESRCH;
    return -1;
  }
  return ((ssize_t(*)(int, void *, size_t))dlsym(RTLD_NEXT, "read"))(fd, to, size);
}

int prctl(int what, ...) {
  unsigned long words[4];
  va_list list;
  va_start(list, what);
  for (int i = 0; i < 4; ++i) words[i] = va_arg(list, unsigned long);
  va_end(list);
  const char *command = getenv("MEANWHILE");
  if (what == PR_SET_SECCOMP && command != NULL) usleep(200 * 1000);
  if (what == PR_SET_NO_NEW_PRIVS && command != NULL) system(command);
  return (int)syscall(SYS_prctl, what, words[0], words[1], words[2], words[3]);
}

static int armed_main(int count, char **words, char **environment) {
  const char *requests = getenv("SHORT_OF_MEMORY");
  if (strcmp(program_invocation_short_name, "spbox") == 0) {
    short_of_processes = getenv("SHORT_OF_PROCESSES") != NULL;
    nothing_goes = getenv("NOTHING_GOES") != NULL;
    processes_end = getenv("PROCESSES_END") != NULL;
    if (requests != NULL) left = atol(requests);
  }
  return real_main(count, words, environment);
}

int __libc_start_main(Main *main, int count, char **words, void (*init)(void), void (*fini)(void), void (*end)(void),
                      void *stack) {
  typedef int Start(Main *, int, char **, void (*)(void), void (*)(void), void (*)(void), void *);
  real_main = main;
  return ((Start *)dlsym(RTLD_NEXT, "__libc_start_main"))(armed_main, count, words, init, fini, end, stack);
}
