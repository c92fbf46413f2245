/*
 * lmainte_host.h - what the host platform adds to lmainte_platform.h
 *
 * For the author of a maintenance command that runs in a box, a service processor in a folder, instead of on a service
 * processor. Link the command with liblmainte and with liblmainte_host, which has every function of lmainte_platform.h.
 *
 * A command started by `spbox run DIR -- COMMAND` finds the box at the paths of a service processor: /mgb and /tmp. A unit
 * test has no such root: there SPBOX_ROOT=DIR in the environment leads the platform to DIR/mgb and DIR/tmp. The library
 * itself and the control programs keep to /mgb and /tmp.
 *
 *   mgb/db/0 .. mgb/db/5   the configuration databases
 *   mgb/log/trace          the trace: the last 65536 records
 *   mgb/log/events         the log
 *   mgb/cli/etc            the time files
 *   tmp/.qe3               the marker file of the box's model
 */
#ifndef LMAINTE_HOST_H
#define LMAINTE_HOST_H

#ifdef __cplusplus
extern "C" {
#endif

/* The environment variable that names the box's folder. Unset or empty: the box is under "/". */
#define LMAINTE_HOST_ROOT "SPBOX_ROOT"

/* ---- The operator's choice --------------------------------------------------------------------------------------- */

/*
 * lmainte_ask_select and cli_ask_select
 *
 * first   how many choices there are: 1 or more. The operator answers with a number from 1 to first.
 * second  int32_t *: receives that number. Untouched unless the result is LMAINTE_HOST_CHOSEN.
 *
 *   int32_t choice = 0;
 *   if (lmainte_ask_select(count, &choice, "Select a unit [1-%d, q to give up]: ", count) == LMAINTE_HOST_CHOSEN) ...
 *
 * Any other answer is told what is accepted and asked again: an empty line, a word, a number out of range, a line too
 * long. Spaces around the answer do not count. The answer is read from standard input up to its line's end and not a byte
 * further, and around standard input's own buffer: do not read it through stdio as well.
 */
enum {
  LMAINTE_HOST_CHOSEN = 0,       /* second holds the choice */
  LMAINTE_HOST_GAVE_UP = 1,      /* the operator answered q */
  LMAINTE_HOST_END_OF_INPUT = 2, /* the input ended before an answer: Ctrl-D, or the terminal is gone */
  LMAINTE_HOST_INTERRUPTED = 3,  /* a signal handler without SA_RESTART ran: clean up, or ask again */
  LMAINTE_HOST_ASK_FAILED = -1   /* a bad argument; the prompt cannot be written, or the answer not be read.
                                    lmainte_ask_select says the same where it cannot prepare the terminal */
};

/* ---- Results of the configuration database ----------------------------------------------------------------------- */

/*
 * What the scdb functions and lcmn_scdb_put return when they fail. liblmainte turns them all into its own results; the
 * trace shows which one it was.
 */
enum {
  LMAINTE_HOST_DB_ARGUMENT = -1, /* no such database, a null pointer, a bad key or size, flags that are not 0 */
  LMAINTE_HOST_DB_SESSION = -2,  /* opened or locked twice; not open or not locked */
  LMAINTE_HOST_DB_BUSY = -3,     /* another process has held the lock for 3 seconds */
  LMAINTE_HOST_DB_ABSENT = -4,   /* there is no such record */
  LMAINTE_HOST_DB_STORAGE = -5 /* the files cannot be read or written, or the process that opened them is the parent */
};

#ifdef __cplusplus
}
#endif

#endif
