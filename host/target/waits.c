/* What waits with a limit, for a program on a machine that is emulated: where the box has its own time, in that. The emulator takes its
   timers from the box's time, and waits itself by calls that nobody stands before: so a wait with a limit becomes one without, for a
   timer too. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <poll.h>
#include <signal.h>
#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>
#include <sys/select.h>
#include <sys/signalfd.h>
#include <sys/timerfd.h>
#include <time.h>
#include <unistd.h>

#include "host/clock/page.h"

#define EXPORT __attribute__((visibility("default")))

enum { MOST_DESCRIPTORS = 256, NANOSECONDS = 1000000000 };

typedef void any_function(void);

static any_function *next(const char *name) {
  union {
    void *object;
    any_function *function;
  } found;
  found.object = dlsym(RTLD_NEXT, name);
  return found.function;
}

typedef int poll_function(struct pollfd *, nfds_t, const struct timespec *, const sigset_t *);
typedef int select_function(int, fd_set *, fd_set *, fd_set *, const struct timespec *, const sigset_t *);
typedef int limit_function(int, fd_set *, fd_set *, fd_set *, struct timeval *);
typedef int sleep_function(clockid_t, int, const struct timespec *, struct timespec *);
typedef int signal_function(const sigset_t *, siginfo_t *, const struct timespec *);

static poll_function *g_ppoll;
static select_function *g_pselect;
static limit_function *g_select;
static sleep_function *g_clock_nanosleep;
static signal_function *g_sigtimedwait;
static bool g_has_own_time;

__attribute__((constructor)) static void look(void) {
  const int saved = errno;
  g_pselect = (select_function *)next("pselect");
  g_select = (limit_function *)next("select");
  g_clock_nanosleep = (sleep_function *)next("clock_nanosleep");
  g_sigtimedwait = (signal_function *)next("sigtimedwait");
  g_has_own_time = access(BOX_TIME_PAGE, F_OK) == 0;
  g_ppoll = (poll_function *)next("ppoll");
  errno = saved;
}

/* Constructors of others may come first. What is looked for last tells. */
static void be_ready(void) {
  if (g_ppoll == NULL) look();
}

/* A moment where there is one, or it is over at once, or there is no limit, is nothing for a timer. */
static bool lasts(const struct timespec *limit) {
  return limit != NULL && limit->tv_sec >= 0 && limit->tv_nsec >= 0 && limit->tv_nsec < NANOSECONDS &&
         (limit->tv_sec != 0 || limit->tv_nsec != 0);
}

static bool is_limit(const struct timespec *limit) {
  be_ready();
  return g_has_own_time && lasts(limit);
}

/* Rings when the time is over; below 0 where the system has none. */
static int new_timer(clockid_t clock, int flags, const struct timespec *limit) {
  const struct itimerspec value = {{0, 0}, *limit};
  const int timer = timerfd_create(clock, TFD_CLOEXEC);
  if (timer >= 0 && timerfd_settime(timer, flags, &value, NULL) == 0) return timer;
  if (timer >= 0) close(timer);
  return -1;
}

static void end_timer(int timer) {
  const int saved = errno;
  close(timer);
  errno = saved;
}

/* NOLINTBEGIN(readability-inconsistent-declaration-parameter-name): the declarations are the system's. */

/* ---- What sleeps */

EXPORT int clock_nanosleep(clockid_t clock, int flags, const struct timespec *length, struct timespec *rest) {
  const bool is_moment = (flags & TIMER_ABSTIME) != 0;
  const int saved = errno;
  const int timer = is_limit(length) ? new_timer(clock, is_moment ? TFD_TIMER_ABSTIME : 0, length) : -1;
  if (timer < 0) return g_clock_nanosleep(clock, flags, length, rest);
  struct pollfd watched = {timer, POLLIN, 0};
  struct itimerspec left = {{0, 0}, {0, 0}};
  const int error = g_ppoll(&watched, 1, NULL, NULL) < 0 ? errno : 0;
  if (error != 0 && !is_moment && rest != NULL && timerfd_gettime(timer, &left) == 0) *rest = left.it_value;
  end_timer(timer);
  errno = saved;
  return error;
}

EXPORT int nanosleep(const struct timespec *length, struct timespec *rest) {
  const int error = clock_nanosleep(CLOCK_MONOTONIC, 0, length, rest);
  if (error != 0) errno = error;
  return error == 0 ? 0 : -1;
}

EXPORT int usleep(useconds_t length) {
  const struct timespec time = {(time_t)(length / 1000000), (long)(length % 1000000) * 1000};
  return nanosleep(&time, NULL);
}

/* What is left is rounded, as the C library does it. */
EXPORT unsigned sleep(unsigned seconds) {
  const struct timespec length = {(time_t)seconds, 0};
  struct timespec rest = {0, 0};
  const int saved = errno;
  if (nanosleep(&length, &rest) == 0) return 0;
  errno = saved;
  return (unsigned)rest.tv_sec + (rest.tv_nsec >= NANOSECONDS / 2 ? 1 : 0);
}

