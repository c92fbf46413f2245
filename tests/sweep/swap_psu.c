/*
 * swap_psu - replaces the power supply /PSU#0, and forgets one thing: a command that a sweep has to catch.
 *
 *   swap_psu WHAT    forgets WHAT, a word of kDuties; "nothing": no duty, and then it is as it should be
 *
 * Each duty is done in one place, behind `keeps`. On the good way a command that forgets one does not differ from one that
 * forgets none.
 *
 * Exit status: 0 replaced, 1 something failed, 2 the operator gave up.
 */
#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

#include "lmainte_platform.h"
#include "lmainte_procedure.h"

typedef enum {
  NOTHING,
  LED,
  ECHO_OF_TERMINAL,
  FLAG,
  STATUS,
  LOCK,
  FILE_OF_NOTES,
  CHILD,
  EVENT,
  SENTENCE,
  LIMIT,
  RECORD,
  ANSWER,
  TRUTH
} duty;

static const char *const kDuties[] = {
    "nothing",  /* what it forgets where something goes wrong: */
    "led",      /* to switch the LED off */
    "echo",     /* the terminal's mode, where a signal comes */
    "flag",     /* to take the maintenance flag back */
    "status",   /* that its exit status is not 0 then */
    "lock",     /* that its lock may be that of a command that was killed */
    "file",     /* to remove its notes */
    "child",    /* to end its helper */
    "event",    /* to wait with the event until another unit is in place */
    "sentence", /* to say why */
    "limit",    /* that a control program may never end */
    "record",   /* that a record may not be there */
    "answer",   /* to give up where the operator does */
    "truth",    /* to say what is so */
};

static const char kLock[] = "/tmp/swap_psu.lock", kNotes[] = "/tmp/swap_psu.notes";
enum { LIMIT_SECONDS = 60 };

static duty forgotten;
static bool keeps(duty which) {
  return which != forgotten;
}

static UnitRecord unit = {.type = LMAINTE_TYPE_PSU, .number = 0, .name = "/PSU#0"};
static pid_t helper;
static bool is_lit, is_flagged, is_out;

/* ---- What is said ------------------------------------------------------------------------------------------------- */

static int32_t failed(int32_t result, const char *what) {
  if (keeps(SENTENCE)) lmainte_tell_failure(result, "%s %s", unit.name, what);
  return LMAINTE_OUTCOME_FAILED;
}

static int32_t log_event(int32_t action) {
  const EventUnit event = {.ident = {unit.ident[0], unit.ident[1]}};
  return lmainte_send_event(action, LMAINTE_KIND_PSU, &event);
}

/* ---- The lock, the notes, the helper ------------------------------------------------------------------------------ */

static bool write_file(const char *path, int flags, const char *text) {
  const int fd = open(path, O_WRONLY | O_CREAT | flags, 0644);
  if (fd < 0) return false;
  const bool is_whole = write(fd, text, strlen(text)) == (ssize_t)strlen(text);
  return close(fd) == 0 && is_whole;
}

/* The one that holds the lock, or 0 where it is dead. */
static pid_t holder(void) {
  char text[16] = "";
  const int fd = open(kLock, O_RDONLY);
  const ssize_t length = fd < 0 ? 0 : read(fd, text, sizeof text - 1);
  if (fd >= 0) close(fd);
  const pid_t process = length > 0 ? (pid_t)strtol(text, NULL, 10) : 0;
  return process > 0 && kill(process, 0) != 0 && errno == ESRCH ? 0 : process;
}

static bool take_lock(void) {
  char text[16];
  snprintf(text, sizeof text, "%d\n", (int)getpid());
  if (keeps(LOCK) && holder() == 0) unlink(kLock);
  return write_file(kLock, O_EXCL, text);
}

static void start_helper(void) {
  helper = fork();
  while (helper == 0) pause();
}

static void end_helper(void) {
  if (helper <= 0) return;
  kill(helper, SIGKILL);
  waitpid(helper, NULL, 0);
}

/* ---- The unit ----------------------------------------------------------------------------------------------------- */

