/* What sleeps: in the box's time. */
#define _GNU_SOURCE
#include <errno.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "host/clock/inside.h"

/* Returns 0, or EINTR with what is left. */
static int sleep_until(box_time_page *page, int64_t deadline, int64_t *left) {
  const int saved = errno;
  inside_wait wait;
  inside_begin(&wait, page, deadline, true);
  const int error = inside_poll(&wait, NULL, 0, NULL) < 0 ? errno : 0;
  *left = inside_left(&wait);
  inside_end(&wait);
  errno = saved;
  return error;
}

/* clock_nanosleep returns its error. */
INSIDE_EXPORT int clock_nanosleep(clockid_t clock, int flags, const struct timespec *length, struct timespec *rest) {
  box_time_page *page = inside_page();
  int64_t origin = 0, left = 0;
  if (page == NULL || !inside_origin(page, clock, &origin)) {
    const int saved = errno;
    const int error = syscall(SYS_clock_nanosleep, clock, flags, length, rest) == 0 ? 0 : errno;
    errno = saved;
    return error;
  }
  if (!inside_is_time(length)) return EINVAL;
  const bool is_moment = (flags & TIMER_ABSTIME) != 0;
  const int64_t given = inside_nanoseconds(length);
  const int error = sleep_until(page, is_moment ? given - origin : inside_deadline(page, given), &left);
  if (error != 0 && !is_moment && rest != NULL) *rest = inside_timespec(left);
  return error;
}

INSIDE_EXPORT int nanosleep(const struct timespec *length, struct timespec *rest) {
  const int error = clock_nanosleep(CLOCK_MONOTONIC, 0, length, rest);
  if (error != 0) errno = error;
  return error == 0 ? 0 : -1;
}

INSIDE_EXPORT int usleep(useconds_t length) {
  const struct timespec time = inside_timespec((int64_t)length * 1000);
  return nanosleep(&time, NULL);
}

/* What is left is rounded, as the C library does it. */
INSIDE_EXPORT unsigned sleep(unsigned seconds) {
  const struct timespec length = {seconds, 0};
  struct timespec rest = {0, 0};
  const int saved = errno;
  if (nanosleep(&length, &rest) == 0) return 0;
  errno = saved;
  return (unsigned)rest.tv_sec + (rest.tv_nsec >= INSIDE_SECOND / 2 ? 1 : 0);
}

/* A C11 name of the same: 0, -1 where a signal came, another negative number where it cannot be. */
INSIDE_EXPORT int thrd_sleep(const struct timespec *length, struct timespec *rest) {
  const int error = clock_nanosleep(CLOCK_MONOTONIC, 0, length, rest);
  if (error == 0) return 0;
  return error == EINTR ? -1 : -2;
}
