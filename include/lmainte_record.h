/*
 * lmainte_record.h - a recorder for the platform of a board
 *
 * A fault that shows on a board is looked for at a desk. A platform that calls the functions below writes each call of
 * lmainte_platform.h with its answer, the control programs, the trace and the log into a file. At the desk,
 * `spbox replay FILE` shows the file in words, and `spbox replay FILE -- COMMAND` runs a command that gets the same
 * answers.
 *
 * The header is all of it, so that a platform takes one file and keeps its own compiler and flags. One C file of the
 * platform has the code:
 *
 *   #define LMAINTE_RECORD_IMPLEMENTATION
 *   #include "lmainte_record.h"
 *
 * It takes what POSIX of 2008 has, and gcc 4.7 or clang, with -std=gnu99 or later. Before that, the C file may define
 * these; each may be an expression:
 *
 *   LMAINTE_RECORD_PATH  the file, "/tmp/lmainte_recording"
 *   LMAINTE_RECORD_MOST  its bound in bytes, 16 MB
 *
 * How it is switched on. A process records when the file is there at its first call; nothing is restarted or set for
 * it. `umask 077; : >/tmp/lmainte_recording` switches it on for the commands that start from then on, and removing the
 * file switches it off, also for commands that run. Who renames the file keeps it: commands that run go on there.
 * `echo without contents >/tmp/lmainte_recording` leaves out what the records of the databases hold: their size and a
 * checksum stay. It may be done while commands run. The checksum is a short one: who guesses a content, such as a
 * serial number, can confirm it by that. What the operator typed, and what files, messages and the log hold, stays.
 * The file must be a regular one with one name, of the process's own user or of root; a link is not followed.
 *
 * What it costs. Without the file: one open in each process, and a comparison in each call. With it: four calls of
 * the system for each record, getpid, fstat, getrlimit and writev; a pread, too, for what a database's record holds. It
 * takes no memory from malloc, does nothing at start-up, keeps errno, changes no result, and may be called in signal
 * handlers and between fork and execve. It is not for threads. Many processes write into one file: it is opened with
 * O_APPEND, and each record is one writev. What was written survives the end of the process, also by SIGKILL; after a
 * power cut the file is as whole as the file system keeps it, and the reader finds the whole records.
 *
 * Its bound. A process stops at the first record for which there is no room, and says so in its last record. The file
 * does not go round: a command can be run against a recording from its beginning only. Who empties the file has it
 * begin again, but for processes that have stopped. Processes that reach the bound at the same time may each pass it by
 * a record.
 *
 * Where nothing can be written, as on a full disk, the process goes on without its recording, and nobody is told. It
 * tries again with the next record, then at the second, fourth, eighth... missed one. Records are numbered, so that
 * the reader counts those that are missing. lmainte_record_missed() counts them in the process.
 *
 * The file. It may begin with the line "without contents". Then there are records, one after the other. Each has a
 * head of sixteen words of 32 bits, whose highest byte comes first on every machine:
 *
 *    0  0x4C4D5231, "LMR1"
 *    1  bytes of the whole record: a multiple of 4
 *    2  checksum of all that follows in the record: FNV-1a of 32 bits
 *    3  kind, LMAINTE_RECORD_...; LMAINTE_RECORD_LEFT_OUT is added where the content is left out
 *    4  process id
 *    5  number of the record in its process, from 0 on
 *    6  when the call began: nanoseconds since 1970, two words; the higher one first
 *    8  how long it took: nanoseconds, two words
 *   10  result
 *   11  three words, as the kind says
 *   14  bytes of the text
 *   15  bytes of the content
 *
 * The text, the content, and up to three zero bytes follow. A content that is left out is a word, its checksum, in its
 * place; so is one of more than 65536 bytes. Content is in the machine's byte order, as the call had it.
 *
 * A record of kind LMAINTE_RECORD_PROCESS comes before the first other one of each process. Its content is five words,
 * the highest byte first: LMAINTE_RECORD_VERSION; 1 where the machine's own words have their highest byte first, else
 * 2; bytes of a long; ELF's number of the machine, or 0; 0. A later version may add kinds and words behind these.
 */
#ifndef LMAINTE_RECORD_H
#define LMAINTE_RECORD_H

#include <stdint.h>
#include <sys/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- The file ---- */

#define LMAINTE_RECORD_VERSION 1u
#define LMAINTE_RECORD_MARK 0x4C4D5231u
#define LMAINTE_RECORD_LEFT_OUT 0x80000000u

