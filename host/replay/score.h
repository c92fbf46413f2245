/* What a command is to be answered: the calls of one run of a recording, in their order, as spbox writes them for the
   platform that answers from them; and where the command has got to. It is a file, mapped by both: the head, the calls,
   and the bytes to which they lead. */
#pragma once

#include <stdint.h>

#include "include/lmainte_record.h"

#ifdef __cplusplus
extern "C" {
#endif

/* In the root of a command. */
#define REPLAY_SCORE "/mgb/lib/score"
#define REPLAY_LIBRARY "/mgb/lib/liblmainte_replay.so"

/* The exit status of a command that is ended where it differs. */
enum { REPLAY_ENDED = 125 };

enum { REPLAY_LONGEST_TEXT = LMAINTE_RECORD_LONGEST_TEXT };

/* A call: its kind and words are those of lmainte_record.h. Of a program `result` is the status with which it ended,
   and `third` is 1 where it has ended. `is_made` is 1 of an answer that was given before its turn. Bytes are in the byte order of this machine. */
typedef struct {
  uint32_t kind, process;
  int32_t result;
  uint32_t first, second, third;
  uint32_t text, text_size, content, content_size; /* where in the file, and how many bytes */
  uint32_t seconds, nanoseconds;                   /* how long it took */
  uint32_t is_made;
} replay_call;

/* How a command has left the recording. REPLAY_RAN_OUT: it goes on behind the last recorded call of a command that has no
   end. REPLAY_UNANSWERED: it asks, and the recorded command went on without an answer, which a signal has done. */
enum { REPLAY_AGREES, REPLAY_DIFFERS, REPLAY_ONE_MORE, REPLAY_RAN_OUT, REPLAY_UNANSWERED };

typedef struct {
  uint32_t count;     /* of the calls, which follow the head */
  uint32_t next;      /* how many the command has made */
  uint32_t has_end;   /* the recorded command has ended: nothing follows its last call */
  uint32_t departure; /* REPLAY_AGREES ... */
  uint32_t process;   /* the recorded command's own; others are its children */
  uint32_t in_child;  /* 1: a child of the command made a call that no child is recorded to have made there */
  uint32_t at;        /* of the contents of both calls, the first byte that differs; behind both where none does */
  replay_call came;   /* the call of the command that is not the recorded one */
  char text[REPLAY_LONGEST_TEXT]; /* its text */
  uint8_t word[4];                /* of its content, from `at` on */
} replay_score;

#ifdef __cplusplus
}
#endif
