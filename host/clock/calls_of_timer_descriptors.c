/* timerfd_create and its kin. The descriptor is one of eventfd, which is read, and watched, like one of timerfd: the keeper writes
   there how often it rang. So it works with all that descriptors can: poll, fork, execve, a way through a socket. */
#define _GNU_SOURCE
#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <string.h>
#include <sys/eventfd.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include "host/clock/inside_alarms.h"

static int open_info_of(int fd) {
  char name[32] = "/proc/self/fdinfo/", digits[10];
  size_t length = strlen(name), count = 0;
  if (fd < 0) return -1;
  for (unsigned rest = (unsigned)fd; rest > 0 || count == 0; rest /= 10) digits[count++] = (char)('0' + rest % 10);
  while (count > 0) name[length++] = digits[--count];
  name[length] = '\0';
  return open(name, O_RDONLY | O_CLOEXEC);
}

/* The kernel's number of what the descriptor stands for; false where it is none of eventfd. */
static bool number_of(int fd, uint64_t *number) {
  static const char kName[] = "\neventfd-id:";
  char text[512];
  const int file = open_info_of(fd);
  if (file < 0) return false;
  const ssize_t length = read(file, text, sizeof text - 1);
  close(file);
  if (length <= 0) return false;
  text[length] = '\0';
  const char *found = strstr(text, kName);
  if (found != NULL) *number = strtoull(found + sizeof kName - 1, NULL, 10);
  return found != NULL;
}

static box_time_alarm *row_of_descriptor(box_time_page *page, int fd) {
  const int saved = errno;
  uint64_t number = 0;
  box_time_alarm *row = NULL;
  if (page != NULL && number_of(fd, &number)) row = inside_alarm(page, BOX_TIME_DESCRIPTOR, 0, number);
  errno = saved;
  return row;
}

/* The keeper takes a copy of the descriptor, which the system allows to whom it lets trace this process. */
static bool enter_descriptor(box_time_page *page, clockid_t clock, int fd) {
  box_time_alarm row = {.process = (uint32_t)getpid(), .kind = BOX_TIME_DESCRIPTOR, .clock = clock};
  if (!number_of(fd, &row.number)) return false;
  const int saved = errno;
  prctl(PR_SET_PTRACER, (unsigned long)page->keeper, 0, 0, 0);
  errno = saved;
  return inside_new_alarm(page, &row) != NULL;
}

INSIDE_EXPORT int timerfd_create(clockid_t clock, int flags) {
  box_time_page *page = inside_page();
  int64_t origin = 0;
  const bool is_of_box = page != NULL && inside_origin(page, clock, &origin);
  const int fd = is_of_box ? eventfd(0, flags) : -1; /* it has the same flags */
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
