/* timerfd_create and its kin. The descriptor is one of a pipe, which is read, and watched, like one of timerfd: the keeper writes
   there how often it rang. So it works with all that descriptors can: poll, fork, execve, a way through a socket. */
#define _GNU_SOURCE
#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include "host/clock/inside_alarms.h"

static int open_again(int fd, int flags) {
  char name[32] = "/proc/self/fd/", digits[10];
  size_t length = strlen(name), count = 0;
  for (unsigned rest = (unsigned)fd; rest > 0 || count == 0; rest /= 10) digits[count++] = (char)('0' + rest % 10);
  while (count > 0) name[length++] = digits[--count];
  name[length] = '\0';
  return open(name, flags);
}

/* With both ends in one descriptor: it is never at its end, whoever writes there goes. */
static int new_pipe(int flags) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return -1;
  const int both = open_again(ends[0], O_RDWR | O_CLOEXEC | ((flags & TFD_NONBLOCK) != 0 ? O_NONBLOCK : 0));
  const int fd = both < 0 ? -1 : dup3(both, ends[0], (flags & TFD_CLOEXEC) != 0 ? O_CLOEXEC : 0);
  close(fd < 0 ? ends[0] : both);
  close(ends[1]);
  return fd;
}

/* The kernel's number of the pipe; false where it is none. */
static bool number_of(int fd, uint64_t *number) {
  struct stat status;
  if (fstat(fd, &status) != 0 || !S_ISFIFO(status.st_mode)) return false;
  *number = status.st_ino;
  return true;
}

static box_time_alarm *row_of_descriptor(box_time_page *page, int fd) {
  const int saved = errno;
  uint64_t number = 0;
  box_time_alarm *row = NULL;
  if (page != NULL && number_of(fd, &number)) row = inside_alarm(page, BOX_TIME_DESCRIPTOR, 0, number);
  errno = saved;
  return row;
}

static bool enter_descriptor(box_time_page *page, clockid_t clock, int fd) {
  box_time_alarm row = {.process = (uint32_t)getpid(), .kind = BOX_TIME_DESCRIPTOR, .clock = clock};
  return number_of(fd, &row.number) && inside_new_alarm(page, &row) != NULL;
}

INSIDE_EXPORT int timerfd_create(clockid_t clock, int flags) {
  box_time_page *page = inside_page();
  int64_t origin = 0;
  const bool is_of_box =
      page != NULL && inside_origin(page, clock, &origin) && (flags & ~(TFD_NONBLOCK | TFD_CLOEXEC)) == 0;
  const int fd = is_of_box ? new_pipe(flags) : -1;
  if (fd >= 0 && enter_descriptor(page, clock, fd)) return fd;
  if (fd >= 0) close(fd);
  return (int)syscall(SYS_timerfd_create, clock, flags);
}

/* What rang before it was set is not read any more. */
static void empty(int fd) {
  struct pollfd watched = {fd, POLLIN, 0};
  const struct timespec at_once = {0, 0};
  uint64_t times = 0;
  if (inside_system_poll(&watched, 1, &at_once, NULL) > 0) {
    const ssize_t length = read(fd, &times, sizeof times);
    (void)length;
  }
}

INSIDE_EXPORT int timerfd_settime(int fd, int flags, const struct itimerspec *value, struct itimerspec *before) {
  box_time_page *page = inside_page();
  box_time_alarm *row = row_of_descriptor(page, fd);
  if (row == NULL) return (int)syscall(SYS_timerfd_settime, fd, flags, value, before);
  if (!inside_is_timer_value(value)) {
    errno = EINVAL;
    return -1;
  }
  if (before != NULL) *before = inside_timer_value(row, inside_now(page));
  const struct itimerspec never = {{0, 0}, {0, 0}};
  inside_set_timer(page, row, false, &never);
  empty(fd);
  inside_set_timer(page, row, (flags & TFD_TIMER_ABSTIME) != 0, value);
  return 0;
}

INSIDE_EXPORT int timerfd_gettime(int fd, struct itimerspec *value) {
  box_time_page *page = inside_page();
  const box_time_alarm *row = row_of_descriptor(page, fd);
  if (row == NULL) return (int)syscall(SYS_timerfd_gettime, fd, value);
  *value = inside_timer_value(row, inside_now(page));
  return 0;
}
