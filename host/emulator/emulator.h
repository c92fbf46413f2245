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
enum { EMULATED_WORD_SIZE = 1, EMULATED_BYTE_ORDER = 2, EMULATED_MACHINE = 20, EMULATED_HEAD_SIZE = 20 };

/* How many words of the emulator's stand before the second one of a program, and which of them are the program's name and its path. */
enum { EMULATOR_NAME = 4, EMULATOR_PROGRAM = 5, EMULATOR_WORDS = 6 };

/* The path by which the emulator finds a program of the machine; null where `path` leads to none, or no emulator is here. `room` has
   PATH_MAX bytes. Keeps errno. */
const char *emulator_program(const char *path, char *room);

/* A path of a folder, of so many bytes, and a name there; null where `room`, of PATH_MAX bytes, is too small. An empty folder is the
   working folder. */
const char *emulator_path(const char *folder, size_t length, const char *name, char *room);

/* Has `start` start the emulator with a program of the machine, and returns what that returns. What the environment says to an emulator
   is left out. Allocates nothing: it may be called behind a fork. */
typedef int emulator_start(char *const words[], char *const environment[], void *more);
int emulator_run(emulator_start *start, void *more, const char *program, char *const words[],
                 char *const environment[]);

/* Becomes a program of the machine. Returns only where that cannot be, with errno. */
void emulator_become(const char *program, char *const words[], char *const environment[]);

/* The same for what may be such a program: false where it is none. */
bool emulator_takes(const char *path, char *const words[], char *const environment[]);

#ifdef __cplusplus
}
#endif
