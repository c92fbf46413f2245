/* timer_create and its kin. The kernel makes the timer, so that it has the kernel's number and ends with execve; the keeper lets it
   ring when the box's time has come. One that calls a function has a thread of its own, which waits. */
#define _GNU_SOURCE
#include <errno.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "host/clock/inside_alarms.h"

/* ---- timers that call a function ---------------------------------------------------------------------------------- */

typedef struct {
  pthread_mutex_t mutex;
  pthread_cond_t has_changed;
  box_time_page *page;
  box_time_alarm row; /* not on the page: its thread waits there */
  void (*function)(union sigval);
  union sigval value;
  pthread_attr_t attributes;
  bool is_deleted;
} caller;

typedef struct {
  void (*function)(union sigval);
  union sigval value;
} call;

/* Its timer_t is a number that no timer of the kernel has. */
static const uintptr_t kCaller = UINTPTR_MAX - UINTPTR_MAX / 2;

static timer_t name_of(const caller *timer) {
  return (timer_t)(kCaller | (uintptr_t)timer >> 1); /* NOLINT(performance-no-int-to-ptr): a name, not followed */
}

/* Null for a timer of the kernel. */
static caller *caller_of(timer_t timer) {
  if (((uintptr_t)timer & kCaller) == 0) return NULL;
  return (caller *)((uintptr_t)timer << 1); /* NOLINT(performance-no-int-to-ptr): what name_of did */
}

static void *makes_call(void *argument) {
  const call wanted = *(const call *)argument;
  free(argument);
  wanted.function(wanted.value);
  return NULL;
}

static void start_call(caller *timer) {
  pthread_t thread;
  call *wanted = malloc(sizeof *wanted);
  if (wanted == NULL) return;
  wanted->function = timer->function;
  wanted->value = timer->value;
  if (pthread_create(&thread, &timer->attributes, makes_call, wanted) != 0) free(wanted);
}

static void wait_once(caller *timer) {
  const int64_t deadline = timer->row.deadline;
  if (deadline == BOX_TIME_NEVER) {
    pthread_cond_wait(&timer->has_changed, &timer->mutex);
    return;
  }
  const struct timespec moment = inside_timespec(deadline + timer->page->began_monotonic);
  const uint32_t turn = timer->row.turn;
  const int error = pthread_cond_clockwait(&timer->has_changed, &timer->mutex, CLOCK_MONOTONIC, &moment);
  if (error != ETIMEDOUT || turn != timer->row.turn || timer->is_deleted) return;
  timer->row.deadline = timer->row.interval > 0 ? deadline + timer->row.interval : BOX_TIME_NEVER;
  start_call(timer);
}

static void *calls_in_time(void *argument) {
  caller *timer = argument;
  pthread_mutex_lock(&timer->mutex);
  while (!timer->is_deleted) wait_once(timer);
  pthread_mutex_unlock(&timer->mutex);
  pthread_attr_destroy(&timer->attributes);
  free(timer);
  return NULL;
}

/* As the C library: the calls are made in detached threads, in which no signal comes. */
static int start_waiting(caller *timer) {
  sigset_t all, before;
  pthread_t thread;
  pthread_attr_setdetachstate(&timer->attributes, PTHREAD_CREATE_DETACHED);
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before);
  const int error = pthread_create(&thread, NULL, calls_in_time, timer);
  pthread_sigmask(SIG_SETMASK, &before, NULL);
  if (error == 0) pthread_detach(thread);
  return error;
}

static int make_caller(box_time_page *page, clockid_t clock, const struct sigevent *event, timer_t *made) {
  caller *timer = calloc(1, sizeof *timer);
  if (timer == NULL) return -1;
  pthread_mutex_init(&timer->mutex, NULL);
  pthread_cond_init(&timer->has_changed, NULL);
  timer->page = page;
  timer->row.process = (uint32_t)getpid();
  timer->row.clock = clock;
  timer->row.deadline = BOX_TIME_NEVER;
  timer->function = event->sigev_notify_function;
  timer->value = event->sigev_value;
  pthread_attr_init(&timer->attributes);
  if (event->sigev_notify_attributes != NULL) timer->attributes = *event->sigev_notify_attributes;
  const int error = start_waiting(timer);
  if (error == 0) {
    *made = name_of(timer);
    return 0;
  }
  free(timer);
  errno = error;
  return -1;
}

/* A child does not have its parent's timers. */
static bool is_own(const caller *timer) {
  if (timer->row.process == (uint32_t)getpid()) return true;
  errno = EINVAL;
  return false;
}

static void tell_thread(caller *timer) {
  pthread_cond_signal(&timer->has_changed);
  pthread_mutex_unlock(&timer->mutex);
}

/* ---- timers of the kernel ----------------------------------------------------------------------------------------- */

typedef int create_function(clockid_t, struct sigevent *, timer_t *);
typedef int set_function(timer_t, int, const struct itimerspec *, struct itimerspec *);
typedef int get_function(timer_t, struct itimerspec *);
typedef int timer_function(timer_t);

