/* What tells the time: the box's. */
#define _GNU_SOURCE
#include <errno.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <sys/times.h>
#include <unistd.h>

#include "host/clock/inside.h"

INSIDE_EXPORT int clock_gettime(clockid_t clock, struct timespec *time) {
  const box_time_page *page = inside_page();
  int64_t origin = 0;
  if (page == NULL || !inside_origin(page, clock, &origin)) return (int)syscall(SYS_clock_gettime, clock, time);
  *time = inside_timespec(origin + inside_now(page));
  return 0;
}

INSIDE_EXPORT int timespec_get(struct timespec *time, int base) {
  return base == TIME_UTC && clock_gettime(CLOCK_REALTIME, time) == 0 ? base : 0;
}

INSIDE_EXPORT int gettimeofday(struct timeval *restrict time, void *restrict zone) {
  struct timespec now;
  (void)zone; /* no system has one any more */
  if (clock_gettime(CLOCK_REALTIME, &now) != 0) return -1;
  if (time != NULL) {
    time->tv_sec = now.tv_sec;
    time->tv_usec = now.tv_nsec / 1000;
  }
  return 0;
}

INSIDE_EXPORT time_t time(time_t *where) {
  struct timespec now;
  clock_gettime(CLOCK_REALTIME, &now);
  if (where != NULL) *where = now.tv_sec;
  return now.tv_sec;
}

/* What the process has used of the processor is told as it is; what has passed is the box's. */
INSIDE_EXPORT clock_t times(struct tms *used) {
  const clock_t passed = (clock_t)syscall(SYS_times, used);
  const box_time_page *page = inside_page();
  if (page == NULL) return passed;
  return (clock_t)((page->began_monotonic + inside_now(page)) / (INSIDE_SECOND / sysconf(_SC_CLK_TCK)));
}
