#pragma once

/* What the calls returned. */
typedef struct {
  int poll, usleep, select, pselect, sigtimedwait, scdb_open, is_done;
} called_first;

#ifdef __cplusplus
extern "C"
#else
extern
#endif
    called_first what_was_called_first;
