/*
 * clock - waits in all ways that there are, in the time of a box.
 *
 *   clock        a line for each call: its name and "ok", or what was wrong
 *   clock order  what three children did, in the order in which their times came
 *   clock many          the numbers of a hundred threads, in the order in which their times came
 *   clock select LIBRARY      what this library's select leaves of its limit, in whole seconds: where the time runs out, where another
 *                             process writes, and where a signal comes
 *   clock private COMMAND...  runs a command for which other processes' descriptors are private
 */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <linux/filter.h>
#include <linux/futex.h>
#include <linux/seccomp.h>
#include <poll.h>
#include <pthread.h>
#include <semaphore.h>
#include <signal.h>
#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/epoll.h>
#include <sys/prctl.h>
#include <sys/select.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <sys/timerfd.h>
#include <sys/times.h>
#include <sys/wait.h>
#include <threads.h>
#include <time.h>
#include <unistd.h>

static volatile sig_atomic_t g_alarms;

static void on_alarm(int number) {
  (void)number;
  ++g_alarms;
}

static double seconds_of(clockid_t clock) {
  struct timespec now;
  clock_gettime(clock, &now);
  return (double)now.tv_sec + (double)now.tv_nsec / 1e9;
}

static struct timespec after(clockid_t clock, time_t seconds) {
  struct timespec moment;
  clock_gettime(clock, &moment);
  moment.tv_sec += seconds;
  return moment;
}

static int to_sleep(void) {
  return (int)sleep(60);
}
static int to_usleep(void) {
  return usleep(3500000);
}
static int to_nanosleep(void) {
  const struct timespec length = {2, 500000000};
  return nanosleep(&length, NULL);
}
static int to_sleep_until(void) {
  const struct timespec moment = after(CLOCK_REALTIME, 7);
  return clock_nanosleep(CLOCK_REALTIME, TIMER_ABSTIME, &moment, NULL);
}
static int to_poll(void) {
  return poll(NULL, 0, 20000);
}
static int to_ppoll(void) {
  const struct timespec length = {9, 0};
  return ppoll(NULL, 0, &length, NULL);
}
static int to_select(void) {
  struct timeval limit = {4, 0};
  fd_set in;
  int fds[2];
  if (pipe(fds) != 0) return -1;
  FD_ZERO(&in);
  FD_SET(fds[0], &in);
  return select(fds[0] + 1, &in, NULL, NULL, &limit) + FD_ISSET(fds[0], &in) + (int)limit.tv_sec;
}
static int to_pselect(void) {
  const struct timespec length = {5, 0};
  return pselect(0, NULL, NULL, NULL, &length, NULL);
}
static int to_epoll(void) {
  struct epoll_event event;
  return epoll_wait(epoll_create1(0), &event, 1, 6000);
}
static int to_sigtimedwait(void) {
  const struct timespec length = {8, 0};
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, SIGUSR1);
  sigprocmask(SIG_BLOCK, &set, NULL);
  return sigtimedwait(&set, NULL, &length) == -1 && errno == EAGAIN ? 0 : 1;
}
static int to_wait_for_condition(void) {
  pthread_cond_t condition = PTHREAD_COND_INITIALIZER;
  pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
  const struct timespec moment = after(CLOCK_REALTIME, 11);
  pthread_mutex_lock(&mutex);
  return pthread_cond_timedwait(&condition, &mutex, &moment) == ETIMEDOUT ? 0 : 1;
}
static int to_wait_for_semaphore(void) {
  sem_t semaphore;
  const struct timespec moment = after(CLOCK_REALTIME, 12);
  sem_init(&semaphore, 0, 0);
  return sem_timedwait(&semaphore, &moment) == -1 && errno == ETIMEDOUT ? 0 : 1;
}
static int to_wait_for_mutex(void) {
  pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
  const struct timespec moment = after(CLOCK_REALTIME, 13);
  pthread_mutex_lock(&mutex);
  return pthread_mutex_timedlock(&mutex, &moment) == ETIMEDOUT ? 0 : 1;
}

