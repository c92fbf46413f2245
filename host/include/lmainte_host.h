/*
 * lmainte_host.h - what the host platform adds to lmainte_platform.h
 *
 * For the author of a maintenance command that runs in a box, a service processor in a folder, instead of on a service
 * processor. Link the command with liblmainte and with liblmainte_host, which has every function of lmainte_platform.h.
 *
 * A command that `spbox run DIR -- COMMAND` starts finds the box at the paths of a service processor: /mgb and /tmp. A
 * unit test does not have these paths: SPBOX_ROOT=DIR in the environment leads the platform to DIR/mgb and DIR/tmp. The
 * library itself and the control programs use /mgb and /tmp in any case.
 *
 *   mgb/db                 the configuration databases
 *   mgb/log/trace          the trace: the last 65536 records
 *   mgb/log/calls          what passes between commands and this platform: the last 8192 records
 *   mgb/log/events         the log
 *   mgb/run                the daemons' sockets
 *   mgb/cli/etc            the time files
 *   tmp/.qe3               the marker file of the box's model
 *
 * The trace is a file in memory: when it is emptied while the command runs, the kernel sends SIGBUS. The platform handles this
 * as soon as it is loaded: the command goes on, and its trace is lost. A SIGBUS for another reason has its usual effect. A
 * command that sets a handler of its own for SIGBUS gets both.
 */
#ifndef LMAINTE_HOST_H
#define LMAINTE_HOST_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The environment variable that names the box's folder. When it is unset or empty, the box is at "/". */
#define LMAINTE_HOST_ROOT "SPBOX_ROOT"

/*
 * The environment variable in which `spbox run` gives a command the words that run a program in its box, ready for a
 * shell, such as "spbox run box". A command that advises its operator to type a program's name writes them before it.
 * On a service processor it is unset, and in a play on a box of its own it is empty. There the program's name is enough.
 */
#define LMAINTE_HOST_RUN "SPBOX_RUN"

/* ---- The operator's choice --------------------------------------------------------------------------------------- */

/*
 * lmainte_ask_select and cli_ask_select work as lmainte.h says:
 *
 *   int32_t choice = 0;
 *   if (lmainte_ask_select(count, &choice, "Select a unit [1-%d, q to give up]: ", count) == LMAINTE_ASK_CHOSEN) ...
 *
 * The operator answers with a number from 1 to count, or with q. After any other answer the operator is told what is
 * accepted, and asked again: after an empty line, a word, a number out of range, a line too long. Spaces around the answer
 * do not count. The function reads the descriptor of standard input up to the end of the line and not a byte further. It
 * does not use the buffer of stdin: do not read it through stdio as well.
 *
 * Before lmainte.h had names for the results, they had these.
 */
enum {
  LMAINTE_HOST_CHOSEN = 0,       /* LMAINTE_ASK_CHOSEN */
  LMAINTE_HOST_GAVE_UP = 1,      /* LMAINTE_ASK_GAVE_UP */
  LMAINTE_HOST_END_OF_INPUT = 2, /* LMAINTE_ASK_END_OF_INPUT */
  LMAINTE_HOST_INTERRUPTED = 3,  /* LMAINTE_ASK_INTERRUPTED */
  LMAINTE_HOST_ASK_FAILED = -1   /* LMAINTE_ASK_FAILED */
};

/* ---- Messages to daemons ----------------------------------------------------------------------------------------- */

/*
 * A message for lcmn_send, lcmn_receive and lmainte_ipc_communicate: a head in the machine's byte order, followed by what
 * the command defines.
 *
 *   struct { lmainte_host_message head; uint32_t unit_id[2]; } request = {{sizeof request, ...}, ...};
 *   union { lmainte_host_message head; uint8_t bytes[LMAINTE_HOST_MESSAGE_MOST]; } reply;
 *   const int32_t channel = lmainte_host_open_channel("monitor");
 *   if (lmainte_ipc_communicate(&request, channel, 5, &reply) == LMAINTE_OK) ...
 *   lmainte_host_close_channel(channel);
 */
typedef struct lmainte_host_message {
  uint32_t size;    /* bytes of the whole message, this head included: from 16 to LMAINTE_HOST_MESSAGE_MOST */
  uint32_t daemon;  /* the daemon's number; liblmainte records it with the command */
  uint32_t command; /* the request; a reply has that of its request */
  /* a number of the caller's; a reply has that of its request. Count it up: then a late reply, which comes after the next
     request was sent, is dropped and not taken for the reply to the next request */
  uint32_t sequence;
} lmainte_host_message;

/* The largest size of a message in bytes. lcmn_receive is told no size: its buffer must have room for this. */
#define LMAINTE_HOST_MESSAGE_MOST 1024

/* The largest number of channels that a process may have open at the same time. */
#define LMAINTE_HOST_CHANNELS_MOST 16