/* Sizes in bytes. */
enum {
  LMAINTE_RECORD_HEAD = 64,
  LMAINTE_RECORD_LONGEST_TEXT = 4096,     /* what is longer is cut */
  LMAINTE_RECORD_LONGEST_PROGRAM = 2047,  /* the same, of a program with its words */
  LMAINTE_RECORD_LONGEST_NAME = 128,      /* the same, of a unit and of a database's record */
  LMAINTE_RECORD_LONGEST_CONTENT = 65536, /* what is longer is left out */
  LMAINTE_RECORD_WITHOUT_SIZE = 17        /* of the line "without contents" */
};

/* What the words, the text and the content of each kind are. "errno" is 0 where the call succeeded. */
enum {
  LMAINTE_RECORD_PROCESS = 1, /* parent, of a child of fork the one that has recorded; model, LMAINTE_MODEL_...; bits,
                                 LMAINTE_RECORD_IS_... Text: its words */
  LMAINTE_RECORD_END,         /* the command ends. Result: its exit status */
  LMAINTE_RECORD_FULL,        /* the file has no room for the next record: the process writes nothing behind this */
  LMAINTE_RECORD_TRACE, /* content, words with the highest byte first: module, level, kind, event, the record's words */
  LMAINTE_RECORD_PROGRAM,     /* this process becomes a program. Parent; CLOCK_MONOTONIC in nanoseconds, two words.
                                 Text: its path and its words */
  LMAINTE_RECORD_PROGRAM_END, /* a child has ended. Its process id; CLOCK_MONOTONIC again. Result: its status, as
                                 waitpid gives it */
  LMAINTE_RECORD_OPEN,        /* number of the database, also in the next five */
  LMAINTE_RECORD_CLOSE,
  LMAINTE_RECORD_LOCK,
  LMAINTE_RECORD_UNLOCK,
  LMAINTE_RECORD_GET,        /* size. Text: the record's name. Content: the record, where it was read */
  LMAINTE_RECORD_PUT,        /* the same */
  LMAINTE_RECORD_QUESTION,   /* number of choices. Text: the prompt */
  LMAINTE_RECORD_ANSWER,     /* the choice. Text: what was typed, where it is known */
  LMAINTE_RECORD_LOG,        /* head; errno. Content: the event */
  LMAINTE_RECORD_NAME,       /* the unit id, two words; form. Text: the name */
  LMAINTE_RECORD_FILE_OPEN,  /* flags; errno. Text: the path */
  LMAINTE_RECORD_FILE_READ,  /* descriptor; bytes asked for; errno. Content: what was read */
  LMAINTE_RECORD_FILE_WRITE, /* the same. Content: what was to be written */
  LMAINTE_RECORD_FILE_CLOSE, /* descriptor; errno */
  LMAINTE_RECORD_SEND,       /* descriptor; errno. Content: the message */
  LMAINTE_RECORD_RECEIVE,    /* the same, where a message came */
  LMAINTE_RECORD_SELECT,     /* the two bytes of its status; errno */
  LMAINTE_RECORD_LAST = LMAINTE_RECORD_SELECT
};

/* The bits of a process. */
enum {
  LMAINTE_RECORD_IS_CHILD = 1, /* of fork, of a process that has recorded: it goes on in what that one does */
  LMAINTE_RECORD_IS_FED = 2,   /* its standard input is no terminal */
  LMAINTE_RECORD_IS_READ = 4   /* its standard output is none */
};

/* ---- A record ---- */

/* A record of any kind. Null stands for no text and no content; sizes below 0 for none. */
typedef struct lmainte_record {
  uint32_t kind;
  int32_t result;
  uint32_t first, second, third;
  uint64_t began;
  const char *text;
  int32_t text_size;
  const void *content;
  int32_t content_size;
} lmainte_record;

/* The time at which a call begins, which its record takes; 0 when nothing is recorded. It is that of CLOCK_MONOTONIC: how
   long a call took is right also where the time of day is set meanwhile. */
uint64_t lmainte_record_begin(void);

/* Writes a record of any kind. Returns its result. */
int32_t lmainte_record_call(const lmainte_record *record);

/* How many records of this process could not be written. */
uint32_t lmainte_record_missed(void);

/* ---- What a platform calls ---- */

/*
 * A platform calls these at the end of each of its functions. `began` is lmainte_record_begin() of the function's
 * beginning; what follows is what the function was given, and what it gives back. All that have a result return it.
 */

/* Record what the platform is to write into the trace and into the log. */
void lmainte_record_trace(uint32_t module, uint32_t level, uint32_t kind, uint32_t event, const uint32_t *words,
                          uint32_t length);