/* Replaced programs lose no alarm, and set alarms are heard without anybody who waits for a time. */
static int to_pause(void) {
  g_alarms = 0;
  alarm(3);
  pause();
  return g_alarms - 1;
}
static int to_be_replaced(void) {
  int status = 0, fds[2];
  if (pipe(fds) != 0) return -1;
  const pid_t child = fork();
  if (child == 0) {
    alarm(14);
    dup2(fds[0], STDIN_FILENO);
    execlp("cat", "cat", (char *)NULL);
    _exit(127);
  }
  waitpid(child, &status, 0);
  return WIFSIGNALED(status) && WTERMSIG(status) == SIGALRM ? 0 : 1;
}
static int to_ring_three_times(void) {
  const struct itimerval each = {{2, 0}, {1, 0}}, never = {{0, 0}, {0, 0}};
  g_alarms = 0;
  setitimer(ITIMER_REAL, &each, NULL);
  while (g_alarms < 3) pause();
  setitimer(ITIMER_REAL, &never, NULL);
  return alarm(0) == 0 ? 0 : 1;
}
static int to_be_interrupted(void) {
  alarm(2);
  const unsigned left = sleep(30);
  return left == 28 ? 0 : (int)left;
}
static int to_switch_an_alarm_off(void) {
  g_alarms = 0;
  alarm(5);
  sleep(1);
  const unsigned left = alarm(0);
  sleep(9);
  return left == 4 && g_alarms == 0 ? 0 : 1;
}

static int to_ualarm(void) {
  g_alarms = 0;
  ualarm(500000, 0);
  pause();
  return g_alarms - 1;
}

/* What other calls have a limit. */
static int to_epoll_exactly(void) {
  struct epoll_event event;
  const struct timespec length = {6, 0};
  return epoll_pwait2(epoll_create1(0), &event, 1, &length, NULL);
}
static int to_wait_for_lock(void) {
  pthread_rwlock_t lock = PTHREAD_RWLOCK_INITIALIZER;
  const struct timespec moment = after(CLOCK_REALTIME, 15);
  pthread_rwlock_rdlock(&lock);
  return pthread_rwlock_timedwrlock(&lock, &moment) == ETIMEDOUT ? 0 : 1;
}
static void *waits_for_ever(void *condition) {
  sem_wait((sem_t *)condition);
  return NULL;
}
static int to_wait_for_thread(void) {
  pthread_t thread;
  sem_t end;
  const struct timespec moment = after(CLOCK_REALTIME, 17);
  sem_init(&end, 0, 0);
  if (pthread_create(&thread, NULL, waits_for_ever, &end) != 0) return 1;
  const int error = pthread_timedjoin_np(thread, NULL, &moment);
  sem_post(&end);
  return error == ETIMEDOUT ? pthread_join(thread, NULL) : 1;
}
static int to_wait_as_in_c11(void) {
  cnd_t condition;
  mtx_t mutex;
  const struct timespec moment = after(CLOCK_REALTIME, 18);
  cnd_init(&condition);
  mtx_init(&mutex, mtx_timed);
  mtx_lock(&mutex);
  const int result = cnd_timedwait(&condition, &mutex, &moment);
  mtx_unlock(&mutex);
  return result == thrd_timedout ? 0 : 1;
}
static int to_wait_for_word(void) {
  unsigned word = 0;
  const struct timespec moment = after(CLOCK_MONOTONIC, 19);
  const long result =
      syscall(SYS_futex, &word, FUTEX_WAIT_BITSET | FUTEX_PRIVATE_FLAG, 0, &moment, NULL, FUTEX_BITSET_MATCH_ANY);
  return result == -1 && errno == ETIMEDOUT ? 0 : 1;
}
static int to_count_ticks(void) {
  struct tms used;
  const clock_t before = times(&used);
  sleep(20);
  const clock_t ticks = times(&used) - before;
  return ticks >= 20 * sysconf(_SC_CLK_TCK) && ticks <= 21 * sysconf(_SC_CLK_TCK) ? 0 : 1;
}

