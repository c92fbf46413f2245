/* The platform that answers from a recording. It is preloaded, so that it stands before the platform with which a
   command is linked; the trace goes on to that one. At the first call that is not the recorded one the command is
   ended. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include "host/include/lmainte_host.h"
#include "host/replay/score.h"
#include "include/lmainte.h"
#include "include/lmainte_platform.h"
#include "include/lmainte_record.h"

#define EXPORT __attribute__((visibility("default")))

enum { KEY_ROOM = LMAINTE_RECORD_LONGEST_NAME, NO_ANSWER = -2 };

static replay_score *g_score;
static size_t g_size;
static __typeof__(execve) *g_execve;
static pid_t g_process;    /* the command's own; a child of fork has another one */
static int g_channel = -1; /* the one of the last request */

__attribute__((constructor)) static void find_score(void) {
  struct stat status;
  const int saved = errno, file = open(REPLAY_SCORE, O_RDWR | O_CLOEXEC);
  *(void **)&g_execve = dlsym(RTLD_NEXT, "execve");
  g_process = getpid();
  if (file >= 0 && fstat(file, &status) == 0 && status.st_size >= (off_t)sizeof *g_score) {
    void *const at = mmap(NULL, (size_t)status.st_size, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    g_size = (size_t)status.st_size;
    if (at != MAP_FAILED) g_score = at;
  }
  if (file >= 0) close(file);
  errno = saved;
}

static replay_call *call_at(uint32_t number) {
  return (replay_call *)(g_score + 1) + number;
}

/* The file is spbox's; but the command may write into it. */
static const void *bytes_at(uint32_t at, uint32_t size) {
  return at <= g_size && size <= g_size - at ? (const uint8_t *)g_score + at : NULL;
}

static size_t min(size_t one, size_t other) {
  return one < other ? one : other;
}

/* A call as the command makes it. */
typedef struct {
  uint32_t kind, first, second, third;
  const char *text;
  size_t text_size;
  const void *content;
  size_t content_size;
} made_call;

__attribute__((noreturn)) static void leave(uint32_t departure, const made_call *made, uint32_t at) {
  uint32_t agrees = REPLAY_AGREES;
  if (__atomic_compare_exchange_n(&g_score->departure, &agrees, departure, 0, __ATOMIC_SEQ_CST, __ATOMIC_SEQ_CST) &&
      made != NULL) {
    replay_call *const came = &g_score->came;
    if (getpid() != g_process) g_score->in_child = 1;
    const size_t text = made->text_size < REPLAY_LONGEST_TEXT ? made->text_size : REPLAY_LONGEST_TEXT;
    came->kind = made->kind;
    came->first = made->first;
    came->second = made->second;
    came->third = made->third;
    came->text_size = (uint32_t)text;
    came->content_size = (uint32_t)made->content_size;
    if (text > 0) memcpy(g_score->text, made->text, text);
    g_score->at = at;
    for (size_t i = 0; i < sizeof g_score->word && at + i < made->content_size; ++i)
      g_score->word[i] = ((const uint8_t *)made->content)[at + i];
  }
  _exit(REPLAY_ENDED);
}

static size_t first_difference(const uint8_t *one, size_t one_size, const uint8_t *other, size_t other_size) {
  size_t at = 0;
  while (at < one_size && at < other_size && one[at] == other[at]) ++at;
  return at;
}

static bool is_same_text(const replay_call *call, const made_call *made) {
  const char *const text = bytes_at(call->text, call->text_size);
  if (call->kind == LMAINTE_RECORD_NAME) return true; /* that is the answer */
  return text != NULL && call->text_size == made->text_size &&
         (made->text_size == 0 || memcmp(text, made->text, made->text_size) == 0);
}

/* The first word of other calls is an answer, or a descriptor, which may be another one. */
static bool has_asked_first(uint32_t kind) {
  return (kind >= LMAINTE_RECORD_OPEN && kind <= LMAINTE_RECORD_QUESTION) || kind == LMAINTE_RECORD_LOG ||
         kind == LMAINTE_RECORD_NAME;
}

/* What is written into files may hold the number of the process. */
static bool has_asked_content(uint32_t kind) {
  return kind == LMAINTE_RECORD_PUT || kind == LMAINTE_RECORD_LOG || kind == LMAINTE_RECORD_SEND;
}

static bool is_same_call(const replay_call *call, const made_call *made) {
  if (call->kind != made->kind || !is_same_text(call, made)) return false;
  if (has_asked_first(call->kind) && call->first != made->first) return false;
  return call->kind != LMAINTE_RECORD_NAME || (call->second == made->second && call->third == made->third);
}

static uint32_t difference_of_contents(const replay_call *call, const made_call *made) {
  const uint8_t *const content = bytes_at(call->content, call->content_size);
  if (content == NULL || !has_asked_content(call->kind)) return UINT32_MAX;
  const size_t at = first_difference(content, call->content_size, made->content, made->content_size);
  return at == call->content_size && at == made->content_size ? UINT32_MAX : (uint32_t)at;
}

/* As the recorder cuts it. */
static size_t text_size(const char *text) {
  return text == NULL ? 0 : strnlen(text, LMAINTE_RECORD_LONGEST_TEXT);
}

/* Behind this call, and the answers that were given before their turn. */
static void go_on_behind(uint32_t number) {
  do {
    ++number;
  } while (number < g_score->count && call_at(number)->is_made != 0);
  __atomic_store_n(&g_score->next, number, __ATOMIC_SEQ_CST);
}

/* The recorded call. Does not return where it is another one. */
static const replay_call *recorded(const made_call *made) {
  if (g_score == NULL || g_score->departure != REPLAY_AGREES) _exit(REPLAY_ENDED);
  const uint32_t next = __atomic_load_n(&g_score->next, __ATOMIC_SEQ_CST);
  if (next >= g_score->count) leave(g_score->has_end != 0 ? REPLAY_ONE_MORE : REPLAY_RAN_OUT, made, 0);
  const replay_call *const call = call_at(next);
  if (!is_same_call(call, made)) leave(REPLAY_DIFFERS, made, UINT32_MAX);
  const uint32_t at = difference_of_contents(call, made);
  if (at != UINT32_MAX) leave(REPLAY_DIFFERS, made, at);
  if (call->process == g_score->process && getpid() != g_process) g_score->in_child = 1;
  go_on_behind(next);
  return call;
}

static int32_t session(uint32_t kind, uint32_t db_id) {
  const made_call made = {.kind = kind, .first = db_id};
  return recorded(&made)->result;
}

static int32_t result_with_errno(const replay_call *call, uint32_t error) {
  if (call->result < 0 && error != 0) errno = (int)error;
  return call->result;
}

/* ---- Databases, log, names ---- */

EXPORT int32_t scdb_open(uint32_t db_id) {
  return session(LMAINTE_RECORD_OPEN, db_id);
}
EXPORT int32_t scdb_close(uint32_t db_id) {
  return session(LMAINTE_RECORD_CLOSE, db_id);
}
EXPORT int32_t scdb_lock(uint32_t db_id) {
  return session(LMAINTE_RECORD_LOCK, db_id);
}
EXPORT int32_t scdb_unlock(uint32_t db_id) {
  return session(LMAINTE_RECORD_UNLOCK, db_id);
}

EXPORT int32_t scdb_get(uint32_t db_id, const char *key, void **record, int32_t *size, uint32_t flags) {
  const made_call made = {.kind = LMAINTE_RECORD_GET,
                          .first = db_id,
                          .third = flags,
                          .text = key,
                          .text_size = key == NULL ? 0 : strnlen(key, KEY_ROOM)};
  const replay_call *const call = recorded(&made);
  if (call->result != 0 || record == NULL || size == NULL) return call->result;
  const void *const content = bytes_at(call->content, call->content_size);
  void *const copy = malloc(call->content_size == 0 ? 1 : call->content_size);
  if (content == NULL || copy == NULL) {
    free(copy);
    return -1;
  }
  memcpy(copy, content, call->content_size);
  *record = copy;
  *size = (int32_t)call->content_size;
  return 0;
}

EXPORT int32_t lcmn_scdb_put(uint32_t db_id, const char *key, const void *data, int32_t size, uint32_t flags) {
  const made_call made = {.kind = LMAINTE_RECORD_PUT,
                          .first = db_id,
                          .third = flags,
                          .text = key,
                          .text_size = key == NULL ? 0 : strnlen(key, KEY_ROOM),
                          .content = data,
                          .content_size = data == NULL || size < 0 ? 0 : (size_t)size};
  return recorded(&made)->result;
}

EXPORT int32_t mgblog_save(const uint32_t *head, const void *record) {
  enum { EVENT_SIZE = 48 };
  const made_call made = {.kind = LMAINTE_RECORD_LOG,
                          .first = head == NULL ? 0 : *head,
                          .content = record,
                          .content_size = record == NULL ? 0 : EVENT_SIZE};
  const replay_call *const call = recorded(&made);
  return result_with_errno(call, call->second);
}

EXPORT int32_t api_conv_unit_name_get(const uint32_t *unit_id, int32_t form, char *name, int32_t unused_1,
                                      int32_t unused_2) {
  (void)unused_1, (void)unused_2;
  const made_call made = {.kind = LMAINTE_RECORD_NAME,
                          .first = unit_id == NULL ? 0 : unit_id[0],
                          .second = unit_id == NULL ? 0 : unit_id[1],
                          .third = (uint32_t)form};
  const replay_call *const call = recorded(&made);
  const char *const text = bytes_at(call->text, call->text_size);
  if (call->result != 0 || name == NULL || text == NULL || call->text_size >= KEY_ROOM) return call->result;
  memcpy(name, text, call->text_size);
  name[call->text_size] = '\0';
  return 0;
}

/* ---- Files: what is read is the recorded; the descriptor is that of a file without a name ---- */

EXPORT int32_t lcmn_lopen(const char *path, int32_t flags, uint32_t mode) {
  (void)flags, (void)mode;
  made_call made = {.kind = LMAINTE_RECORD_FILE_OPEN, .text = path, .text_size = text_size(path)};
  const replay_call *const call = recorded(&made);
  return call->result < 0 ? result_with_errno(call, call->second) : memfd_create("replayed", MFD_CLOEXEC);
}

EXPORT int32_t lcmn_read(int32_t fd, void *buffer, int32_t size) {
  (void)fd;
  const made_call made = {.kind = LMAINTE_RECORD_FILE_READ};
  const replay_call *const call = recorded(&made);
  const void *const content = bytes_at(call->content, call->content_size);
  if (call->result <= 0 || content == NULL || size < 0) return result_with_errno(call, call->third);
  const size_t most = (size_t)size < call->content_size ? (size_t)size : call->content_size;
  memcpy(buffer, content, most);
  return (int32_t)most;
}

EXPORT int32_t lcmn_write(int32_t fd, const void *buffer, int32_t size) {
  (void)fd;
  const made_call made = {.kind = LMAINTE_RECORD_FILE_WRITE,
                          .content = buffer,
                          .content_size = buffer == NULL || size < 0 ? 0 : (size_t)size};
  const replay_call *const call = recorded(&made);
  return call->result < 0 ? result_with_errno(call, call->third) : size;
}

EXPORT int32_t lcmn_close(int32_t fd) {
  const made_call made = {.kind = LMAINTE_RECORD_FILE_CLOSE};
  const replay_call *const call = recorded(&made);
  close(fd);
  return result_with_errno(call, call->second);
}

/* ---- Messages ---- */

EXPORT int32_t lmainte_host_open_channel(const char *daemon) {
  (void)daemon;
  return g_channel = open("/dev/null", O_RDWR | O_CLOEXEC);
}
EXPORT int32_t lmainte_host_close_channel(int32_t fd) {
  return close(fd);
}

EXPORT int32_t lcmn_send(int32_t fd, const void *message) {
  /* How long a message is the board's platform knows: as much is compared as was sent. */
  const uint32_t next = g_score == NULL ? 0 : __atomic_load_n(&g_score->next, __ATOMIC_SEQ_CST);
  const bool is_there = message != NULL && g_score != NULL && next < g_score->count;
  const made_call made = {
      .kind = LMAINTE_RECORD_SEND, .content = message, .content_size = is_there ? call_at(next)->content_size : 0};
  const replay_call *const call = recorded(&made);
  g_channel = fd;
  return result_with_errno(call, call->second);
}

EXPORT int32_t lcmn_receive(int32_t fd, void *message) {
  (void)fd;
  const made_call made = {.kind = LMAINTE_RECORD_RECEIVE};
  const replay_call *const call = recorded(&made);
  const void *const content = bytes_at(call->content, call->content_size);
  if (call->result > 0 && content != NULL && message != NULL)
    memcpy(message, content, min(call->content_size, LMAINTE_HOST_MESSAGE_MOST));
  return result_with_errno(call, call->second);
}

EXPORT int32_t lcmn_select(uint8_t *status_1, uint8_t *status_2, fd_set *readable, fd_set *writable,
                           fd_set *exceptional, struct timeval *limit) {
  (void)writable, (void)exceptional, (void)limit;
  const made_call made = {.kind = LMAINTE_RECORD_SELECT};
  const replay_call *const call = recorded(&made);
  if (status_1 != NULL) *status_1 = (uint8_t)call->first;
  if (status_2 != NULL) *status_2 = (uint8_t)call->second;
  if (readable != NULL) {
    FD_ZERO(readable);
    if (call->result > 0 && g_channel >= 0 && g_channel < FD_SETSIZE) FD_SET(g_channel, readable);
  }
  return result_with_errno(call, call->third);
}

EXPORT int32_t lcmn_process_iszero(const fd_set *set) {
  fd_set none;
  FD_ZERO(&none);
  return set == NULL || memcmp(set, &none, sizeof none) == 0;
}

/* ---- The operator: what was typed stands behind the prompt again ---- */

/* Of the process that has asked. A handler of it, and other processes, may have made calls before it came; they make them
   behind it now. */
static const replay_call *next_answer(const replay_call *question) {
  const uint32_t next = __atomic_load_n(&g_score->next, __ATOMIC_SEQ_CST);
  uint32_t number = next;
  for (; number < g_score->count; ++number) {
    const replay_call *const call = call_at(number);
    if (call->process != question->process || call->is_made != 0) continue;
    if (call->kind == LMAINTE_RECORD_ANSWER) break;
    if (call->kind == LMAINTE_RECORD_QUESTION) number = g_score->count - 1;
  }
  if (number >= g_score->count) {
    leave(next >= g_score->count && g_score->has_end == 0 ? REPLAY_RAN_OUT : REPLAY_UNANSWERED, NULL, 0);
  }
  call_at(number)->is_made = 1;
  if (number == next) go_on_behind(number);
  return call_at(number);
}

EXPORT int32_t cli_ask_select(int32_t first, void *second, const char *prompt) {
  const made_call made = {
      .kind = LMAINTE_RECORD_QUESTION, .first = (uint32_t)first, .text = prompt, .text_size = text_size(prompt)};
  const replay_call *const question = recorded(&made);
  for (;;) {
    const replay_call *const answer = next_answer(question);
    const char *const typed = bytes_at(answer->text, answer->text_size);
    printf("%s%.*s\n", prompt == NULL ? "" : prompt, typed == NULL ? 0 : (int)answer->text_size,
           typed == NULL ? "" : typed);
    fflush(stdout);
    if (answer->result == NO_ANSWER) continue;
    if (answer->result == LMAINTE_ASK_CHOSEN && second != NULL) *(int32_t *)second = (int32_t)answer->first;
    if (answer->result == LMAINTE_ASK_INTERRUPTED) raise(SIGINT);
    return answer->result;
  }
}

/* ---- Programs: a control program ends as it did, after as long; the pager shows all at once ---- */

static bool is_below(const char *path, const char *folder) {
  return path != NULL && strncmp(path, folder, strlen(folder)) == 0;
}

static void default_for(int signal_number) {
  sigset_t one;
  signal(signal_number, SIG_DFL);
  sigemptyset(&one);
  sigaddset(&one, signal_number);
  sigprocmask(SIG_UNBLOCK, &one, NULL);
}

__attribute__((noreturn)) static void end_as(const replay_call *call) {
  const uint32_t status = (uint32_t)call->result;
  const int ended_by = (int)(status & 0x7F);
  struct timespec rest = {(time_t)call->seconds, (long)call->nanoseconds};
  /* The command was killed while the program ran; or it went on, and did not wait for the program. */
  if (call->third == 0 && call == call_at(g_score->count - 1) && g_score->has_end == 0) leave(REPLAY_RAN_OUT, NULL, 0);
  if (call->third == 0) _exit(0);
  /* The library ends a program that takes too long by SIGTERM, then by SIGKILL. */
  if (ended_by == SIGTERM) default_for(SIGTERM);
  if (ended_by != SIGTERM) signal(SIGTERM, SIG_IGN);
  if (ended_by == SIGTERM || ended_by == SIGKILL) {
    for (;;) pause();
  }
  while (nanosleep(&rest, &rest) != 0 && errno == EINTR) continue;
  if (ended_by != 0) {
    default_for(ended_by);
    raise(ended_by);
  }
  _exit((int)(status >> 8 & 0xFF));
}

static void start_program(const char *path, char *const arguments[]) {
  char line[LMAINTE_RECORD_LONGEST_PROGRAM + 1];
  size_t size = 0;
  const bool has_words = arguments != NULL && arguments[0] != NULL;
  for (size_t i = 0; size < sizeof line && (i == 0 || (has_words && arguments[i] != NULL)); ++i) {
    const int more = snprintf(line + size, sizeof line - size, "%s%s", i == 0 ? "" : " ", i == 0 ? path : arguments[i]);
    size += more < 0 ? 0 : (size_t)more;
  }
  if (size > sizeof line - 1) size = sizeof line - 1;
  const made_call made = {.kind = LMAINTE_RECORD_PROGRAM, .text = line, .text_size = size};
  end_as(recorded(&made));
}

__attribute__((noreturn)) static void show_whole_file(const char *path) {
  char part[4096];
  ssize_t size = 0;
  const int file = path == NULL ? -1 : open(path, O_RDONLY | O_CLOEXEC);
  while (file >= 0 && (size = read(file, part, sizeof part)) > 0) {
    if (write(STDOUT_FILENO, part, (size_t)size) != size) break;
  }
  _exit(0);
}

/* Only of a process that is linked with a platform: a shell in the box starts what it likes. */
static void replay_program(const char *path, char *const *arguments) {
  if (g_score == NULL || dlsym(RTLD_NEXT, "scdb_open") == NULL) return;
  if (is_below(path, "/mgb/")) start_program(path, arguments);
  if (is_below(path, "/bin/busybox") && arguments != NULL && arguments[0] != NULL && arguments[1] != NULL) {
    show_whole_file(arguments[2]);
  }
}

EXPORT int execve(const char *path, char *const arguments[], char *const environment[]) {
  replay_program(path, arguments);
  return g_execve(path, arguments, environment);
}
