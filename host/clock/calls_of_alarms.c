/* alarm and setitimer: the keeper sends SIGALRM when the box's time has come. A process has one alarm, and keeps it beyond execve. */
#define _GNU_SOURCE
#include <errno.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

#include "host/clock/inside.h"

static box_time_alarm *row_of_alarm(box_time_page *page, uint32_t process, bool makes) {
  for (int i = 0; i < BOX_TIME_ALARMS; ++i) {
    if (__atomic_load_n(&page->alarms[i].process, __ATOMIC_ACQUIRE) == process) return &page->alarms[i];
  }
  for (int i = 0; makes && i < BOX_TIME_ALARMS; ++i) {
    uint32_t free_row = 0;
    box_time_alarm *row = &page->alarms[i];
    if (!__atomic_compare_exchange_n(&row->process, &free_row, process, false, __ATOMIC_ACQ_REL, __ATOMIC_ACQUIRE)) {
      continue;
    }
    row->deadline = BOX_TIME_NEVER; /* the row may have been of a process that is dead */
    row->interval = 0;
    return row;
  }
  return NULL;
}

static int64_t nanoseconds_of(const struct timeval *time) {
  const struct timespec same = {time->tv_sec, time->tv_usec * 1000};
  return inside_nanoseconds(&same);
}

static struct timeval timeval_of(int64_t nanoseconds) {
  const struct timeval time = {nanoseconds / INSIDE_SECOND, nanoseconds % INSIDE_SECOND / 1000};
  return time;
}

/* What is left of an alarm; one that rings again and again does so at its deadline, and at each interval from there. */
static struct itimerval state_of(const box_time_alarm *row, int64_t now) {
  struct itimerval state = {{0, 0}, {0, 0}};
  if (row == NULL || row->deadline == BOX_TIME_NEVER) return state;
  int64_t left = row->deadline - now;
  if (left <= 0 && row->interval > 0) left = row->interval - (now - row->deadline) % row->interval;
  if (left > 0) state.it_value = timeval_of(left);
  state.it_interval = timeval_of(row->interval);
  return state;
}

static void set(box_time_alarm *row, int64_t deadline, int64_t interval) {
  __atomic_store_n(&row->deadline, BOX_TIME_NEVER, __ATOMIC_RELEASE); /* no alarm while it changes */
  __atomic_add_fetch(&row->turn, 1, __ATOMIC_ACQ_REL);
  __atomic_store_n(&row->interval, interval, __ATOMIC_RELEASE);
  __atomic_store_n(&row->deadline, deadline, __ATOMIC_RELEASE);
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
  box_time_alarm *row = row_of_alarm(page, (uint32_t)getpid(), length > 0);
  if (row == NULL && length > 0) return (int)syscall(SYS_setitimer, which, value, before);
  if (before != NULL) *before = state_of(row, inside_now(page));
  if (row == NULL) return 0;
  int64_t deadline = length > 0 ? inside_deadline(page, length) : BOX_TIME_NEVER;
  inside_turn(page, &deadline);
  set(row, deadline, nanoseconds_of(&value->it_interval));
  return 0;
}

INSIDE_EXPORT int getitimer(which_timer which, struct itimerval *value) {
  box_time_page *page = inside_page();
  if (page == NULL || which != ITIMER_REAL) return (int)syscall(SYS_getitimer, which, value);
  *value = state_of(row_of_alarm(page, (uint32_t)getpid(), false), inside_now(page));
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