/* Timers. They ring with what was given to them, are counted while nobody listens, and end with execve and fork. */
static timer_t timer_of(int notify, int number) {
  timer_t timer = NULL;
  struct sigevent event;
  memset(&event, 0, sizeof event);
  event.sigev_notify = notify;
  event.sigev_signo = number;
  event.sigev_value.sival_int = 42;
  timer_create(CLOCK_MONOTONIC, &event, &timer);
  return timer;
}
static int set_timer(timer_t timer, time_t first, time_t again) {
  const struct itimerspec value = {{again, 0}, {first, 0}};
  return timer_settime(timer, 0, &value, NULL);
}
static sigset_t blocked(int number) {
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, number);
  sigprocmask(SIG_BLOCK, &set, NULL);
  return set;
}
static int to_time(void) {
  timer_t timer = NULL;
  g_alarms = 0;
  timer_create(CLOCK_REALTIME, NULL, &timer);
  set_timer(timer, 21, 0);
  pause();
  return g_alarms - 1 + timer_delete(timer);
}
static int to_time_with_value(void) {
  const sigset_t set = blocked(SIGRTMIN);
  timer_t timer = timer_of(SIGEV_SIGNAL, SIGRTMIN);
  siginfo_t info;
  set_timer(timer, 22, 0);
  const int number = sigwaitinfo(&set, &info);
  const int is_right = number == SIGRTMIN && info.si_code == SI_TIMER && info.si_value.sival_int == 42;
  return timer_delete(timer) == 0 && is_right ? 0 : 1;
}
static int to_time_unheard(void) {
  const sigset_t set = blocked(SIGRTMIN);
  timer_t timer = timer_of(SIGEV_SIGNAL, SIGRTMIN);
  const struct timespec at_once = {0, 0};
  set_timer(timer, 1, 2);
  sleep(6); /* it rings after 1, 3 and 5 seconds */
  const int first = sigtimedwait(&set, NULL, &at_once), more = timer_getoverrun(timer);
  const int second = sigtimedwait(&set, NULL, &at_once);
  timer_delete(timer);
  return first == SIGRTMIN && more == 2 && second == -1 ? 0 : 1 + more;
}
static int to_ask_timer(void) {
  timer_t timer = timer_of(SIGEV_NONE, 0);
  struct itimerspec before, value;
  set_timer(timer, 100, 0);
  sleep(23);
  timer_gettime(timer, &before);
  sleep(80);
  timer_gettime(timer, &value);
  timer_delete(timer);
  return before.it_value.tv_sec == 76 && value.it_value.tv_sec == 0 && value.it_value.tv_nsec == 0 ? 0 : 1;
}
static sem_t g_called;
static void is_called(union sigval value) {
  if (value.sival_int == 42) sem_post(&g_called);
}
static int to_be_called(void) {
  timer_t timer = NULL;
  struct sigevent event;
  memset(&event, 0, sizeof event);
  event.sigev_notify = SIGEV_THREAD;
  event.sigev_notify_function = is_called;
  event.sigev_value.sival_int = 42;
  sem_init(&g_called, 0, 0);
  if (timer_create(CLOCK_MONOTONIC, &event, &timer) != 0) return 1;
  set_timer(timer, 4, 5);
  for (int i = 0; i < 5; ++i) sem_wait(&g_called);
  return timer_delete(timer);
}
static int to_end_timers(void) {
  timer_t timer = timer_of(SIGEV_SIGNAL, SIGKILL);
  int status = 0;
  const pid_t child = fork();
  if (child == 0) {
    if (set_timer(timer, 1, 0) != -1 || errno != EINVAL) _exit(1);
    set_timer(timer_of(SIGEV_SIGNAL, SIGKILL), 3, 0);
    execlp("sleep", "sleep", "25", (char *)NULL);
  }
  waitpid(child, &status, 0);
  timer_delete(timer);
  return status;
}

