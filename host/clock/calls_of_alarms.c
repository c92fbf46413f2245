/* alarm and setitimer: the keeper sends SIGALRM when the box's time has come. A process has one alarm, and keeps it beyond execve. */
#define _GNU_SOURCE
#include <errno.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

#include "host/clock/inside_alarms.h"

static int64_t nanoseconds_of(const struct timeval *time) {
  const struct timespec same = {time->tv_sec, time->tv_usec * 1000};
  return inside_nanoseconds(&same);
}

static struct timeval timeval_of(int64_t nanoseconds) {
  const struct timeval time = {nanoseconds / INSIDE_SECOND, nanoseconds % INSIDE_SECOND / 1000};
  return time;
}

static struct itimerval state_of(const box_time_alarm *row, int64_t now) {
  const struct itimerval state = {timeval_of(row == NULL ? 0 : inside_interval(row)),
                                  timeval_of(row == NULL ? 0 : inside_left_of_alarm(row, now))};
  return state;
}

static box_time_alarm *own_row(box_time_page *page, bool makes) {
  box_time_alarm wanted = {.process = (uint32_t)getpid(), .kind = BOX_TIME_ALARM};
  box_time_alarm *row = inside_alarm(page, BOX_TIME_ALARM, wanted.process, 0);
  return row == NULL && makes ? inside_new_alarm(page, &wanted) : row;
}

static bool is_timeval(const struct timeval *time) {
  return time->tv_sec >= 0 && time->tv_usec >= 0 && time->tv_usec < 1000000;
}

typedef __itimer_which_t which_timer;

INSIDE_EXPORT int setitimer(which_timer which, const struct itimerval *restrict value,
                            struct itimerval *restrict before) {
  box_time_page *page = inside_page();
  if (page == NULL || which != ITIMER_REAL || value == NULL) return (int)syscall(SYS_setitimer, which, value, before);
  if (!is_timeval(&value->it_value) || !is_timeval(&value->it_interval)) {
    errno = EINVAL;
    return -1;
  }
  const int64_t length = nanoseconds_of(&value->it_value);
  box_time_alarm *row = own_row(page, length > 0);
  if (row == NULL && length > 0) return (int)syscall(SYS_setitimer, which, value, before);
  if (before != NULL) *before = state_of(row, inside_now(page));
  if (row == NULL) return 0;
  inside_set_alarm(page, row, length > 0 ? inside_deadline(page, length) : BOX_TIME_NEVER,
                   nanoseconds_of(&value->it_interval));
  return 0;
}

INSIDE_EXPORT int getitimer(which_timer which, struct itimerval *value) {
  box_time_page *page = inside_page();
  if (page == NULL || which != ITIMER_REAL) return (int)syscall(SYS_getitimer, which, value);
  *value = state_of(own_row(page, false), inside_now(page));
  return 0;
}

/* What was left is rounded to the next second, but is never nothing. */
INSIDE_EXPORT unsigned alarm(unsigned seconds) {
  const struct itimerval value = {{0, 0}, {seconds, 0}};
  struct itimerval before = {{0, 0}, {0, 0}};
  if (setitimer(ITIMER_REAL, &value, &before) != 0) return 0;
  const struct timeval left = before.it_value;
  return (unsigned)left.tv_sec + (left.tv_usec >= 500000 || (left.tv_sec == 0 && left.tv_usec > 0) ? 1 : 0);
}

INSIDE_EXPORT useconds_t ualarm(useconds_t length, useconds_t interval) {
  const struct itimerval value = {{interval / 1000000, interval % 1000000}, {length / 1000000, length % 1000000}};
  struct itimerval before = {{0, 0}, {0, 0}};
  if (setitimer(ITIMER_REAL, &value, &before) != 0) return (useconds_t)-1;
  return (useconds_t)(before.it_value.tv_sec * 1000000 + before.it_value.tv_usec);
}