/* ---- What waits for descriptors */

/* A moment of a clock that stands while somebody works: what it was when the wait began is kept in the timer. */
EXPORT int ppoll(struct pollfd *fds, nfds_t count, const struct timespec *limit, const sigset_t *mask) {
  struct pollfd all[MOST_DESCRIPTORS + 1];
  const int timer = is_limit(limit) && count <= MOST_DESCRIPTORS ? new_timer(CLOCK_MONOTONIC, 0, limit) : -1;
  if (timer < 0) return g_ppoll(fds, count, limit, mask);
  for (nfds_t i = 0; i < count; ++i) all[i] = fds[i];
  all[count] = (struct pollfd){timer, POLLIN, 0};
  int ready = g_ppoll(all, count + 1, NULL, mask);
  if (ready >= 0) {
    for (nfds_t i = 0; i < count; ++i) fds[i] = all[i];
    if (all[count].revents != 0) --ready;
  }
  end_timer(timer);
  return ready;
}

EXPORT int poll(struct pollfd *fds, nfds_t count, int milliseconds) {
  const struct timespec limit = {milliseconds / 1000, (long)(milliseconds % 1000) * 1000000};
  return ppoll(fds, count, milliseconds < 0 ? NULL : &limit, NULL);
}

/* One that is watched as the sets' other descriptors are; below 0 where there is none. */
static int new_timer_for_sets(const struct timespec *limit) {
  const int timer = new_timer(CLOCK_MONOTONIC, 0, limit);
  if (timer < FD_SETSIZE) return timer;
  close(timer);
  return -1;
}

/* What is left of the time then is told in `rest`. */
static int select_until(int timer, int count, fd_set *in, fd_set *out, fd_set *other, const sigset_t *mask,
                        struct itimerspec *rest) {
  fd_set none, *const watched = in == NULL ? &none : in;
  if (in == NULL) FD_ZERO(&none);
  FD_SET(timer, watched);
  int ready = g_pselect(timer >= count ? timer + 1 : count, watched, out, other, NULL, mask);
  const int error = errno;
  if (ready >= 0 && FD_ISSET(timer, watched)) --ready;
  FD_CLR(timer, watched);
  timerfd_gettime(timer, rest);
  close(timer);
  errno = error;
  return ready;
}

EXPORT int pselect(int count, fd_set *restrict in, fd_set *restrict out, fd_set *restrict other,
                   const struct timespec *restrict limit, const sigset_t *restrict mask) {
  const int saved = errno, timer = is_limit(limit) ? new_timer_for_sets(limit) : -1;
  struct itimerspec rest = {{0, 0}, {0, 0}};
  errno = saved;
  if (timer < 0) return g_pselect(count, in, out, other, limit, mask);
  return select_until(timer, count, in, out, other, mask, &rest);
}

/* As the kernel does, it leaves in the limit what is left of it, behind a signal too: there the emulator leaves the whole limit. So it
   is a timer's limit wherever one is. */
EXPORT int select(int count, fd_set *restrict in, fd_set *restrict out, fd_set *restrict other,
                  struct timeval *restrict limit) {
  const struct timeval most = limit == NULL ? (struct timeval){0, 0} : *limit;
  const struct timespec length = {most.tv_sec + most.tv_usec / 1000000, (long)(most.tv_usec % 1000000) * 1000};
  be_ready();
  const int saved = errno, timer = lasts(&length) ? new_timer_for_sets(&length) : -1;
  struct itimerspec rest = {{0, 0}, {0, 0}};
  errno = saved;
  if (timer < 0) return g_select(count, in, out, other, limit);
  const int ready = select_until(timer, count, in, out, other, NULL, &rest);
  *limit = (struct timeval){rest.it_value.tv_sec, rest.it_value.tv_nsec / 1000};
  return ready;
}

/* ---- What waits for signals */

EXPORT int sigtimedwait(const sigset_t *restrict wanted, siginfo_t *restrict info,
                        const struct timespec *restrict limit) {
  const int timer = is_limit(limit) ? new_timer(CLOCK_MONOTONIC, 0, limit) : -1;
  const int signals = timer < 0 ? -1 : signalfd(-1, wanted, SFD_CLOEXEC | SFD_NONBLOCK);
  if (signals < 0) {
    if (timer >= 0) end_timer(timer);
    return g_sigtimedwait(wanted, info, limit);
  }
  const struct timespec at_once = {0, 0};
  struct pollfd watched[] = {{signals, POLLIN, 0}, {timer, POLLIN, 0}};
  int number = g_sigtimedwait(wanted, info, &at_once);
  while (number < 0 && errno == EAGAIN && watched[1].revents == 0) {
    if (g_ppoll(watched, 2, NULL, NULL) < 0) break;
    number = g_sigtimedwait(wanted, info, &at_once);
  }
  end_timer(signals);
  end_timer(timer);
  return number;
}
/* NOLINTEND(readability-inconsistent-declaration-parameter-name) */