/* What is read from a descriptor says how often it rang. */
static int descriptor_of(time_t first, time_t again) {
  const struct itimerspec value = {{again, 0}, {first, 0}};
  const int fd = timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC);
  return timerfd_settime(fd, 0, &value, NULL) == 0 ? fd : -1;
}
static int times_read(int fd) {
  unsigned long long times = 0;
  return read(fd, &times, sizeof times) == sizeof times ? (int)times : -1;
}
static int to_read_timer(void) {
  const int fd = descriptor_of(26, 0);
  return times_read(fd) - 1 + close(fd);
}
static int to_watch_timer(void) {
  const int fd = descriptor_of(2, 3), watcher = epoll_create1(0);
  struct epoll_event event = {.events = EPOLLIN};
  epoll_ctl(watcher, EPOLL_CTL_ADD, fd, &event);
  if (epoll_wait(watcher, &event, 1, -1) != 1 || times_read(fd) != 1) return 1;
  sleep(10); /* it rings after 5, 8 and 11 seconds */
  struct pollfd watched = {fd, POLLIN, 0};
  const int ready = poll(&watched, 1, 1000000), count = times_read(fd);
  return ready == 1 ? count - 3 + close(fd) : 2;
}
static int to_ask_descriptor(void) {
  const int fd = descriptor_of(2, 0);
  struct itimerspec value = {{0, 0}, {50, 0}}, before;
  sleep(3);
  timerfd_settime(fd, 0, &value, NULL); /* and forgets that it rang */
  sleep(7);
  timerfd_gettime(fd, &before);
  struct pollfd watched = {fd, POLLIN, 0};
  const int is_ready = poll(&watched, 1, 0);
  close(fd);
  return before.it_value.tv_sec == 42 ? is_ready : 1;
}
static int to_hand_timer_on(void) {
  const int fd = descriptor_of(27, 0);
  int status = 0;
  const pid_t child = fork();
  if (child == 0) {
    dup2(fd, STDIN_FILENO);
    execlp("dd", "dd", "bs=8", "count=1", "of=/dev/null", "status=none", (char *)NULL);
    _exit(127);
  }
  close(fd);
  waitpid(child, &status, 0);
  return status;
}

/* Who writes after three seconds ends a wait of a thousand. */
static int to_hear_of_another(void) {
  int fds[2];
  char byte = 0;
  if (pipe(fds) != 0) return -1;
  const pid_t child = fork();
  if (child == 0) {
    sleep(3);
    _exit(write(fds[1], "x", 1) == 1 ? 0 : 1);
  }
  struct pollfd watched = {fds[0], POLLIN, 0};
  const int ready = poll(&watched, 1, 1000000);
  waitpid(child, NULL, 0);
  return ready == 1 && read(fds[0], &byte, 1) == 1 && byte == 'x' ? 0 : 1;
}

/* Nobody waits for the dead. */
static int to_outlive_a_sleeper(void) {
  const pid_t child = fork();
  if (child == 0) {
    sleep(1);
    _exit(0);
  }
  usleep(100000);
  kill(child, SIGKILL);
  waitpid(child, NULL, 0);
  return (int)sleep(16);
}

/* What the library does not see takes its time on the wall; and so does who reads the time until it has come. */
static int to_call_the_system(void) {
  const struct timespec length = {0, 100000000};
  return (int)syscall(SYS_nanosleep, &length, NULL);
}
/* Stopped and let go on meanwhile, while another one waits for a late moment of the box's time. While it is stopped, no time passes in
   the box: as long as a busy workstation lets it stay so. */
