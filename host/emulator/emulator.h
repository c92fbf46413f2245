/* Programs of another machine, in the root of a command: which files are such programs, and by which words the emulator runs them. */
#pragma once

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#else
#include <stdbool.h>
#endif

/* The emulator, the machine's libraries, and what is preloaded into the workstation's programs, so that they start the machine's. */
#define EMULATOR "/mgb/lib/emulator"
#define EMULATOR_LIBRARIES "/mgb/lib/machine"
#define EMULATOR_CALLS "/mgb/lib/liblmainte_emulator.so"

/* What the head of the machine's programs says: 32 bits, the highest byte first, PowerPC. */
enum { EMULATED_WORD_SIZE = 1, EMULATED_BYTE_ORDER = 2, EMULATED_MACHINE = 20, EMULATED_HEAD_SIZE = 52 };

/* The words of the emulator: itself and its libraries; pairs of EMULATOR_SETS and a variable of the program, where it has such; three
   with the program's name and its path; what stands behind the program's name. */
enum { EMULATOR_OWN = 3, EMULATOR_NAMES = 3 };
#define EMULATOR_SETS "-E"

/* What a path leads to: `program` is how the emulator finds a program of the machine. Null where it is none, or no emulator is here. Where
   that cannot be seen, as no descriptor is left, `error` says why. */
typedef struct {
  const char *program;
  int error;
} emulator_found;

/* `room` has PATH_MAX bytes. Keeps errno. */
emulator_found emulator_program(const char *path, char *room);

/* A path of a folder, of so many bytes, and a name there; null where `room`, of PATH_MAX bytes, is too small. An empty folder is the
   working folder. */
const char *emulator_path(const char *folder, size_t length, const char *name, char *room);

/* Has `start` start the emulator with a program of the machine, and returns what that returns. What the environment says to an emulator
   is left out, and what it says to a loader reaches the program's alone. Allocates nothing: it may be called behind a fork. */
typedef int emulator_start(char *const words[], char *const environment[], void *more);
int emulator_run(emulator_start *start, void *more, const char *program, char *const words[],
                 char *const environment[]);

/* Becomes a program of the machine. Returns only where that cannot be, with errno. */
void emulator_become(const char *program, char *const words[], char *const environment[]);

/* The same for what may be such a program: false where it is none. What cannot be seen is left to the system, which takes no program of
   the machine: then errno says why it could not be seen. */
bool emulator_takes(const char *path, char *const words[], char *const environment[]);

#ifdef __cplusplus
}
#endif
