#define _GNU_SOURCE
#define _FILE_OFFSET_BITS 64
#include "host/emulator/emulator.h"

#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

/* ---- Which file is a program of the machine */

/* To open another kind of file could do something. */
static bool is_file(const char *path) {
  struct stat about;
  return stat(path, &about) == 0 && S_ISREG(about.st_mode);
}

static bool is_of_machine(const char *path) {
  unsigned char head[EMULATED_HEAD_SIZE];
  const int fd = is_file(path) ? open(path, O_RDONLY | O_CLOEXEC) : -1;
  if (fd < 0) return false;
  const ssize_t size = read(fd, head, sizeof head);
  close(fd);
  return size == (ssize_t)sizeof head && memcmp(head, "\177ELF", 4) == 0 && head[4] == EMULATED_WORD_SIZE &&
         head[5] == EMULATED_BYTE_ORDER && head[18] == EMULATED_MACHINE >> 8 && head[19] == (EMULATED_MACHINE & 255);
}

const char *emulator_path(const char *folder, size_t length, const char *name, char *room) {
  const size_t size = strlen(name) + 1;
  if (length + 1 + size > PATH_MAX) return NULL;
  char *to = room;
  for (size_t i = 0; i < length; ++i) *to++ = folder[i];
  if (length > 0) *to++ = '/';
  for (size_t i = 0; i < size; ++i) *to++ = name[i];
  return room;
}

/* Of a process that is emulated, the kernel shows the emulator there; a program of the machine that reads the link is told its own. */
static bool is_program_of_process(const char *path) {
  const char *const name = strrchr(path, '/');
  return strncmp(path, "/proc/", 6) == 0 && strcmp(name, "/exe") == 0;
}

/* The emulator looks elsewhere for the first, and takes the second for an option of its own. */
static const char *plain(const char *path, char *room) {
  if (is_program_of_process(path)) {
    const ssize_t size = readlink(path, room, PATH_MAX - 1);
    if (size < 0) return path;
    room[size] = '\0';
    return room;
  }
  return path[0] == '-' ? emulator_path(".", 1, path, room) : path;
}

const char *emulator_program(const char *path, char *room) {
  const int saved = errno;
  const char *program = NULL;
  if (path != NULL && access(EMULATOR, F_OK) == 0) program = plain(path, room);
  if (program != NULL && !is_of_machine(program)) program = NULL;
  errno = saved;
  return program;
}

/* ---- How it is run */

static size_t count_of(char *const words[]) {
  size_t count = 0;
  while (words != NULL && words[count] != NULL) ++count;
  return count;
}

/* What is meant for an emulator at hand, such as a debugger that it is to wait for. */
static bool is_for_emulator(const char *variable) {
  return strncmp(variable, "QEMU_", 5) == 0;
}

int emulator_run(emulator_start *start, void *more, const char *program, char *const words[],
                 char *const environment[]) {
  const size_t count = count_of(words), variables = count_of(environment);
  const char *line[EMULATOR_WORDS + count + 1], *kept[variables + 1];
  const char *const own[EMULATOR_NAME] = {EMULATOR, "-L", EMULATOR_LIBRARIES, "-0"};
  for (size_t i = 0; i < EMULATOR_NAME; ++i) line[i] = own[i];
  line[EMULATOR_NAME] = count == 0 ? "" : words[0];
  line[EMULATOR_PROGRAM] = program;
  size_t length = EMULATOR_WORDS, stay = 0;
  for (size_t i = 1; i < count; ++i) line[length++] = words[i];
  line[length] = NULL;
  for (size_t i = 0; i < variables; ++i) {
    if (!is_for_emulator(environment[i])) kept[stay++] = environment[i];
  }
  kept[stay] = NULL;
  return start((char *const *)line, (char *const *)kept, more);
}

/* Not by a call of the C library: others may stand before that. */
static int become(char *const words[], char *const environment[], void *more) {
  (void)more;
  return (int)syscall(SYS_execve, EMULATOR, words, environment);
}

void emulator_become(const char *program, char *const words[], char *const environment[]) {
  /* The emulator would read it all the same, and where it cannot, it says nothing. */
  if (access(program, R_OK | X_OK) == 0) emulator_run(become, NULL, program, words, environment);
}

bool emulator_takes(const char *path, char *const words[], char *const environment[]) {
  char room[PATH_MAX];
  const char *const program = emulator_program(path, room);
  if (program != NULL) emulator_become(program, words, environment);
  return program != NULL;
}