static int to_go_on_in_the_system(void) {
  const struct timespec length = {0, 300000000}, soon = {0, 50000000};
  const pid_t sleeper = fork();
  if (sleeper == 0) {
    sleep(100);
    _exit(0);
  }
  const pid_t stopper = fork();
  if (stopper == 0) {
    syscall(SYS_nanosleep, &soon, NULL);
    kill(getppid(), SIGSTOP);
    syscall(SYS_nanosleep, &soon, NULL);
    kill(getppid(), SIGCONT);
    _exit(0);
  }
  const int result = (int)syscall(SYS_nanosleep, &length, NULL);
  kill(sleeper, SIGKILL);
  while (wait(NULL) > 0) continue;
  return result;
}
static int to_spin(void) {
  const double begin = seconds_of(CLOCK_MONOTONIC);
  while (seconds_of(CLOCK_MONOTONIC) < begin + 0.1) continue;
  return 0;
}

static const struct {
  const char *name;
  int (*call)(void);
  double least, most; /* seconds */
} kRows[] = {
    {"sleep", to_sleep, 60, 60.1},
    {"usleep", to_usleep, 3.5, 3.6},
    {"nanosleep", to_nanosleep, 2.5, 2.6},
    {"clock_nanosleep", to_sleep_until, 7, 7.1},
    {"poll", to_poll, 20, 20.1},
    {"ppoll", to_ppoll, 9, 9.1},
    {"select", to_select, 4, 4.1},
    {"pselect", to_pselect, 5, 5.1},
    {"epoll_wait", to_epoll, 6, 6.1},
    {"sigtimedwait", to_sigtimedwait, 8, 8.1},
    {"pthread_cond_timedwait", to_wait_for_condition, 11, 11.1},
    {"sem_timedwait", to_wait_for_semaphore, 12, 12.1},
    {"pthread_mutex_timedlock", to_wait_for_mutex, 13, 13.1},
    {"alarm and pause", to_pause, 3, 3.1},
    {"alarm and execve", to_be_replaced, 14, 14.1},
    {"setitimer", to_ring_three_times, 3, 6.1},
    {"alarm and sleep", to_be_interrupted, 2, 2.1},
    {"ualarm", to_ualarm, 0.5, 0.6},
    {"epoll_pwait2", to_epoll_exactly, 6, 6.1},
    {"pthread_rwlock_timedwrlock", to_wait_for_lock, 15, 15.1},
    {"pthread_timedjoin_np", to_wait_for_thread, 17, 17.1},
    {"cnd_timedwait", to_wait_as_in_c11, 18, 18.1},
    {"futex", to_wait_for_word, 19, 19.1},
    {"times", to_count_ticks, 20, 20.1},
    {"timer_create", to_time, 21, 21.1},
    {"timer_create with a value", to_time_with_value, 22, 22.1},
    {"timer_getoverrun", to_time_unheard, 6, 6.1},
    {"timer_gettime", to_ask_timer, 103, 103.1},
    {"timer_create with a function", to_be_called, 24, 24.1},
    {"timer_create, fork and execve", to_end_timers, 25, 25.1},
    {"timerfd_create", to_read_timer, 26, 26.1},
    {"timerfd_create and epoll_wait", to_watch_timer, 12, 12.1},
    {"timerfd_gettime", to_ask_descriptor, 10, 10.1},
    {"timerfd_create, fork and execve", to_hand_timer_on, 27, 27.1},
    {"alarm(0)", to_switch_an_alarm_off, 10, 10.1},
    {"poll and another process", to_hear_of_another, 3, 3.1},
    {"a sleeper that is killed", to_outlive_a_sleeper, 16, 16.3},
    {"nanosleep of the system", to_call_the_system, 0.05, 60},
    {"nanosleep of the system that was stopped", to_go_on_in_the_system, 0.01, 60},
    {"a program that reads the time", to_spin, 0.1, 60},
};

static void try(size_t i) {
  const double monotonic = seconds_of(CLOCK_MONOTONIC), real = seconds_of(CLOCK_REALTIME);
  const int result = kRows[i].call();
  const double took = seconds_of(CLOCK_MONOTONIC) - monotonic, difference = seconds_of(CLOCK_REALTIME) - real - took;
  const int is_right = result == 0 && took >= kRows[i].least && took <= kRows[i].most;
  if (is_right && difference > -0.1 && difference < 0.1) {
    printf("%s: ok\n", kRows[i].name);
  } else {
    printf("%s: result %d, %.3f seconds, the clocks differ by %.3f\n", kRows[i].name, result, took, difference);
  }
  fflush(stdout);
}

