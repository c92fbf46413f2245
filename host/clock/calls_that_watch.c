/* What waits for descriptors and signals with a limit: in the box's time. Without a limit, and where the limit is nothing, the
   system waits. */
#define _GNU_SOURCE
#include <errno.h>
#include <sys/epoll.h>
#include <sys/select.h>
#include <sys/signalfd.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

#include "host/clock/inside.h"

static bool is_for_system(const box_time_page *page, const struct timespec *limit) {
  return page == NULL || limit == NULL || !inside_is_time(limit) || inside_nanoseconds(limit) == 0;
}

/* ---- poll --------------------------------------------------------------------------------------------------------- */

INSIDE_EXPORT int ppoll(struct pollfd *fds, nfds_t count, const struct timespec *limit, const sigset_t *mask) {
  box_time_page *page = inside_page();
  if (is_for_system(page, limit)) return inside_system_poll(fds, count, limit, mask);
  inside_wait wait;
  inside_begin(&wait, page, inside_deadline(page, inside_nanoseconds(limit)), true);
  const int ready = inside_poll(&wait, fds, count, mask);
  const int error = errno;
  inside_end(&wait);
  errno = error;
  return ready;
}

INSIDE_EXPORT int poll(struct pollfd *fds, nfds_t count, int milliseconds) {
  const struct timespec limit = inside_timespec((int64_t)milliseconds * 1000000);
  return ppoll(fds, count, milliseconds < 0 ? NULL : &limit, NULL);
}

/* What the C library's headers make of them in programs that are compiled with _FORTIFY_SOURCE. */
/* NOLINTNEXTLINE(clang-diagnostic-reserved-identifier): the C library calls it so */
INSIDE_EXPORT int __poll_chk(struct pollfd *fds, nfds_t count, int milliseconds, size_t room) {
  if (room / sizeof *fds < count) __builtin_trap();
  return poll(fds, count, milliseconds);
}

/* NOLINTNEXTLINE(clang-diagnostic-reserved-identifier): the C library calls it so */
INSIDE_EXPORT int __ppoll_chk(struct pollfd *fds, nfds_t count, const struct timespec *limit, const sigset_t *mask,
                              size_t room) {
  if (room / sizeof *fds < count) __builtin_trap();
  return ppoll(fds, count, limit, mask);
}

/* ---- select ------------------------------------------------------------------------------------------------------- */

typedef struct {
  int count;
  fd_set *sets[3];
} fd_sets;

static int system_select(const fd_sets *sets, const struct timespec *limit, const sigset_t *mask) {
  struct timespec left;
  if (limit != NULL) left = *limit;
  const struct {
    const sigset_t *mask;
    size_t size;
  } signals = {mask, _NSIG / 8};
  return (int)syscall(SYS_pselect6, sets->count, sets->sets[0], sets->sets[1], sets->sets[2],
                      limit == NULL ? NULL : &left, &signals);
}

/* The sets as they are asked for: a look that finds nothing has emptied them. The system reads and writes as much of a set as
   holds the descriptors. */
static void copy_sets(const fd_sets *sets, fd_mask kept[3][FD_SETSIZE / NFDBITS], bool back) {
  const int words = (sets->count + NFDBITS - 1) / NFDBITS;
  for (int i = 0; i < 3; ++i) {
    for (int word = 0; sets->sets[i] != NULL && word < words; ++word) {
      fd_mask *theirs = (fd_mask *)sets->sets[i] + word;
      if (back) {
        *theirs = kept[i][word];
      } else {
        kept[i][word] = *theirs;
      }
    }
  }
}

static int select_until(const fd_sets *sets, inside_wait *wait, const sigset_t *mask) {
  fd_mask kept[3][FD_SETSIZE / NFDBITS];
  copy_sets(sets, kept, false);
  for (;;) {
    const struct timespec slice = inside_timespec(inside_next_slice(wait));
    const int ready = system_select(sets, &slice, mask == NULL ? &wait->signals : mask);
    if (ready != 0 || wait->row == NULL || inside_is_over(wait)) return ready;
    copy_sets(sets, kept, true);
  }
}

/* `left` gets what is left of the limit. */
static int watch_sets(const fd_sets *sets, const struct timespec *limit, const sigset_t *mask, int64_t *left) {
  box_time_page *page = inside_page();
  if (is_for_system(page, limit) || sets->count < 0 || sets->count > FD_SETSIZE) {
    return system_select(sets, limit, mask);
  }
  inside_wait wait;
  inside_begin(&wait, page, inside_deadline(page, inside_nanoseconds(limit)), true);
  const int ready = select_until(sets, &wait, mask);
  const int error = errno;
  *left = inside_left(&wait);
  inside_end(&wait);
  errno = error;
  return ready;
}

