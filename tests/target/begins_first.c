/* A library that begins before the platform does, and calls it. */
#include "tests/target/begins_first.h"

#include <errno.h>
#include <poll.h>
#include <signal.h>
#include <stddef.h>
#include <sys/select.h>
#include <time.h>
#include <unistd.h>

#include "lmainte_platform.h"

called_first what_was_called_first;

__attribute__((constructor)) static void call(void) {
  const struct timespec moment = {0, 1000};
  struct timeval limit = {0, 1};
  sigset_t none;
  sigemptyset(&none);
  what_was_called_first.poll = poll(NULL, 0, 1);
  what_was_called_first.usleep = usleep(1);
  what_was_called_first.select = select(0, NULL, NULL, NULL, &limit);
  what_was_called_first.pselect = pselect(0, NULL, NULL, NULL, &moment, NULL);
  what_was_called_first.sigtimedwait = sigtimedwait(&none, NULL, &moment);
  what_was_called_first.scdb_open = scdb_open(1);
  what_was_called_first.is_done = 1;
}