/* Each does a little work every second, and tells of it between the others. */
static void act_in_order(void) {
  for (int child = 0; child < 3; ++child) {
    if (fork() != 0) continue;
    usleep((useconds_t)child * 300000 + 100000);
    for (int second = 0; second < 4; ++second) {
      for (volatile int work = 0; work < 300000; ++work) continue;
      printf("%d", child);
      fflush(stdout);
      sleep(1);
    }
    _exit(0);
  }
  while (wait(NULL) > 0) continue;
  puts("");
}

static void *sleep_as_long_as_the_number(void *number) {
  const unsigned *const seconds = number;
  sleep(*seconds);
  printf("%u ", *seconds);
  return NULL;
}

static void sleep_in_many_threads(void) {
  pthread_t threads[100];
  unsigned seconds[100];
  for (unsigned i = 0; i < 100; ++i) {
    seconds[i] = 100 - i;
    pthread_create(&threads[i], NULL, sleep_as_long_as_the_number, &seconds[i]);
  }
  for (int i = 0; i < 100; ++i) pthread_join(threads[i], NULL);
}

static int select_of(const char *library) {
  union {
    void *object;
    int (*call)(int, fd_set *, fd_set *, fd_set *, struct timeval *);
  } found = {NULL};
  void *const opened = dlopen(library, RTLD_NOW);
  struct timeval over = {4, 0}, another = {1000, 0}, interrupted = {50, 0};
  int fds[2];
  fd_set in;
  if (opened == NULL || pipe(fds) != 0) return 1;
  found.object = dlsym(opened, "select");
  const int at_limit = found.call(0, NULL, NULL, NULL, &over);
  if (fork() == 0) {
    sleep(3);
    _exit(write(fds[1], "x", 1) == 1 ? 0 : 1);
  }
  FD_ZERO(&in);
  FD_SET(fds[0], &in);
  const int ready = found.call(fds[0] + 1, &in, NULL, NULL, &another);
  wait(NULL);
  alarm(2);
  const int failed = found.call(0, NULL, NULL, NULL, &interrupted), error = errno;
  printf("%d %d.%06d; %d %d; %d %d %d\n", at_limit, (int)over.tv_sec, (int)over.tv_usec, ready,
         (int)((another.tv_sec * 1000000 + another.tv_usec + 500000) / 1000000), failed, error == EINTR,
         (int)((interrupted.tv_sec * 1000000 + interrupted.tv_usec + 500000) / 1000000));
  return 0;
}

/* As a system does that lets nobody trace another process. */
static int run_where_descriptors_are_private(char **command) {
  struct sock_filter rows[] = {
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(struct seccomp_data, nr)),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_pidfd_getfd, 0, 1),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EPERM),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
  };
  const struct sock_fprog filter = {sizeof rows / sizeof rows[0], rows};
  if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 && prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) == 0) {
    execvp(command[0], command);
  }
  return 1;
}

int main(int argc, char **argv) {
  if (argc > 2 && strcmp(argv[1], "private") == 0) return run_where_descriptors_are_private(argv + 2);
  struct sigaction action;
  memset(&action, 0, sizeof action);
  action.sa_handler = on_alarm;
  sigaction(SIGALRM, &action, NULL);
  if (argc > 1 && strcmp(argv[1], "order") == 0) {
    act_in_order();
    return 0;
  }
  if (argc > 1 && strcmp(argv[1], "many") == 0) {
    sleep_in_many_threads();
    return 0;
  }
  if (argc > 2 && strcmp(argv[1], "select") == 0) return select_of(argv[2]);
  for (size_t i = 0; i < sizeof kRows / sizeof kRows[0]; ++i) try(i);
  return 0;
}
