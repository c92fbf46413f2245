/* The page on which the time of a box stands: the keeper writes the time, and who waits writes for what. It is a file of the box,
   mapped by the programs in it. */
#pragma once

#include <errno.h>
#include <signal.h>
#include <stdint.h>
#include <sys/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Where the programs in the box find the page, and the library that shows it to them. */
#define BOX_TIME_PAGE "/mgb/lib/clock"
#define BOX_TIME_LIBRARY "/mgb/lib/liblmainte_clock.so"

enum { BOX_TIME_WAITERS = 128, BOX_TIME_GUESTS = 8, BOX_TIME_ALARMS = 64 };

#define BOX_TIME_NEVER INT64_MAX

/* Who waits looks at the page again within so many nanoseconds, as long as somebody keeps the time. */
#define BOX_TIME_LONGEST_SLICE INT64_C(20000000)

/* A thread that waits. The first BOX_TIME_GUESTS rows are those of the guests. */
typedef struct {
  uint32_t thread; /* 0: a free row */
  uint32_t process;
  uint64_t turn;    /* another one for each wait */
  int64_t deadline; /* in the box's time; BOX_TIME_NEVER while it does not wait */
} box_time_waiter;

/* An alarm: SIGALRM of a process (`alarm`, `setitimer`), which execve leaves as it is; a timer of a process (`timer_create`), which
   execve ends; or what can be read from a descriptor (`timerfd_create`), which is there as long as a process has it open. */
enum { BOX_TIME_ALARM, BOX_TIME_TIMER, BOX_TIME_DESCRIPTOR };

typedef struct {
  uint32_t process; /* that has made it; 0: a free row, BOX_TIME_NOBODY_YET: one that is being filled */
  uint32_t turn;    /* another one for each time it is set */
  int64_t deadline; /* BOX_TIME_NEVER: switched off */
  int64_t interval; /* 0: rings once */
  uint32_t kind;
  int32_t clock;
  uint64_t number;   /* of a timer its id, of a descriptor the kernel's number of what it stands for */
  uint64_t value;    /* that comes with a timer's signal */
  uint32_t signal;   /* of a timer; 0: none */
  uint32_t target;   /* the thread that gets a timer's signal; 0: any */
  uint64_t overruns; /* how often a timer rang while its signal had not been taken; the keeper writes this */
} box_time_alarm;

#define BOX_TIME_NOBODY_YET UINT32_MAX

/* All times are nanoseconds. */
typedef struct {
  uint32_t keeper;                         /* its process id; 0 where nobody keeps the time */
  uint32_t speed;                          /* times as fast as on the wall; 0: at full speed */
  int64_t passed;                          /* of the box's time, since the keeper began */
  int64_t looked;                          /* when the keeper wrote this, by the wall's CLOCK_MONOTONIC */
  uint64_t moved;                          /* how many turns there had been when time passed last */
  int64_t began_realtime, began_monotonic; /* the wall's clocks when the keeper began */
  uint64_t turns;                          /* how many waits have begun */
  uint32_t guests[BOX_TIME_GUESTS];        /* processes that came from outside, with all that they start; 0: none */
  box_time_waiter waiters[BOX_TIME_WAITERS];
  box_time_alarm alarms[BOX_TIME_ALARMS];
} box_time_page;

/* While somebody works, the time stands. Each wait lasts this much longer than it was asked for, which is what a system needs on
   the wall; and so much longer than the wait that began before it at the same time: the first is the first to go on. */
#define BOX_TIME_BETWEEN_WAITS INT64_C(60000)

/* A keeper that is silent for longer is looked for. */
#define BOX_TIME_SILENCE INT64_C(1000000000)

static inline int box_time_is_gone(uint32_t keeper) {
  const int saved = errno;
  const int gone = keeper == 0 || (kill((pid_t)keeper, 0) != 0 && errno == ESRCH);
  errno = saved;
  return gone;
}

/* What the box's time is, `wall` being the wall's CLOCK_MONOTONIC. Where the keeper is gone, time passes as on the wall. */
static inline int64_t box_time_passed(const box_time_page *page, int64_t wall) {
  const uint32_t keeper = __atomic_load_n(&page->keeper, __ATOMIC_ACQUIRE);
  const int64_t silence = wall - __atomic_load_n(&page->looked, __ATOMIC_ACQUIRE);
  const int64_t passed = __atomic_load_n(&page->passed, __ATOMIC_ACQUIRE);
  if (silence <= 0 || (keeper != 0 && silence < BOX_TIME_SILENCE)) return passed;
  return box_time_is_gone(keeper) ? passed + silence : passed;
}

#ifdef __cplusplus
}
#endif
