/* syscall: for a wait that the C library has no name for, and that the C++ library makes by its number (std::future::wait_for). */
#define _GNU_SOURCE
#include <errno.h>
#include <linux/futex.h>
#include <stdarg.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "host/clock/inside.h"

typedef long system_function(long, ...);

static system_function *next_syscall(void) {
  static system_function *next;
  if (next == NULL) next = (system_function *)inside_next("syscall");
  return next;
}

/* FUTEX_WAIT has a length, FUTEX_WAIT_BITSET a moment, of CLOCK_MONOTONIC where nothing else is said; with other commands, the
   argument may be no time at all. Null where it has no limit. */
static const struct timespec *limit_of(long number, const long *arguments) {
  if (number != SYS_futex) return NULL;
  const int command = (int)arguments[1] & FUTEX_CMD_MASK;
  if (command != FUTEX_WAIT && command != FUTEX_WAIT_BITSET) return NULL;
  return (const struct timespec *)arguments[3]; /* NOLINT(performance-no-int-to-ptr): as given */
}

static long wait_on(box_time_page *page, const struct timespec *limit, const long *arguments) {
  const int operation = (int)arguments[1];
  const bool is_length = (operation & FUTEX_CMD_MASK) == FUTEX_WAIT;
  int64_t origin = 0;
  inside_origin(page, (operation & FUTEX_CLOCK_REALTIME) != 0 ? CLOCK_REALTIME : CLOCK_MONOTONIC, &origin);
  const int64_t given = inside_nanoseconds(limit);
  inside_wait wait;
  inside_begin(&wait, page, is_length ? inside_deadline(page, given) : given - origin, false);
  long result = 0;
  do {
    const int64_t slice = inside_next_slice(&wait);
    const struct timespec time = inside_timespec(is_length ? slice : inside_wall() + slice);
    result = next_syscall()(SYS_futex, arguments[0], (long)(operation & ~FUTEX_CLOCK_REALTIME), arguments[2], &time,
                            arguments[4], arguments[5]);
  } while (result < 0 && errno == ETIMEDOUT && wait.row != NULL && !inside_is_over(&wait));
  const int error = errno;
  inside_end(&wait);
  errno = error;
  return result;
}

INSIDE_EXPORT long syscall(long number, ...) {
  long arguments[6];
  va_list list;
  va_start(list, number);
  for (int i = 0; i < 6; ++i)
    arguments[i] = va_arg(list, long); /* as the C library: those that are not there are unused */
  va_end(list);
  const struct timespec *limit = limit_of(number, arguments);
  box_time_page *page = limit == NULL ? NULL : inside_page();
  if (page != NULL && inside_is_time(limit)) return wait_on(page, limit, arguments);
  return next_syscall()(number, arguments[0], arguments[1], arguments[2], arguments[3], arguments[4], arguments[5]);
}