/*
 * Opens a channel to a daemon by its name, such as "monitor", for lcmn_send, lcmn_receive and lmainte_ipc_communicate.
 *
 * Returns the channel's descriptor, which execve closes; close it with lmainte_host_close_channel, not with close. On
 * failure returns -1 with errno:
 *   EINVAL        a null pointer; an empty name, one with a slash or a dot in front, one of 64 characters or more
 *   ENOENT, ECONNREFUSED  no such daemon runs
 *   EAGAIN        too many others wait for the daemon
 *   EACCES        the box or the daemon is another user's
 *   EMFILE        LMAINTE_HOST_CHANNELS_MOST channels are open, or the descriptor would not fit into an fd_set
 *   ENFILE, ENOMEM  the system has no descriptor or no memory left
 *
 * When two commands are in a box and the first one ends, the daemon of the second one takes over. The channels of the second
 * command end then; lcmn_select and lcmn_receive report it (LMAINTE_HOST_ONE_GONE, ECONNRESET). Close the channel and open it
 * anew. For a moment no daemon runs: try again after some milliseconds.
 *
 * The daemon has room for 64 channels of all commands in the box, fewer where its descriptors are limited. A channel beyond
 * that can be opened, and ends at once in the same way. Try again when another channel was closed.
 */
int32_t lmainte_host_open_channel(const char *daemon);

/* Closes a channel; messages that were not received are lost. Returns 0, or -1 with errno EBADF for another descriptor. */
int32_t lmainte_host_close_channel(int32_t fd);

/*
 * These functions of lmainte_platform.h use channels. None of them ends the process when a daemon is gone.
 *
 * lcmn_send     does not wait. Returns the bytes sent, or -1 with errno: EINVAL a null message; EBADF no channel; EMSGSIZE
 *               a size out of range; EAGAIN the daemon has not read many earlier messages; EPIPE the daemon is gone
 * lcmn_receive  does not wait. Returns the message's bytes, or -1 with errno, the buffer untouched: EINVAL a null buffer;
 *               EBADF no channel; EAGAIN nothing has come; EBADMSG what came is no message or not as long as it says;
 *               ECONNRESET the daemon is gone
 * lcmn_select   watches all channels of the process. A signal does not shorten the wait; limit is not changed. Returns how
 *               many are ready, 0 when the time is over, or -1 with errno: EINVAL a null pointer, a set for writing or
 *               exceptions, a limit below 0; ENOTCONN no channel is open; EBADF a channel was closed with close
 *
 * lcmn_select's two status bytes:
 */
enum {
  LMAINTE_HOST_READY = 0,     /* first: a channel is ready */
  LMAINTE_HOST_TIME_OVER = 1, /* first: nothing came in time */
  LMAINTE_HOST_ALL_THERE = 0, /* second: every channel still has its daemon */
  /* second: a daemon is gone. Its channel counts as ready; receiving from it fails when its last messages are read */
  LMAINTE_HOST_ONE_GONE = 1
};

/* ---- The box's daemon -------------------------------------------------------------------------------------------- */

/*
 * "monitor", number 1, runs as long as the command that `spbox run` started. It answers the requests below. `spbox daemon`
 * makes it late, silent, dead or garbled. A request is a head, followed by the words that its line names; the reply is a
 * lmainte_host_reply.
 */
#define LMAINTE_HOST_MONITOR "monitor"
#define LMAINTE_HOST_MONITOR_NUMBER 1

enum {
  LMAINTE_HOST_ASK_STATUS = 1, /* how is the daemon? Words: seconds since its start, requests before, model code */
  LMAINTE_HOST_ASK_UNIT = 2,   /* unit_id[2]: what state is the unit in? Word 0: status word, LMAINTE_STATUS_... */
  LMAINTE_HOST_ASK_POWER = 3,  /* unit_id[2]: has the unit power? Word 0: 1 installed and not detached, else 0 */
  LMAINTE_HOST_SAVE_EVENT = 4  /* 12 words, an event as lmainte_send_event makes it: put it into the log */
};

enum {
  LMAINTE_HOST_ANSWERED = 0,
  LMAINTE_HOST_NO_COMMAND = 1,  /* there is no such request */
  LMAINTE_HOST_BAD_REQUEST = 2, /* its size is not the command's, or it is for another daemon */
  LMAINTE_HOST_NO_UNIT = 3,     /* the box has no such unit */
  LMAINTE_HOST_BOX_FAILED = 4   /* a database, the unit's record or the log cannot be read or written */
};

typedef struct lmainte_host_reply {
  lmainte_host_message head; /* command and sequence of the request */
  int32_t result;            /* LMAINTE_HOST_ANSWERED ... */
  uint32_t word[3];          /* as the command says; the rest 0 */
} lmainte_host_reply;

/* ---- The log ---------------------------------------------------------------------------------------------------- */

/* What mgblog_save takes: the head of an event of maintenance, and the bytes of each. `spbox log` shows in words what
 * lmainte_send_event saves, and what liblmainte_procedure says of that which a procedure left undone
 * (LMAINTE_LEFT_... of lmainte_procedure.h). */
enum { LMAINTE_HOST_EVENT_HEAD = 0x00030000, LMAINTE_HOST_EVENT_SIZE = 48 };

/* ---- Results of the configuration database ----------------------------------------------------------------------- */

/*
 * The results of the scdb functions and lcmn_scdb_put when they fail. liblmainte turns all of them into its own results;
 * the trace shows the original one.
 */
enum {
  LMAINTE_HOST_DB_ARGUMENT = -1, /* no such database, a null pointer, a bad key or size, flags that are not 0 */
  LMAINTE_HOST_DB_SESSION = -2,  /* opened or locked twice; not open or not locked */
  LMAINTE_HOST_DB_BUSY = -3,     /* another process has held the lock for 3 seconds */
  LMAINTE_HOST_DB_ABSENT = -4,   /* there is no such record */
  LMAINTE_HOST_DB_STORAGE = -5   /* the files cannot be read or written, or the parent process opened them */
};

#ifdef __cplusplus
}
#endif

#endif
