/* What a command does with /tmp and with the pager by calls of the C library: points, too. For calls_of_the_c_library.c. */
#pragma once

#include <sys/types.h>

#ifdef __cplusplus
extern "C" {
#else
#include <stdbool.h>
#endif

/* A command makes a file in /tmp: false where that is refused. */
bool platform_makes_file(void);

/* open, without a point. */
int platform_opens(const char *path, int flags, mode_t mode);

/* From a deviation on, /tmp has no room for this process and its children. */
bool platform_has_room(void);

/* A command starts the pager with this file: 0, or the number of errno for which it cannot be started. */
int platform_starts_pager(const char *file);

#ifdef __cplusplus
}
#endif