int32_t lmainte_record_log(uint64_t began, const uint32_t *head, const void *event, int32_t result);

/* Record a call of the databases. The kind of a session's is LMAINTE_RECORD_OPEN ... LMAINTE_RECORD_UNLOCK. */
int32_t lmainte_record_session(uint32_t kind, uint64_t began, uint32_t db_id, int32_t result);
int32_t lmainte_record_get(uint64_t began, uint32_t db_id, const char *key, void *const *record, const int32_t *size,
                           int32_t result);
int32_t lmainte_record_put(uint64_t began, uint32_t db_id, const char *key, const void *data, int32_t size,
                           int32_t result);

/* Record the name of a unit. */
int32_t lmainte_record_name(uint64_t began, const uint32_t *unit_id, int32_t form, const char *name, int32_t result);

/* Record what is done with a file. */
int32_t lmainte_record_file_open(uint64_t began, const char *path, int32_t flags, int32_t result);
int32_t lmainte_record_file_read(uint64_t began, int32_t fd, const void *buffer, int32_t size, int32_t result);
int32_t lmainte_record_file_write(uint64_t began, int32_t fd, const void *buffer, int32_t size, int32_t result);
int32_t lmainte_record_file_close(uint64_t began, int32_t fd, int32_t result);

/* Record what passes between the command and a daemon. `size` is that of the message, which the platform knows; 0 where
   none came. */
int32_t lmainte_record_send(uint64_t began, int32_t fd, const void *message, int32_t size, int32_t result);
int32_t lmainte_record_receive(uint64_t began, int32_t fd, const void *message, int32_t size, int32_t result);
int32_t lmainte_record_select(uint64_t began, const uint8_t *status_1, const uint8_t *status_2, int32_t result);

/* Record a question before it is shown, so that it is in the file also where no answer comes; the answer behind it. */
void lmainte_record_question(int32_t choices, const char *prompt);
int32_t lmainte_record_answer(uint64_t began, const char *typed, const int32_t *choice, int32_t result);

/* ---- Programs, and the end ---- */

/*
 * Record a control program. The library starts it by itself, with fork, execve and waitpid. A platform that has execve
 * and waitpid of its own, before the C library's, calls these: before the program takes the child's place, and when
 * waitpid has given a child's status. docs/another-platform.md has both.
 */
void lmainte_record_program(const char *path, char *const arguments[]);
void lmainte_record_program_end(pid_t child, int status);

/* Records that the command ends, as on_exit(3) tells; the process, and no child of it. */
void lmainte_record_end(int exit_status);

#ifdef __cplusplus
}
#endif

#endif /* LMAINTE_RECORD_H */

#if defined LMAINTE_RECORD_IMPLEMENTATION && !defined LMAINTE_RECORD_IMPLEMENTED
#define LMAINTE_RECORD_IMPLEMENTED

#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <stddef.h>
#include <string.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <time.h>
#include <unistd.h>