static create_function *next_create(void) {
  static create_function *next;
  if (next == NULL) next = (create_function *)inside_next("timer_create");
  return next;
}

static get_function *next_get(void) {
  static get_function *next;
  if (next == NULL) next = (get_function *)inside_next("timer_gettime");
  return next;
}

static box_time_alarm *row_of_timer(box_time_page *page, timer_t timer) {
  if (page == NULL) return NULL;
  return inside_alarm(page, BOX_TIME_TIMER, (uint32_t)getpid(), (uintptr_t)timer);
}

/* Without a row of the page it is one of the wall's time. */
static void enter_timer(box_time_page *page, clockid_t clock, const struct sigevent *event, timer_t timer) {
  box_time_alarm row = {.process = (uint32_t)getpid(), .kind = BOX_TIME_TIMER, .clock = clock};
  row.number = (uintptr_t)timer;
  row.signal = SIGALRM;
  row.value = (uintptr_t)timer;
  if (event != NULL) {
    row.signal = event->sigev_notify == SIGEV_NONE ? 0 : (uint32_t)event->sigev_signo;
    row.value = (uintptr_t)event->sigev_value.sival_ptr;
    if (event->sigev_notify == SIGEV_THREAD_ID) row.target = (uint32_t)event->_sigev_un._tid;
  }
  inside_new_alarm(page, &row);
}

/* ---- the calls ---------------------------------------------------------------------------------------------------- */

INSIDE_EXPORT int timer_create(clockid_t clock, struct sigevent *restrict event, timer_t *restrict made) {
  box_time_page *page = inside_page();
  int64_t origin = 0;
  const bool is_of_box = page != NULL && inside_origin(page, clock, &origin);
  if (is_of_box && event != NULL && event->sigev_notify == SIGEV_THREAD) return make_caller(page, clock, event, made);
  const int result = next_create()(clock, event, made);
  if (is_of_box && result == 0) enter_timer(page, clock, event, *made);
  return result;
}

INSIDE_EXPORT int timer_settime(timer_t timer, int flags, const struct itimerspec *restrict value,
                                struct itimerspec *restrict before) {
  static set_function *next;
  if (next == NULL) next = (set_function *)inside_next("timer_settime");
  box_time_page *page = inside_page();
  caller *own = page == NULL ? NULL : caller_of(timer);
  box_time_alarm *row = own != NULL ? &own->row : row_of_timer(page, timer);
  if (row == NULL) return next(timer, flags, value, before);
  if (own != NULL && !is_own(own)) return -1;
  if (!inside_is_timer_value(value)) {
    errno = EINVAL;
    return -1;
  }
  if (own != NULL) pthread_mutex_lock(&own->mutex);
  if (before != NULL) *before = inside_timer_value(row, inside_now(page));
  inside_set_timer(page, row, (flags & TIMER_ABSTIME) != 0, value);
  if (own != NULL) tell_thread(own);
  return 0;
}

INSIDE_EXPORT int timer_gettime(timer_t timer, struct itimerspec *value) {
  box_time_page *page = inside_page();
  caller *own = page == NULL ? NULL : caller_of(timer);
  const box_time_alarm *row = own != NULL ? &own->row : row_of_timer(page, timer);
  if (row == NULL) return next_get()(timer, value);
  if (own != NULL && !is_own(own)) return -1;
  *value = inside_timer_value(row, inside_now(page));
  return 0;
}

INSIDE_EXPORT int timer_getoverrun(timer_t timer) {
  static timer_function *next;
  if (next == NULL) next = (timer_function *)inside_next("timer_getoverrun");
  box_time_page *page = inside_page();
  const caller *own = page == NULL ? NULL : caller_of(timer);
  if (own != NULL) return is_own(own) ? 0 : -1;
  const box_time_alarm *row = row_of_timer(page, timer);
  return row == NULL ? next(timer) : (int)__atomic_load_n(&row->overruns, __ATOMIC_ACQUIRE);
}

INSIDE_EXPORT int timer_delete(timer_t timer) {
  static timer_function *next;
  if (next == NULL) next = (timer_function *)inside_next("timer_delete");
  box_time_page *page = inside_page();
  caller *own = page == NULL ? NULL : caller_of(timer);
  if (own != NULL) {
    if (!is_own(own)) return -1;
    pthread_mutex_lock(&own->mutex);
    own->is_deleted = true;
    tell_thread(own);
    return 0;
  }
  box_time_alarm *row = row_of_timer(page, timer);
  if (row != NULL) inside_free_alarm(row);
  return next(timer);
}

/* Timers end with execve, and this library begins anew. */
__attribute__((constructor)) static void forget_timers_before_execve(void) {
  box_time_page *page = inside_page();
  for (int i = 0; page != NULL && i < BOX_TIME_ALARMS; ++i) {
    box_time_alarm *row = &page->alarms[i];
    const bool is_own_row = __atomic_load_n(&row->process, __ATOMIC_ACQUIRE) == (uint32_t)getpid();
    if (is_own_row && row->kind == BOX_TIME_TIMER) inside_free_alarm(row);
  }
}
