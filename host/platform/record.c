/* The recorder of the platform: a process records where `spbox run --recording` shows a file to it. */
#define _GNU_SOURCE
#include <limits.h>
#include <stdlib.h>

#include "host/include/lmainte_host.h"

/* In the box, or below the folder that SPBOX_ROOT names. */
static const char *recording_path(char *room, size_t size);

#define LMAINTE_RECORD_PATH recording_path((char[PATH_MAX]){0}, PATH_MAX)
#define LMAINTE_RECORD_IMPLEMENTATION
#include "include/lmainte_record.h"

static const char *recording_path(char *room, size_t size) {
  static const char name[] = "/mgb/lib/recording";
  const char *const root = getenv(LMAINTE_HOST_ROOT);
  const size_t length = root == NULL ? 0 : strlen(root);
  if (length > size - sizeof name) return "";
  stpcpy(stpcpy(room, root == NULL ? "" : root), name);
  return room;
}
