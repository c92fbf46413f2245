/* What threads wait for with a limit: they look again and again whether the box's time has come. */
#define _GNU_SOURCE
#include <errno.h>
#include <semaphore.h>
#include <threads.h>

#include "host/clock/inside.h"

/* What waits on the wall for a moment, or does not wait; 0, or an error. */
typedef int attempt(void *what, void *other, clockid_t clock, const struct timespec *until);

typedef struct {
  attempt *tries;
  void *what, *other;
  int not_yet; /* its error where the moment is over */
} thing;

/* Of a clock that the box's time does not follow, it is the C library's wait. */
static int wait_for(const thing *it, clockid_t clock, const struct timespec *until) {
  box_time_page *page = inside_page();
  int64_t origin = 0;
  if (page == NULL || !inside_is_time(until) || !inside_origin(page, clock, &origin)) {
    return it->tries(it->what, it->other, clock, until);
  }
  inside_wait wait;
  inside_begin(&wait, page, inside_nanoseconds(until) - origin, false);
  int error = 0;
  do {
    const struct timespec moment = inside_timespec(inside_wall() + inside_next_slice(&wait));
    error = it->tries(it->what, it->other, CLOCK_MONOTONIC, &moment);
  } while (error == it->not_yet && wait.row != NULL && !inside_is_over(&wait));
  inside_end(&wait);
  return error;
}

static int try_condition(void *condition, void *mutex, clockid_t clock, const struct timespec *until) {
  typedef int function(pthread_cond_t *, pthread_mutex_t *, clockid_t, const struct timespec *);
  static function *next;
  if (next == NULL) next = (function *)inside_next("pthread_cond_clockwait");
  return next(condition, mutex, clock, until);
}

static int try_mutex(void *mutex, void *other, clockid_t clock, const struct timespec *until) {
  typedef int function(pthread_mutex_t *, clockid_t, const struct timespec *);
  static function *next;
  (void)other;
  if (next == NULL) next = (function *)inside_next("pthread_mutex_clocklock");
  return next(mutex, clock, until);
}

static int try_reader(void *lock, void *other, clockid_t clock, const struct timespec *until) {
  typedef int function(pthread_rwlock_t *, clockid_t, const struct timespec *);
  static function *next;
  (void)other;
  if (next == NULL) next = (function *)inside_next("pthread_rwlock_clockrdlock");
  return next(lock, clock, until);
}

static int try_writer(void *lock, void *other, clockid_t clock, const struct timespec *until) {
  typedef int function(pthread_rwlock_t *, clockid_t, const struct timespec *);
  static function *next;
  (void)other;
  if (next == NULL) next = (function *)inside_next("pthread_rwlock_clockwrlock");
  return next(lock, clock, until);
}

static int try_end(void *thread, void *result, clockid_t clock, const struct timespec *until) {
  typedef int function(pthread_t, void **, clockid_t, const struct timespec *);
  static function *next;
  if (next == NULL) next = (function *)inside_next("pthread_clockjoin_np");
  return next(*(const pthread_t *)thread, result, clock, until);
}

static int try_semaphore(void *semaphore, void *other, clockid_t clock, const struct timespec *until) {
  typedef int function(sem_t *, clockid_t, const struct timespec *);
  static function *next;
  (void)other;
  if (next == NULL) next = (function *)inside_next("sem_clockwait");
  return next(semaphore, clock, until) == 0 ? 0 : errno;
}

INSIDE_EXPORT int pthread_cond_clockwait(pthread_cond_t *condition, pthread_mutex_t *mutex, clockid_t clock,
                                         const struct timespec *until) {
  const thing it = {try_condition, condition, mutex, ETIMEDOUT};
  return wait_for(&it, clock, until);
}

/* Which clock it has was said when it was made; glibc keeps that in this bit. */
INSIDE_EXPORT int pthread_cond_timedwait(pthread_cond_t *restrict condition, pthread_mutex_t *restrict mutex,
                                         const struct timespec *restrict until) {
  enum { MONOTONIC = 2 };
  const bool is_monotonic = (condition->__data.__wrefs & MONOTONIC) != 0;
  return pthread_cond_clockwait(condition, mutex, is_monotonic ? CLOCK_MONOTONIC : CLOCK_REALTIME, until);
}

INSIDE_EXPORT int pthread_mutex_clocklock(pthread_mutex_t *mutex, clockid_t clock, const struct timespec *until) {
  const thing it = {try_mutex, mutex, NULL, ETIMEDOUT};
  return wait_for(&it, clock, until);
}

INSIDE_EXPORT int pthread_mutex_timedlock(pthread_mutex_t *restrict mutex, const struct timespec *restrict until) {
  return pthread_mutex_clocklock(mutex, CLOCK_REALTIME, until);
}

INSIDE_EXPORT int sem_clockwait(sem_t *semaphore, clockid_t clock, const struct timespec *until) {
  const thing it = {try_semaphore, semaphore, NULL, ETIMEDOUT};
  const int error = wait_for(&it, clock, until);
  if (error != 0) errno = error;
  return error == 0 ? 0 : -1;
}

INSIDE_EXPORT int sem_timedwait(sem_t *restrict semaphore, const struct timespec *restrict until) {
  return sem_clockwait(semaphore, CLOCK_REALTIME, until);
}

INSIDE_EXPORT int pthread_rwlock_clockrdlock(pthread_rwlock_t *lock, clockid_t clock, const struct timespec *until) {
  const thing it = {try_reader, lock, NULL, ETIMEDOUT};
  return wait_for(&it, clock, until);
}

INSIDE_EXPORT int pthread_rwlock_timedrdlock(pthread_rwlock_t *restrict lock, const struct timespec *restrict until) {
  return pthread_rwlock_clockrdlock(lock, CLOCK_REALTIME, until);
}

INSIDE_EXPORT int pthread_rwlock_clockwrlock(pthread_rwlock_t *lock, clockid_t clock, const struct timespec *until) {
  const thing it = {try_writer, lock, NULL, ETIMEDOUT};
  return wait_for(&it, clock, until);
}

INSIDE_EXPORT int pthread_rwlock_timedwrlock(pthread_rwlock_t *restrict lock, const struct timespec *restrict until) {
  return pthread_rwlock_clockwrlock(lock, CLOCK_REALTIME, until);
}

INSIDE_EXPORT int pthread_clockjoin_np(pthread_t thread, void **result, clockid_t clock, const struct timespec *until) {
  const thing it = {try_end, &thread, result, ETIMEDOUT};
  return wait_for(&it, clock, until);
}

INSIDE_EXPORT int pthread_timedjoin_np(pthread_t thread, void **result, const struct timespec *until) {
  return pthread_clockjoin_np(thread, result, CLOCK_REALTIME, until);
}

/* The C11 names of the same: in glibc, what they take is what those of POSIX take. */
static int in_words_of_c(int error) {
  if (error == 0) return thrd_success;
  return error == ETIMEDOUT ? thrd_timedout : thrd_error;
}

INSIDE_EXPORT int cnd_timedwait(cnd_t *restrict condition, mtx_t *restrict mutex,
                                const struct timespec *restrict until) {
  return in_words_of_c(
      pthread_cond_clockwait((pthread_cond_t *)condition, (pthread_mutex_t *)mutex, CLOCK_REALTIME, until));
}

INSIDE_EXPORT int mtx_timedlock(mtx_t *restrict mutex, const struct timespec *restrict until) {
  return in_words_of_c(pthread_mutex_clocklock((pthread_mutex_t *)mutex, CLOCK_REALTIME, until));
}
