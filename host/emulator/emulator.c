#define _GNU_SOURCE
#define _FILE_OFFSET_BITS 64
#include "host/emulator/emulator.h"

#include <elf.h>
#include <endian.h>
#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <stdint.h>
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

_Static_assert(sizeof(Elf32_Ehdr) == EMULATED_HEAD_SIZE, "the head of a program has another size");

/* The system, too, takes none whose head or table of segments is cut, or that is to be linked first. The emulator would end in silence. */
static bool has_program_of_machine(int fd) {
  Elf32_Ehdr head;
  struct stat about;
  if (read(fd, &head, sizeof head) != (ssize_t)sizeof head || fstat(fd, &about) != 0) return false;
  const uint16_t type = be16toh(head.e_type);
  const uint64_t table_end = be32toh(head.e_phoff) + (uint64_t)be16toh(head.e_phnum) * sizeof(Elf32_Phdr);
  return memcmp(head.e_ident, ELFMAG, SELFMAG) == 0 && head.e_ident[EI_CLASS] == EMULATED_WORD_SIZE &&
         head.e_ident[EI_DATA] == EMULATED_BYTE_ORDER && be16toh(head.e_machine) == EMULATED_MACHINE &&
         (type == ET_EXEC || type == ET_DYN) && table_end <= (uint64_t)about.st_size;
}

/* The error says why nobody can know. */
static bool is_of_machine(const char *path, int *error) {
  if (!is_file(path)) return false;
  const int fd = open(path, O_RDONLY | O_CLOEXEC);
  if (fd < 0 && (errno == EMFILE || errno == ENFILE)) *error = errno;
  if (fd < 0) return false;
  const bool is = has_program_of_machine(fd);
  close(fd);
  return is;
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

/* The emulator looks elsewhere for the first, and takes the second for an option of its own. Of a thread it does not know the link. */
static const char *plain(const char *path, char *room) {
  if (strcmp(path, "/proc/thread-self/exe") == 0) path = "/proc/self/exe";
  if (is_program_of_process(path)) {
    const ssize_t size = readlink(path, room, PATH_MAX - 1);
    if (size < 0) return path;
    room[size] = '\0';
    return room;
  }
  return path[0] == '-' ? emulator_path(".", 1, path, room) : path;
}

emulator_found emulator_program(const char *path, char *room) {
  const int saved = errno;
  emulator_found found = {NULL, 0};
  if (path != NULL && access(EMULATOR, F_OK) == 0) found.program = plain(path, room);
  if (found.program != NULL && !is_of_machine(found.program, &found.error)) found.program = NULL;
  errno = saved;
  return found;
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

/* What is meant for the loader of a program. The emulator has one, too. */
static bool is_for_loader(const char *variable) {
  return strncmp(variable, "LD_", 3) == 0;
}

/* The emulator takes a comma for the end of a variable. */
static bool can_be_set(const char *variable) {
  return strchr(variable, '=') != NULL && strchr(variable, ',') == NULL;
}

int emulator_run(emulator_start *start, void *more, const char *program, char *const words[],
                 char *const environment[]) {
  const size_t count = count_of(words), variables = count_of(environment);
  size_t length = 0, stay = 0, for_loader = 0;
  for (size_t i = 0; i < variables; ++i) for_loader += is_for_loader(environment[i]);
  const char *line[EMULATOR_OWN + 2 * for_loader + EMULATOR_NAMES + count + 1], *kept[variables + 1];
  const char *const own[EMULATOR_OWN] = {EMULATOR, "-L", EMULATOR_LIBRARIES};
  for (size_t i = 0; i < EMULATOR_OWN; ++i) line[length++] = own[i];
  for (size_t i = 0; i < variables; ++i) {
    if (!is_for_loader(environment[i])) {
      if (!is_for_emulator(environment[i])) kept[stay++] = environment[i];
    } else if (can_be_set(environment[i])) {
      line[length++] = EMULATOR_SETS;
      line[length++] = environment[i];
    }
  }
  kept[stay] = NULL;
  const char *const names[EMULATOR_NAMES] = {"-0", count == 0 ? "" : words[0], program};
  for (size_t i = 0; i < EMULATOR_NAMES; ++i) line[length++] = names[i];
  for (size_t i = 1; i < count; ++i) line[length++] = words[i];
  line[length] = NULL;
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
  const emulator_found found = emulator_program(path, room);
  if (found.program != NULL) {
    emulator_become(found.program, words, environment);
  } else if (found.error != 0) {
    syscall(SYS_execve, path, words, environment);
    if (errno == ENOEXEC) errno = found.error;
  }
  return found.program != NULL || found.error != 0;
}