#ifdef __cplusplus
extern "C" {
#endif

#ifndef LMAINTE_RECORD_PATH
#define LMAINTE_RECORD_PATH "/tmp/lmainte_recording"
#endif
#ifndef LMAINTE_RECORD_MOST
#define LMAINTE_RECORD_MOST (16u << 20)
#endif

enum {
  LMAINTE_RECORD_OUT_OF_THE_WAY = 200, /* where a command's own descriptors are not expected */
  LMAINTE_RECORD_LONGEST_LINE = 1024   /* of a process's own words */
};

enum { LMAINTE_RECORD_NEW, LMAINTE_RECORD_LOOKS, LMAINTE_RECORD_OFF, LMAINTE_RECORD_ON };

/* What this process knows of the file. A signal handler may come at any place. */
static struct {
  volatile int state;
  pid_t process; /* that has looked; a child of fork looks again */
  pid_t parent;  /* of a child of fork: the process that recorded */
  int file, is_child, has_begun, fails;
  dev_t device;
  ino_t number;
  off_t seen; /* so long was the file: one that is shorter was emptied */
  uint32_t sequence, missed;
} lmainte_recorder;

static uint64_t lmainte_record_now(clockid_t clock) {
  struct timespec now = {0, 0};
  clock_gettime(clock, &now);
  return (uint64_t)now.tv_sec * 1000000000u + (uint64_t)now.tv_nsec;
}

static uint8_t *lmainte_record_word(uint8_t *at, uint32_t word) {
  at[0] = (uint8_t)(word >> 24);
  at[1] = (uint8_t)(word >> 16);
  at[2] = (uint8_t)(word >> 8);
  at[3] = (uint8_t)word;
  return at + 4;
}

static uint32_t lmainte_record_sum(uint32_t sum, const void *bytes, size_t size) {
  const uint8_t *at = (const uint8_t *)bytes, *const end = at + size;
  while (at != end) sum = (sum ^ *at++) * 16777619u;
  return sum;
}
#define LMAINTE_RECORD_NO_SUM 2166136261u

/* Somebody may have removed the file; the command may have closed it, and opened something else there. */
static int lmainte_record_is_there(struct stat *status) {
  return fstat(lmainte_recorder.file, status) == 0 && status->st_dev == lmainte_recorder.device &&
         status->st_ino == lmainte_recorder.number && status->st_nlink != 0;
}

static int lmainte_record_is_ours(const struct stat *status) {
  return S_ISREG(status->st_mode) && status->st_nlink == 1 && (status->st_uid == geteuid() || status->st_uid == 0);
}

/* SIGXFSZ would end a process that writes beyond its limit for files, which it may set at any time. */
static off_t lmainte_record_most(void) {
  struct rlimit limit;
  const off_t most = (off_t)(LMAINTE_RECORD_MOST);
  if (getrlimit(RLIMIT_FSIZE, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) return most;
  return limit.rlim_cur < (rlim_t)most ? (off_t)limit.rlim_cur : most;
}

static int lmainte_record_open_file(void) {
  struct stat status;
  int moved;
  const int file = open(LMAINTE_RECORD_PATH, O_RDWR | O_APPEND | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY);
  if (file < 0) {
    if (errno != ENOENT && errno != ENOTDIR) lmainte_recorder.missed = 1;
    return -1;
  }
  if (fstat(file, &status) != 0 || !lmainte_record_is_ours(&status)) {
    close(file);
    lmainte_recorder.missed = 1;
    return -1;
  }
  moved = fcntl(file, F_DUPFD_CLOEXEC, LMAINTE_RECORD_OUT_OF_THE_WAY);
  if (moved >= 0) close(file);
  lmainte_recorder.file = moved >= 0 ? moved : file;
  lmainte_recorder.device = status.st_dev;
  lmainte_recorder.number = status.st_ino;
  return 0;
}

/* Looked for before each content that it concerns: somebody may have written the line since. */
static int lmainte_record_is_without_contents(void) {
  static const char without[] = "without contents\n";
  char front[LMAINTE_RECORD_WITHOUT_SIZE];
  return pread(lmainte_recorder.file, front, sizeof front, 0) == (ssize_t)sizeof front &&
         memcmp(front, without, sizeof front) == 0;
}

/* A handler that comes while the process looks records nothing. */
static int lmainte_record_is_on(void) {
  struct stat status;
  const pid_t self = getpid();
  int is_there;
  if (lmainte_recorder.state == LMAINTE_RECORD_LOOKS) return 0;
  if (lmainte_recorder.state == LMAINTE_RECORD_ON && lmainte_recorder.process == self) return 1;
  lmainte_recorder.is_child = lmainte_recorder.state == LMAINTE_RECORD_ON;
  lmainte_recorder.parent = lmainte_recorder.process;
  lmainte_recorder.state = LMAINTE_RECORD_LOOKS;
  lmainte_recorder.process = self;
  lmainte_recorder.sequence = lmainte_recorder.missed = 0;
  lmainte_recorder.has_begun = lmainte_recorder.fails = 0;
  is_there = lmainte_recorder.is_child ? lmainte_record_is_there(&status) : lmainte_record_open_file() == 0;
  lmainte_recorder.state = is_there ? LMAINTE_RECORD_ON : LMAINTE_RECORD_OFF;
  return is_there;
}

static void lmainte_record_miss(void) {
  lmainte_recorder.fails = 1;
  ++lmainte_recorder.missed;
}

/* A record without words, text and content. */
static lmainte_record lmainte_record_of(uint32_t kind) {
  lmainte_record record;
  record.kind = kind;
  record.result = 0;
  record.first = record.second = record.third = 0;
  record.began = 0;
  record.text = NULL;
  record.text_size = 0;
  record.content = NULL;
  record.content_size = 0;
  return record;
}

/* writev takes what it does not change as what it might. */
static void *lmainte_record_bytes(const void *bytes) {
  const union {
    const void *constant;
    void *any;
  } at = {bytes};
  return at.any;
}

/* Returns 0 where it is in the file. */
static int lmainte_record_write(const lmainte_record *record) {
  static const uint8_t zeros[4] = {0, 0, 0, 0};
  uint8_t head[LMAINTE_RECORD_HEAD], left_out[4], *at = head;
  size_t text = record->text == NULL || record->text_size < 0 ? 0 : (size_t)record->text_size;
  const size_t content = record->content == NULL || record->content_size < 0 ? 0 : (size_t)record->content_size;
  const int is_database = record->kind == LMAINTE_RECORD_GET || record->kind == LMAINTE_RECORD_PUT;
  const int is_left_out =
      content > LMAINTE_RECORD_LONGEST_CONTENT || (is_database && content != 0 && lmainte_record_is_without_contents());
  const size_t kept = is_left_out ? sizeof left_out : content;
  const uint64_t now = lmainte_record_now(CLOCK_MONOTONIC);
  const uint64_t took = record->began != 0 && now > record->began ? now - record->began : 0;
  const uint64_t began = lmainte_record_now(CLOCK_REALTIME) - took;
  struct iovec parts[4];
  size_t size, padding;
  uint32_t sum;
  if (text > LMAINTE_RECORD_LONGEST_TEXT) text = LMAINTE_RECORD_LONGEST_TEXT;
  if (is_left_out) {
    lmainte_record_word(left_out, lmainte_record_sum(LMAINTE_RECORD_NO_SUM, record->content, content));
  }
  padding = (4 - (text + kept) % 4) % 4;
  size = sizeof head + text + kept + padding;
  at = lmainte_record_word(at, LMAINTE_RECORD_MARK);
  at = lmainte_record_word(at, (uint32_t)size) + 4; /* the checksum comes last */
  at = lmainte_record_word(at, record->kind | (is_left_out ? LMAINTE_RECORD_LEFT_OUT : 0));
  at = lmainte_record_word(at, (uint32_t)lmainte_recorder.process);
  at = lmainte_record_word(at, __atomic_fetch_add(&lmainte_recorder.sequence, 1, __ATOMIC_RELAXED));
  at = lmainte_record_word(at, (uint32_t)(began >> 32));
  at = lmainte_record_word(at, (uint32_t)began);
  at = lmainte_record_word(at, (uint32_t)(took >> 32));
  at = lmainte_record_word(at, (uint32_t)took);
  at = lmainte_record_word(at, (uint32_t)record->result);
  at = lmainte_record_word(at, record->first);
  at = lmainte_record_word(at, record->second);
  at = lmainte_record_word(at, record->third);
  at = lmainte_record_word(at, (uint32_t)text);
  lmainte_record_word(at, (uint32_t)content);
  parts[0].iov_base = head;
  parts[0].iov_len = sizeof head;
  parts[1].iov_base = lmainte_record_bytes(text == 0 ? "" : record->text);
  parts[1].iov_len = text;
  parts[2].iov_base = is_left_out ? left_out : kept == 0 ? head : lmainte_record_bytes(record->content);
  parts[2].iov_len = kept;
  parts[3].iov_base = lmainte_record_bytes(zeros);
  parts[3].iov_len = padding;
  sum = lmainte_record_sum(LMAINTE_RECORD_NO_SUM, head + 12, sizeof head - 12);
  for (int part = 1; part < 4; ++part) sum = lmainte_record_sum(sum, parts[part].iov_base, parts[part].iov_len);
  lmainte_record_word(head + 8, sum);
  return writev(lmainte_recorder.file, parts, 4) == (ssize_t)size ? 0 : -1;
}

/* Its own words, as the kernel has them, and the model by its marker: what a reader asks of a process first. */
static int lmainte_record_write_process(uint64_t began) {
  static const char markers[][12] = {"/tmp/.qa", "/tmp/.qb1", "/tmp/.qb2", "/tmp/.qe1", "/tmp/.qe2", "/tmp/.qe3"};
  uint8_t about[20];
  char words[LMAINTE_RECORD_LONGEST_LINE];
  ssize_t size = 0;
  uint32_t model = 0;
  lmainte_record record = lmainte_record_of(LMAINTE_RECORD_PROCESS);
  const union {
    uint16_t word;
    uint8_t first;
  } order = {1};
  lmainte_record_word(about, LMAINTE_RECORD_VERSION);
  lmainte_record_word(about + 4, order.first == 0 ? 1 : 2);
  lmainte_record_word(about + 8, (uint32_t)sizeof(long));
#if defined __powerpc64__
  lmainte_record_word(about + 12, 21);
#elif defined __powerpc__
  lmainte_record_word(about + 12, 20);
#elif defined __x86_64__
  lmainte_record_word(about + 12, 62);
#elif defined __aarch64__
  lmainte_record_word(about + 12, 183);
#else
  lmainte_record_word(about + 12, 0);
#endif
  lmainte_record_word(about + 16, 0);
  record.began = began; /* of the call that is recorded first */
  record.first = (uint32_t)(lmainte_recorder.is_child ? lmainte_recorder.parent : getppid());
  while (model < 6 && access(markers[model], F_OK) != 0) ++model;
  record.second = model == 0 ? 6 : model < 6 ? model : 0; /* LMAINTE_MODEL_...: the first marker is that of QA */
  if (lmainte_recorder.is_child) record.third |= LMAINTE_RECORD_IS_CHILD;
  if (!isatty(STDIN_FILENO)) record.third |= LMAINTE_RECORD_IS_FED;
  if (!isatty(STDOUT_FILENO)) record.third |= LMAINTE_RECORD_IS_READ;
  if (!lmainte_recorder.is_child) {
    const int file = open("/proc/self/cmdline", O_RDONLY | O_CLOEXEC);
    if (file >= 0) {
      size = read(file, words, sizeof words);
      close(file);
    }
    while (size > 0 && words[size - 1] == '\0') --size;
    for (ssize_t i = 0; i < size; ++i) {
      if (words[i] == '\0') words[i] = ' ';
    }
  }
  record.text = words;
  record.text_size = (int32_t)size;
  record.content = about;
  record.content_size = (int32_t)sizeof about;
  return lmainte_record_write(&record);
}

/* Room for the last record of all stays free. */
static int lmainte_record_has_room(const struct stat *status, off_t most, const lmainte_record *record) {
  const off_t whole_text = record->text_size > 0 ? record->text_size : 0;
  const off_t longest = LMAINTE_RECORD_LONGEST_TEXT, text = whole_text < longest ? whole_text : longest;
  const off_t content = record->content_size > 0 ? record->content_size : 0;
  const off_t head = LMAINTE_RECORD_HEAD;
  const off_t first = lmainte_recorder.has_begun && status->st_size >= lmainte_recorder.seen
                          ? 0
                          : 2 * head + LMAINTE_RECORD_LONGEST_LINE;
  const off_t more = first + text + (content > LMAINTE_RECORD_LONGEST_CONTENT ? 4 : content) + 2 * head + 4;
  return status->st_size <= most - more;
}

static void lmainte_record_end_at_bound(const struct stat *status, off_t most) {
  const lmainte_record record = lmainte_record_of(LMAINTE_RECORD_FULL);
  if (status->st_size <= most - LMAINTE_RECORD_HEAD) lmainte_record_write(&record);
  lmainte_recorder.state = LMAINTE_RECORD_OFF;
  lmainte_record_miss();
}

/* Who empties the file has it begin again, also with another first line. A signal handler waits: its records come behind the process's
   own, and what it writes meanwhile is not taken for another file. */
static int lmainte_record_begin_process(uint64_t began) {
  struct stat status;
  sigset_t all, before;
  int result = 0;
  sigfillset(&all);
  sigprocmask(SIG_BLOCK, &all, &before);
  if (fstat(lmainte_recorder.file, &status) == 0 &&
      (!lmainte_recorder.has_begun || status.st_size < lmainte_recorder.seen)) {
    result = lmainte_record_write_process(began);
    lmainte_recorder.has_begun = result == 0;
  }
  sigprocmask(SIG_SETMASK, &before, NULL);
  return result;
}

static void lmainte_record_keep(const lmainte_record *record) {
  struct stat status;
  off_t most;
  /* Not at each call, where nothing could be written: at the first, the second, the fourth... */
  if (lmainte_recorder.fails && (lmainte_recorder.missed & (lmainte_recorder.missed - 1)) != 0) {
    ++lmainte_recorder.missed;
    __atomic_fetch_add(&lmainte_recorder.sequence, 1, __ATOMIC_RELAXED);
    return;
  }
  if (!lmainte_record_is_there(&status)) {
    lmainte_recorder.state = LMAINTE_RECORD_OFF;
    lmainte_record_miss();
    return;
  }
  most = lmainte_record_most();
  if (!lmainte_record_has_room(&status, most, record)) {
    lmainte_record_end_at_bound(&status, most);
    return;
  }
  if ((!lmainte_recorder.has_begun || status.st_size < lmainte_recorder.seen) &&
      lmainte_record_begin_process(record->began) != 0) {
    lmainte_record_miss();
    return;
  }
  if (lmainte_record_write(record) != 0) {
    lmainte_record_miss();
    return;
  }
  lmainte_recorder.seen = status.st_size + LMAINTE_RECORD_HEAD;
  lmainte_recorder.fails = 0;
}

int32_t lmainte_record_call(const lmainte_record *record) {
  const int saved = errno;
  if (lmainte_recorder.state == LMAINTE_RECORD_OFF) {
    if (lmainte_recorder.missed != 0) ++lmainte_recorder.missed;
    return record->result;
  }
  if (lmainte_record_is_on()) lmainte_record_keep(record);
  errno = saved;
  return record->result;
}

uint64_t lmainte_record_begin(void) {
  return lmainte_recorder.state == LMAINTE_RECORD_OFF ? 0 : lmainte_record_now(CLOCK_MONOTONIC);
}

uint32_t lmainte_record_missed(void) {
  return lmainte_recorder.missed;
}

static int32_t lmainte_record_text_size(const char *text, size_t room) {
  return text == NULL ? 0 : (int32_t)strnlen(text, room);
}

/* What errno says of a result. */
static uint32_t lmainte_record_errno(int32_t result) {
  return result < 0 ? (uint32_t)errno : 0;
}

static int32_t lmainte_record_made(uint32_t kind, uint64_t began, int32_t result, uint32_t first, uint32_t second,
                                   uint32_t third, const char *text, int32_t text_size, const void *content,
                                   int32_t content_size) {
  lmainte_record record;
  record.kind = kind;
  record.result = result;
  record.first = first;
  record.second = second;
  record.third = third;
  record.began = began;
  record.text = text;
  record.text_size = text_size;
  record.content = content;
  record.content_size = content_size;
  return lmainte_record_call(&record);
}

void lmainte_record_trace(uint32_t module, uint32_t level, uint32_t kind, uint32_t event, const uint32_t *words,
                          uint32_t length) {
  uint8_t content[32], *at = content;
  const uint32_t count = length < 8 || words == NULL ? 0 : (length - 8) / 4;
  if (lmainte_recorder.state == LMAINTE_RECORD_OFF && lmainte_recorder.missed == 0) return;
  at = lmainte_record_word(at, module);
  at = lmainte_record_word(at, level);
  at = lmainte_record_word(at, kind);
  at = lmainte_record_word(at, event);
  for (uint32_t i = 0; i < count && i < 4; ++i) at = lmainte_record_word(at, words[i]);
  lmainte_record_made(LMAINTE_RECORD_TRACE, 0, 0, 0, 0, 0, NULL, 0, content, (int32_t)(at - content));
}

int32_t lmainte_record_log(uint64_t began, const uint32_t *head, const void *event, int32_t result) {
  return lmainte_record_made(LMAINTE_RECORD_LOG, began, result, head == NULL ? 0 : *head, lmainte_record_errno(result),
                             0, NULL, 0, event, 48);
}

int32_t lmainte_record_session(uint32_t kind, uint64_t began, uint32_t db_id, int32_t result) {
  return lmainte_record_made(kind, began, result, db_id, 0, 0, NULL, 0, NULL, 0);
}

int32_t lmainte_record_get(uint64_t began, uint32_t db_id, const char *key, void *const *record, const int32_t *size,
                           int32_t result) {
  const int has_record = result == 0 && record != NULL && *record != NULL && size != NULL;
  return lmainte_record_made(LMAINTE_RECORD_GET, began, result, db_id, has_record ? (uint32_t)*size : 0, 0, key,
                             lmainte_record_text_size(key, LMAINTE_RECORD_LONGEST_NAME), has_record ? *record : NULL,
                             has_record ? *size : 0);
}

int32_t lmainte_record_put(uint64_t began, uint32_t db_id, const char *key, const void *data, int32_t size,
                           int32_t result) {
  return lmainte_record_made(LMAINTE_RECORD_PUT, began, result, db_id, (uint32_t)size, 0, key,
                             lmainte_record_text_size(key, LMAINTE_RECORD_LONGEST_NAME), data, size);
}

int32_t lmainte_record_file_open(uint64_t began, const char *path, int32_t flags, int32_t result) {
  return lmainte_record_made(LMAINTE_RECORD_FILE_OPEN, began, result, (uint32_t)flags, lmainte_record_errno(result), 0,
                             path, lmainte_record_text_size(path, LMAINTE_RECORD_LONGEST_TEXT), NULL, 0);
}

int32_t lmainte_record_file_read(uint64_t began, int32_t fd, const void *buffer, int32_t size, int32_t result) {
  return lmainte_record_made(LMAINTE_RECORD_FILE_READ, began, result, (uint32_t)fd, (uint32_t)size,
                             lmainte_record_errno(result), NULL, 0, buffer, result);
}

int32_t lmainte_record_file_write(uint64_t began, int32_t fd, const void *buffer, int32_t size, int32_t result) {
  return lmainte_record_made(LMAINTE_RECORD_FILE_WRITE, began, result, (uint32_t)fd, (uint32_t)size,
                             lmainte_record_errno(result), NULL, 0, buffer, size);
}

int32_t lmainte_record_file_close(uint64_t began, int32_t fd, int32_t result) {
  return lmainte_record_made(LMAINTE_RECORD_FILE_CLOSE, began, result, (uint32_t)fd, lmainte_record_errno(result), 0,
                             NULL, 0, NULL, 0);
}

int32_t lmainte_record_send(uint64_t began, int32_t fd, const void *message, int32_t size, int32_t result) {
  return lmainte_record_made(LMAINTE_RECORD_SEND, began, result, (uint32_t)fd, lmainte_record_errno(result), 0, NULL, 0,
                             message, size);
}

int32_t lmainte_record_receive(uint64_t began, int32_t fd, const void *message, int32_t size, int32_t result) {
  return lmainte_record_made(LMAINTE_RECORD_RECEIVE, began, result, (uint32_t)fd, lmainte_record_errno(result), 0, NULL,
                             0, message, size);
}

int32_t lmainte_record_select(uint64_t began, const uint8_t *status_1, const uint8_t *status_2, int32_t result) {
  return lmainte_record_made(LMAINTE_RECORD_SELECT, began, result, status_1 == NULL ? 0 : *status_1,
                             status_2 == NULL ? 0 : *status_2, lmainte_record_errno(result), NULL, 0, NULL, 0);
}

int32_t lmainte_record_name(uint64_t began, const uint32_t *unit_id, int32_t form, const char *name, int32_t result) {
  const char *const text = result == 0 ? name : NULL;
  return lmainte_record_made(LMAINTE_RECORD_NAME, began, result, unit_id == NULL ? 0 : unit_id[0],
                             unit_id == NULL ? 0 : unit_id[1], (uint32_t)form, text,
                             lmainte_record_text_size(text, LMAINTE_RECORD_LONGEST_NAME), NULL, 0);
}

void lmainte_record_question(int32_t choices, const char *prompt) {
  lmainte_record_made(LMAINTE_RECORD_QUESTION, 0, 0, (uint32_t)choices, 0, 0, prompt,
                      lmainte_record_text_size(prompt, LMAINTE_RECORD_LONGEST_TEXT), NULL, 0);
}

int32_t lmainte_record_answer(uint64_t began, const char *typed, const int32_t *choice, int32_t result) {
  return lmainte_record_made(LMAINTE_RECORD_ANSWER, began, result,
                             result != 0 || choice == NULL ? 0 : (uint32_t)*choice, 0, 0, typed,
                             lmainte_record_text_size(typed, LMAINTE_RECORD_LONGEST_TEXT), NULL, 0);
}

void lmainte_record_program(const char *path, char *const arguments[]) {
  const int has_words = arguments != NULL && arguments[0] != NULL;
  const uint64_t now = lmainte_record_now(CLOCK_MONOTONIC);
  char line[LMAINTE_RECORD_LONGEST_PROGRAM];
  size_t size = 0;
  if (lmainte_recorder.state == LMAINTE_RECORD_OFF || path == NULL) return;
  for (size_t i = 0; i == 0 || (has_words && arguments[i] != NULL); ++i) {
    const char *word = i == 0 ? path : arguments[i];
    if (i > 0 && size < sizeof line) line[size++] = ' ';
    while (*word != '\0' && size < sizeof line) line[size++] = *word++;
  }
  lmainte_record_made(LMAINTE_RECORD_PROGRAM, 0, 0, (uint32_t)getppid(), (uint32_t)(now >> 32), (uint32_t)now, line,
                      (int32_t)size, NULL, 0);
}

void lmainte_record_program_end(pid_t child, int status) {
  const uint64_t now = lmainte_record_now(CLOCK_MONOTONIC);
  lmainte_record_made(LMAINTE_RECORD_PROGRAM_END, 0, status, (uint32_t)child, (uint32_t)(now >> 32), (uint32_t)now,
                      NULL, 0, NULL, 0);
}

/* Not of a child that never recorded anything: it would be taken for the command's end. */
void lmainte_record_end(int exit_status) {
  if (lmainte_recorder.state != LMAINTE_RECORD_ON || lmainte_recorder.process != getpid()) return;
  lmainte_record_made(LMAINTE_RECORD_END, 0, exit_status & 0xFF, 0, 0, 0, NULL, 0, NULL, 0);
}

#ifdef __cplusplus
}
#endif

#endif /* LMAINTE_RECORD_IMPLEMENTATION */