INSIDE_EXPORT int pselect(int count, fd_set *restrict in, fd_set *restrict out, fd_set *restrict other,
                          const struct timespec *restrict limit, const sigset_t *restrict mask) {
  const fd_sets sets = {count, {in, out, other}};
  int64_t left = 0;
  return watch_sets(&sets, limit, mask, &left);
}

INSIDE_EXPORT int select(int count, fd_set *restrict in, fd_set *restrict out, fd_set *restrict other,
                         struct timeval *restrict limit) {
  const fd_sets sets = {count, {in, out, other}};
  if (limit == NULL) return watch_sets(&sets, NULL, NULL, NULL);
  const struct timespec length = {limit->tv_sec + limit->tv_usec / 1000000, limit->tv_usec % 1000000 * 1000};
  int64_t left = 0;
  const int ready = watch_sets(&sets, &length, NULL, &left);
  limit->tv_sec = left / INSIDE_SECOND;
  limit->tv_usec = left % INSIDE_SECOND / 1000;
  return ready;
}

/* ---- epoll -------------------------------------------------------------------------------------------------------- */

static int system_epoll(int fd, struct epoll_event *events, int most, const struct timespec *limit,
                        const sigset_t *mask) {
  const int milliseconds = limit == NULL ? -1 : 0;
  return (int)syscall(SYS_epoll_pwait, fd, events, most, milliseconds, mask, _NSIG / 8);
}

INSIDE_EXPORT int epoll_pwait2(int fd, struct epoll_event *events, int most, const struct timespec *limit,
                               const sigset_t *mask) {
  box_time_page *page = inside_page();
  if (page == NULL) return (int)syscall(SYS_epoll_pwait2, fd, events, most, limit, mask, _NSIG / 8);
  if (limit != NULL && !inside_is_time(limit)) {
    errno = EINVAL;
    return -1;
  }
  if (is_for_system(page, limit)) return system_epoll(fd, events, most, limit, mask);
  inside_wait wait;
  inside_begin(&wait, page, inside_deadline(page, inside_nanoseconds(limit)), true);
  int ready = 0;
  do { /* another thread may be faster */
    struct pollfd watched = {fd, POLLIN, 0};
    ready = inside_poll(&wait, &watched, 1, mask);
    if (ready > 0) ready = (int)syscall(SYS_epoll_pwait, fd, events, most, 0, NULL, _NSIG / 8);
  } while (ready == 0 && !inside_is_over(&wait));
  const int error = errno;
  inside_end(&wait);
  errno = error;
  return ready;
}

INSIDE_EXPORT int epoll_pwait(int fd, struct epoll_event *events, int most, int milliseconds, const sigset_t *mask) {
  const struct timespec limit = inside_timespec((int64_t)milliseconds * 1000000);
  if (inside_page() == NULL) {
    return (int)syscall(SYS_epoll_pwait, fd, events, most, milliseconds, mask, _NSIG / 8);
  }
  return epoll_pwait2(fd, events, most, milliseconds < 0 ? NULL : &limit, mask);
}

INSIDE_EXPORT int epoll_wait(int fd, struct epoll_event *events, int most, int milliseconds) {
  return epoll_pwait(fd, events, most, milliseconds, NULL);
}

/* ---- signals ------------------------------------------------------------------------------------------------------ */

static int take_signal(const sigset_t *wanted, siginfo_t *info, const struct timespec *limit) {
  return (int)syscall(SYS_rt_sigtimedwait, wanted, info, limit, _NSIG / 8);
}

static int wait_for_signal(inside_wait *wait, int fd, const sigset_t *wanted, siginfo_t *info) {
  const struct timespec at_once = {0, 0};
  sigset_t held;
  sigorset(&held, &wait->signals, wanted);
  for (;;) {
    const int number = take_signal(wanted, info, &at_once);
    if (number >= 0 || errno != EAGAIN || inside_is_over(wait)) return number;
    struct pollfd watched = {fd, POLLIN, 0};
    if (inside_look(wait, &watched, 1, &held) < 0) return -1;
  }
}

INSIDE_EXPORT int sigtimedwait(const sigset_t *restrict wanted, siginfo_t *restrict info,
                               const struct timespec *restrict limit) {
  box_time_page *page = inside_page();
  const int fd = is_for_system(page, limit) ? -1 : signalfd(-1, wanted, SFD_CLOEXEC | SFD_NONBLOCK);
  if (fd < 0) return take_signal(wanted, info, limit);
  inside_wait wait;
  inside_begin(&wait, page, inside_deadline(page, inside_nanoseconds(limit)), true);
  const int number = wait_for_signal(&wait, fd, wanted, info);
  const int error = errno;
  inside_end(&wait);
  close(fd);
  errno = error;
  return number;
}