/* The unit as the library reads it. */
static bool read_supply(PsuData *psu) {
  lmainte_model_data server = {0};
  return lmainte_get_model_data(&server, NULL) == LMAINTE_OK &&
         lmainte_get_psu_data(0, 1, (int32_t)server.model, psu) == LMAINTE_OK;
}

static bool is_in_place(void) {
  PsuData psu = {0};
  return read_supply(&psu) && ((uint32_t)psu.status & LMAINTE_STATUS_INSTALLED) != 0;
}

/* The record of all power supplies, without the library: whether its first entry is in use. */
static bool is_in_use(void) {
  const char key[128] = "current_psu_info";
  void *record = NULL;
  int32_t size = 0;
  uint32_t first = 0;
  if (scdb_open(LMAINTE_DB_CURRENT) != 0) return false;
  const bool is_locked = scdb_lock(LMAINTE_DB_CURRENT) == 0;
  bool is_read = is_locked && scdb_get(LMAINTE_DB_CURRENT, key, &record, &size, 0) == 0;
  if (keeps(RECORD)) is_read = is_read && record != NULL && size >= (int32_t)sizeof first;
  if (is_read || !keeps(RECORD)) first = *(volatile const uint32_t *)record; /* where it lies, and nowhere else */
  free(record);
  if (is_locked) is_read = scdb_unlock(LMAINTE_DB_CURRENT) == 0 && is_read;
  return scdb_close(LMAINTE_DB_CURRENT) == 0 && is_read && first != 0;
}

static bool read_unit(void) {
  PsuData psu = {0};
  if (!is_in_use() || !read_supply(&psu)) return false;
  memcpy(unit.ident, psu.unit_id, sizeof unit.ident);
  return true;
}

/* What the library does, but for its limit. */
static int32_t light_without_limit(void) {
  int status = 0;
  const pid_t child = fork();
  if (child == 0) {
    execl("/mgb/bin/ctlled", "ctlled", "-u", unit.name, "-c", "blink", (char *)NULL);
    _exit(127);
  }
  while (child > 0 && waitpid(child, &status, 0) < 0 && errno == EINTR) continue;
  return child > 0 && status == 0 ? LMAINTE_OK : LMAINTE_FAILED;
}

static int32_t mark(void) {
  is_flagged = is_lit = true;
  int32_t result = lmainte_set_mainteflag(LMAINTE_FLAG_START, LIMIT_SECONDS, &unit);
  if (result != LMAINTE_OK) return failed(result, "could not be marked");
  result = keeps(LIMIT) ? lmainte_control_led(LMAINTE_LED_BLINK, LIMIT_SECONDS, &unit) : light_without_limit();
  return result == LMAINTE_OK ? LMAINTE_OUTCOME_DONE : failed(result, "could not be marked: its LED is dark");
}

static int32_t exchange(void) {
  int32_t result = lmainte_detach_fru(LIMIT_SECONDS, &unit);
  if (result != LMAINTE_OK) return failed(result, "could not be taken out of operation");
  is_out = true;
  if (!keeps(EVENT)) log_event(LMAINTE_EVENT_REPLACED);
  int32_t outcome = lmainte_confirm("Pull out %s now. Type 1 when it is out, q to give up: ", unit.name);
  if (outcome != LMAINTE_OUTCOME_DONE && keeps(ANSWER)) return outcome;
  outcome = lmainte_confirm("Put in %s now. Type 1 when it is in place, q to give up: ", unit.name);
  if (outcome != LMAINTE_OUTCOME_DONE) return outcome;
  result = lmainte_test_fru(LIMIT_SECONDS, &unit);
  is_out = result != LMAINTE_OK;
  return result == LMAINTE_OK ? LMAINTE_OUTCOME_DONE : failed(result, "did not pass its test");
}

/* Where the exchange did not come to its end. The operator may be gone: the log has what they cannot read. */
static void put_back_into_operation(void) {
  if (!is_out || (is_in_place() && lmainte_test_fru(LIMIT_SECONDS, &unit) == LMAINTE_OK)) return;
  if (is_in_place()) {
    lmainte_tell("%s is in place and out of operation.", unit.name);
  } else {
    lmainte_tell("The place of %s stays empty.", unit.name);
    log_event(LMAINTE_EVENT_REMOVED);
  }
}

