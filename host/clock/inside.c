#define _GNU_SOURCE
#include "host/clock/inside.h"

#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

enum {
  FIRST_SLICE = 50000,
  LONGEST_SLICE = 2000000,
  LONGEST_SLICE_BEHIND = BOX_TIME_LONGEST_SLICE,
  LONGEST_SLICE_BY_SPEED = BOX_TIME_LONGEST_SLICE / 2,
  LONGEST_SLICE_UNKEPT = 100000000,
  SOONEST = 8
};

static box_time_page *g_page;
static int g_is_looked_for;

typedef int clock_function(clockid_t, struct timespec *);
static clock_function *g_clock;

inside_function *inside_next(const char *name) {
  union {
    void *object;
    inside_function *function;
  } found;
  found.object = dlsym(RTLD_NEXT, name);
  return found.function;
}

static box_time_page *mapped(void) {
  const int fd = open(BOX_TIME_PAGE, O_RDWR | O_CLOEXEC);
  if (fd < 0) return NULL;
  void *const memory = mmap(NULL, sizeof(box_time_page), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
  close(fd);
  return memory == MAP_FAILED ? NULL : memory;
}

/* Early: before a program can close the descriptor that is open for a moment here, or starts a thread. */
__attribute__((constructor)) static void look_for_page(void) {
  const int saved = errno;
  if (!g_is_looked_for) g_page = mapped();
  g_is_looked_for = 1;
  errno = saved;
}

box_time_page *inside_page(void) {
  if (!g_is_looked_for) look_for_page();
  return g_page;
}

int64_t inside_wall(void) {
  struct timespec time;
  if (g_clock == NULL) g_clock = (clock_function *)inside_next("clock_gettime");
  g_clock(CLOCK_MONOTONIC, &time);
  return inside_nanoseconds(&time);
}

int64_t inside_now(const box_time_page *page) {
  return box_time_passed(page, inside_wall());
}

bool inside_origin(const box_time_page *page, clockid_t clock, int64_t *origin) {
  switch (clock) {
    case CLOCK_REALTIME:
    case CLOCK_REALTIME_COARSE:
    case CLOCK_TAI:
      *origin = page->began_realtime;
      return true;
    case CLOCK_MONOTONIC:
    case CLOCK_MONOTONIC_RAW:
    case CLOCK_MONOTONIC_COARSE:
    case CLOCK_BOOTTIME:
      *origin = page->began_monotonic;
      return true;
    default:
      return false;
  }
}

/* Never where no clock could tell the moment. */
int64_t inside_deadline(const box_time_page *page, int64_t length) {
  int64_t deadline = 0;
  const bool is_too_long = __builtin_add_overflow(inside_now(page), length, &deadline);
  return is_too_long || deadline > BOX_TIME_NEVER - page->began_realtime ? BOX_TIME_NEVER : deadline;
}

uint64_t inside_turn(box_time_page *page, int64_t *deadline) {
  const uint64_t turn = __atomic_add_fetch(&page->turns, 1, __ATOMIC_ACQ_REL);
  const uint64_t waits = turn - __atomic_load_n(&page->moved, __ATOMIC_ACQUIRE);
  const int64_t more =
      waits < (uint64_t)INSIDE_SECOND / BOX_TIME_BETWEEN_WAITS ? (int64_t)waits * BOX_TIME_BETWEEN_WAITS : 0;
  if (*deadline < BOX_TIME_NEVER - INSIDE_SECOND) *deadline += more;
  return turn;
}

bool inside_is_time(const struct timespec *time) {
  return time->tv_sec >= 0 && time->tv_nsec >= 0 && time->tv_nsec < INSIDE_SECOND;
}

int64_t inside_nanoseconds(const struct timespec *time) {
  int64_t all = 0;
  const bool is_too_long = __builtin_mul_overflow((int64_t)time->tv_sec, (int64_t)INSIDE_SECOND, &all) ||
                           __builtin_add_overflow(all, (int64_t)time->tv_nsec, &all);
  return is_too_long ? BOX_TIME_NEVER : all;
}

struct timespec inside_timespec(int64_t nanoseconds) {
  const struct timespec time = {nanoseconds / INSIDE_SECOND, nanoseconds % INSIDE_SECOND};
  return time;
}

/* Its own row where it left a wait by longjmp, else a free one. */
static box_time_waiter *row_of(box_time_page *page, uint32_t thread) {
  for (int i = BOX_TIME_GUESTS; i < BOX_TIME_WAITERS; ++i) {
    if (__atomic_load_n(&page->waiters[i].thread, __ATOMIC_ACQUIRE) == thread) return &page->waiters[i];
  }
  for (int i = BOX_TIME_GUESTS; i < BOX_TIME_WAITERS; ++i) {
    uint32_t free_row = 0;
    if (__atomic_compare_exchange_n(&page->waiters[i].thread, &free_row, thread, false, __ATOMIC_ACQ_REL,
                                    __ATOMIC_ACQUIRE)) {
      return &page->waiters[i];
    }
  }
  return NULL;
}

static void enter(inside_wait *wait) {
  wait->row = row_of(wait->page, wait->thread);
  if (wait->row == NULL) return;
  wait->row->process = (uint32_t)getpid();
  __atomic_store_n(&wait->row->turn, wait->turn, __ATOMIC_RELEASE);
  __atomic_store_n(&wait->row->deadline, wait->deadline, __ATOMIC_RELEASE);
}

/* The keeper takes rows from the dead, and may be late: then the row is somebody else's already. */
static void stay(inside_wait *wait) {
  const bool is_own = __atomic_load_n(&wait->row->thread, __ATOMIC_ACQUIRE) == wait->thread &&
                      __atomic_load_n(&wait->row->turn, __ATOMIC_ACQUIRE) == wait->turn;
  if (!is_own) enter(wait);
}

void inside_begin(inside_wait *wait, box_time_page *page, int64_t deadline, bool holds_signals) {
  wait->page = page;
  wait->deadline = deadline;
  wait->slice = FIRST_SLICE;
  wait->thread = (uint32_t)syscall(SYS_gettid);
  wait->turn = inside_turn(page, &wait->deadline);
  wait->holds_signals = holds_signals;
  if (holds_signals) {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &wait->signals);
  }
  enter(wait);
}

