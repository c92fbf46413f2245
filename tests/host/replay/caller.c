/* caller CALL...: asks its platform for each, in this order. A call is a word and what it takes, such as
   get:2:current_psu_info. */
#define _GNU_SOURCE
#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

#include "lmainte.h"
#include "lmainte_host.h"
#include "lmainte_platform.h"

static int is(const char *word, const char *name) {
  return strncmp(word, name, strlen(name)) == 0;
}

static int number(const char *text) {
  return (int)strtol(text, NULL, 10);
}

static void get(uint32_t db_id, const char *name) {
  char key[128] = "";
  void *record = NULL;
  int32_t size = 0;
  snprintf(key, sizeof key, "%s", name);
  printf("%s: %d, %d bytes\n", name, scdb_get(db_id, key, &record, &size, 0), size);
  free(record);
}

/* A record that the box does not know, of one byte. */
static void put(const char *value) {
  char key[128] = "of_the_caller";
  printf("put: %d\n", lcmn_scdb_put(LMAINTE_DB_CURRENT, key, value, 1, 0));
}

static void save(uint8_t value) {
  const uint32_t head = LMAINTE_HOST_EVENT_HEAD;
  uint8_t event[LMAINTE_HOST_EVENT_SIZE] = {0};
  event[7] = value;
  printf("log: %d\n", mgblog_save(&head, event));
}

static void ask_daemon(void) {
  lmainte_host_message request = {sizeof request, LMAINTE_HOST_MONITOR_NUMBER, LMAINTE_HOST_ASK_STATUS, 1};
  union {
    lmainte_host_reply reply;
    uint8_t bytes[LMAINTE_HOST_MESSAGE_MOST];
  } answer;
  const int32_t channel = lmainte_host_open_channel(LMAINTE_HOST_MONITOR);
  memset(&answer, 0, sizeof answer);
  printf("daemon: %d", lmainte_ipc_communicate(&request, channel, 5, &answer));
  printf(", result %d, model %u\n", answer.reply.result, answer.reply.word[2]);
  lmainte_host_close_channel(channel);
}

static void read_file(const char *path) {
  unsigned char bytes[8] = {0};
  const int32_t fd = lcmn_lopen(path, 0, 0);
  printf("file: %s\n", fd < 0 ? "refused" : "open");
  if (fd < 0) return;
  printf("read: %d\n", lcmn_read(fd, bytes, sizeof bytes));
  printf("close: %d\n", lcmn_close(fd));
}

/* A control program, for which nobody waits; it has begun when this returns. */
static void start(void) {
  char program[] = "/mgb/bin/ctlmainte", option[] = "-c", lock[] = "lock";
  char *const words[] = {program, option, lock, NULL};
  int ends[2];
  char byte;
  if (pipe2(ends, O_CLOEXEC) != 0) return;
  if (fork() == 0) {
    execve(program, words, environ);
    _exit(1);
  }
  close(ends[1]);
  printf("start: %d\n", (int)read(ends[0], &byte, 1));
}

static int call(const char *word) {
  const char *const value = strchr(word, ':') == NULL ? "" : strchr(word, ':') + 1;
  const char *const name = strchr(value, ':') == NULL ? "" : strchr(value, ':') + 1;
  const uint32_t db_id = (uint32_t)number(value);
  int32_t choice = 0;
  char location[128] = "";
  const uint32_t id[] = {0x22010000u, 0xFFFFFFFFu};
  if (is(word, "open")) printf("open: %d\n", scdb_open(db_id));
  if (is(word, "close")) printf("close: %d\n", scdb_close(db_id));
  if (is(word, "lock")) printf("lock: %d\n", scdb_lock(db_id));
  if (is(word, "unlock")) printf("unlock: %d\n", scdb_unlock(db_id));
  if (is(word, "get")) get(db_id, name);
  if (is(word, "put")) put(value);
  if (is(word, "log")) save((uint8_t)number(value));
  if (is(word, "daemon")) ask_daemon();
  if (is(word, "file")) read_file(value);
  if (is(word, "name")) printf("name: %d %s\n", api_conv_unit_name_get(id, number(value), location, 0, 0), location);
  if (is(word, "mainte")) printf("mainte: %d\n", lmainte_control_mainte(number(value), 10));
  if (is(word, "ask")) printf("asked: %d", lmainte_ask_select(3, &choice, "%s? ", value)), printf(", %d\n", choice);
  if (is(word, "exit")) exit(number(value));
  if (is(word, "start")) start();
  if (is(word, "wait")) pause();
  if (is(word, "kill")) kill(getpid(), 9);
  return 0;
}

/* In a child, which ends then. */
static void call_in_child(const char *word) {
  fflush(stdout);
  if (fork() == 0) {
    call(word);
    fflush(stdout);
    _exit(0);
  }
  wait(NULL);
}

int main(int argc, char **argv) {
  for (int i = 1; i < argc; ++i) {
    if (is(argv[i], "child") && i + 1 < argc)
      call_in_child(argv[++i]);
    else
      call(argv[i]);
  }
  return 0;
}
