/* The time of the box, for the calls that the preloaded library puts in the place of the C library's. */
#pragma once

#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <stdbool.h>
#include <stdint.h>
#include <time.h>

#include "host/clock/page.h"

#define INSIDE_EXPORT __attribute__((visibility("default")))

enum { INSIDE_SECOND = 1000000000 }; /* nanoseconds */

/* The page; null where no time is kept here: then all calls are the C library's. */
box_time_page *inside_page(void);

/* The box's time since its keeper began, and the wall's CLOCK_MONOTONIC. */
int64_t inside_now(const box_time_page *page);
int64_t inside_wall(void);

/* Between a clock's own time and the time since the keeper began; false for a clock that does not tell the time of day or since
   the start of the machine, such as the processor's time of a process. */
bool inside_origin(const box_time_page *page, clockid_t clock, int64_t *origin);

/* When a wait of this length ends; one that is longer than all times never does. */
int64_t inside_deadline(const box_time_page *page, int64_t length);

/* The number of a wait that begins now, and its deadline behind those of the waits that began before it. */
uint64_t inside_turn(box_time_page *page, int64_t *deadline);

bool inside_is_time(const struct timespec *time);
int64_t inside_nanoseconds(const struct timespec *time); /* BOX_TIME_NEVER where it is longer */
struct timespec inside_timespec(int64_t nanoseconds);

/* A wait that the keeper sees, until it is over. While it lasts, all signals are held back but in inside_look, so that none comes
   between two looks. */
typedef struct {
  box_time_page *page;
  box_time_waiter *row; /* null where all rows are taken */
  uint32_t thread;
  uint64_t turn;
  int64_t deadline;
  int64_t slice; /* how long the next look lasts, on the wall */
  bool holds_signals;
  sigset_t signals; /* of the caller */
} inside_wait;

void inside_begin(inside_wait *wait, box_time_page *page, int64_t deadline, bool holds_signals);
bool inside_is_over(const inside_wait *wait); /* its time has come */
int64_t inside_left(const inside_wait *wait);
int64_t inside_next_slice(inside_wait *wait);
void inside_end(const inside_wait *wait);

/* Waits as ppoll does, for a moment; a null mask is the caller's own. */
int inside_look(inside_wait *wait, struct pollfd *fds, nfds_t count, const sigset_t *mask);

/* Waits as ppoll does, until the deadline. -1, with errno, 0 when the time has come, or how many are ready. */
int inside_poll(inside_wait *wait, struct pollfd *fds, nfds_t count, const sigset_t *mask);

/* ppoll of the system. */
int inside_system_poll(struct pollfd *fds, nfds_t count, const struct timespec *limit, const sigset_t *mask);

/* A function of the C library that one of ours stands before. */
typedef void inside_function(void);
inside_function *inside_next(const char *name);