bool inside_is_over(const inside_wait *wait) {
  return inside_now(wait->page) >= wait->deadline;
}

int64_t inside_left(const inside_wait *wait) {
  const int64_t left = wait->deadline - inside_now(wait->page);
  return left > 0 ? left : 0;
}

static int64_t shorter(int64_t one, int64_t other) {
  return one < other ? one : other;
}

static bool is_kept(const box_time_page *page) {
  const uint32_t keeper = __atomic_load_n(&page->keeper, __ATOMIC_ACQUIRE);
  const int64_t silence = inside_wall() - __atomic_load_n(&page->looked, __ATOMIC_ACQUIRE);
  return keeper != 0 && (silence < BOX_TIME_SILENCE || !box_time_is_gone(keeper));
}

/* Whether others' moments come before, so many that the time reaches this one in several steps only. */
static bool is_behind_others(const inside_wait *wait) {
  int earlier = 0;
  for (int i = BOX_TIME_GUESTS; i < BOX_TIME_WAITERS && earlier < SOONEST; ++i) {
    const box_time_waiter *const row = &wait->page->waiters[i];
    if (__atomic_load_n(&row->thread, __ATOMIC_RELAXED) == 0) continue;
    earlier += __atomic_load_n(&row->deadline, __ATOMIC_RELAXED) < wait->deadline ? 1 : 0;
  }
  return earlier == SOONEST;
}

static int64_t longest_slice(const inside_wait *wait) {
  const int64_t speed = wait->page->speed;
  if (!is_kept(wait->page)) return shorter(LONGEST_SLICE_UNKEPT, inside_left(wait));
  if (speed != 0) return shorter(LONGEST_SLICE_BY_SPEED, inside_left(wait) / speed + FIRST_SLICE);
  return is_behind_others(wait) ? LONGEST_SLICE_BEHIND : LONGEST_SLICE;
}

/* At full speed, the time may come at any moment. Who waits behind many others looks less often: with a hundred who look, one of them
   is at work at each moment, and the time stands still. Where nobody keeps the time, it comes when the wall has it, and the next keeper is
   looked for now and then. Where all rows are taken, nobody knows of this wait: it takes its time on the wall. */
int64_t inside_next_slice(inside_wait *wait) {
  if (wait->row != NULL) stay(wait);
  if (wait->row == NULL) return inside_left(wait);
  const int64_t slice = shorter(wait->slice, longest_slice(wait));
  wait->slice = shorter(2 * slice, LONGEST_SLICE_UNKEPT);
  return slice;
}

void inside_end(const inside_wait *wait) {
  if (wait->row != NULL && __atomic_load_n(&wait->row->thread, __ATOMIC_ACQUIRE) == wait->thread) {
    __atomic_store_n(&wait->row->deadline, BOX_TIME_NEVER, __ATOMIC_RELEASE);
    __atomic_store_n(&wait->row->thread, 0, __ATOMIC_RELEASE);
  }
  if (wait->holds_signals) pthread_sigmask(SIG_SETMASK, &wait->signals, NULL);
}

int inside_system_poll(struct pollfd *fds, nfds_t count, const struct timespec *limit, const sigset_t *mask) {
  struct timespec left; /* the system writes there what is left */
  if (limit != NULL) left = *limit;
  return (int)syscall(SYS_ppoll, fds, count, limit == NULL ? NULL : &left, mask, _NSIG / 8);
}

int inside_look(inside_wait *wait, struct pollfd *fds, nfds_t count, const sigset_t *mask) {
  const struct timespec limit = inside_timespec(inside_next_slice(wait));
  const int ready = inside_system_poll(fds, count, &limit, mask == NULL ? &wait->signals : mask);
  if (ready == 0 && wait->row == NULL) wait->deadline = inside_now(wait->page);
  return ready;
}

int inside_poll(inside_wait *wait, struct pollfd *fds, nfds_t count, const sigset_t *mask) {
  for (;;) {
    const int ready = inside_look(wait, fds, count, mask);
    if (ready != 0 || inside_is_over(wait)) return ready;
  }
}