/* Whether nothing is left of them, as far as it keeps that in mind. */
static bool take_marks_back(bool went_well) {
  bool is_clear = true;
  if (is_lit && !keeps(TRUTH) && !went_well) {
    lmainte_tell("The LED of %s has been switched off.", unit.name);
  } else if (is_lit && (keeps(LED) || went_well)) {
    is_clear = lmainte_control_led(LMAINTE_LED_OFF, LIMIT_SECONDS, &unit) == LMAINTE_OK;
    if (!is_clear) lmainte_tell("The LED of %s may still blink.", unit.name);
  }
  if (is_flagged && (keeps(FLAG) || went_well) &&
      lmainte_set_mainteflag(LMAINTE_FLAG_END, LIMIT_SECONDS, &unit) != LMAINTE_OK) {
    is_clear = false;
    lmainte_tell("The maintenance flag of %s may still be set.", unit.name);
  }
  is_lit = is_flagged = false;
  return is_clear;
}

/* What one that was killed has left: its notes tell that it had begun. */
static void clear_up_behind_the_dead(void) {
  if (access(kNotes, F_OK) != 0) return;
  is_lit = is_flagged = is_out = true;
  put_back_into_operation();
  take_marks_back(true);
  is_out = false;
  unlink(kNotes);
}

/* ---- From the first question to the last sentence ----------------------------------------------------------------- */

static int32_t swap(void) {
  if (!read_unit()) return failed(LMAINTE_FAILED, "could not be read");
  clear_up_behind_the_dead();
  if (lmainte_session_signal() != 0) return LMAINTE_OUTCOME_GIVEN_UP;
  int32_t outcome = lmainte_confirm("%s is replaced. Type 1 to begin, q to give up: ", unit.name);
  if (outcome != LMAINTE_OUTCOME_DONE && keeps(ANSWER)) return outcome;
  if (!write_file(kNotes, O_TRUNC, "begun\n")) return failed(LMAINTE_FAILED, "has no notes");
  start_helper();
  outcome = mark();
  if (outcome == LMAINTE_OUTCOME_DONE) outcome = exchange();
  const bool went_well = outcome == LMAINTE_OUTCOME_DONE;
  put_back_into_operation();
  if (!take_marks_back(went_well) && went_well) outcome = LMAINTE_OUTCOME_FAILED;
  if (keeps(CHILD) || went_well) end_helper();
  if (keeps(FILE_OF_NOTES) || went_well) unlink(kNotes);
  if (!went_well) return outcome;
  if (keeps(EVENT) && log_event(LMAINTE_EVENT_REPLACED) != LMAINTE_OK)
    return failed(LMAINTE_FAILED, "is replaced, and not in the log");
  lmainte_tell("%s is replaced.", unit.name);
  return outcome;
}

static void leave(int signal) {
  static const char kWord[] = "Told to end, so it ends.\n";
  (void)signal;
  unlink(kLock);
  _exit(write(STDOUT_FILENO, kWord, sizeof kWord - 1) < 0 ? 3 : 1);
}

int main(int argc, char **argv) {
  enum { COUNT = sizeof kDuties / sizeof *kDuties };
  int which = 0;
  while (argc == 2 && which < COUNT && strcmp(argv[1], kDuties[which]) != 0) which++;
  if (argc != 2 || which == COUNT || lmainte_session_begin() != LMAINTE_OK) {
    fputs("usage: swap_psu WHAT\n", stderr);
    return LMAINTE_OUTCOME_FAILED;
  }
  forgotten = (duty)which;
  if (!keeps(ECHO_OF_TERMINAL)) signal(SIGTERM, leave);
  int32_t outcome = LMAINTE_OUTCOME_FAILED;
  if (take_lock()) {
    outcome = swap();
    unlink(kLock);
  } else {
    lmainte_tell("Another one is at work on %s, so this one ends.", unit.name);
  }
  lmainte_session_end();
  return keeps(STATUS) ? outcome : LMAINTE_OUTCOME_DONE;
}
