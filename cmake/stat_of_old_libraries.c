/*
 * stat for a C library of any age.
 *
 * glibc has a function of that name since 2.33. Before, its headers made __xstat of it. A shared library that is built with a new
 * glibc would ask for 2.33 on the board, and for nothing else that is so new. Each glibc since 2.0 answers to __xstat, so the
 * shared library for the board has this stat, hidden in it. The static library takes the one of the command's C library.
 */
#include <sys/stat.h>

enum { STRUCT_STAT_OF_POWERPC = 3 };

int __xstat(int version, const char *path, struct stat *result);
__asm__(".symver __xstat, __xstat@GLIBC_2.0");

__attribute__((visibility("hidden"))) int __wrap_stat(const char *restrict path, struct stat *restrict result) {
  return __xstat(STRUCT_STAT_OF_POWERPC, path, result);
}
