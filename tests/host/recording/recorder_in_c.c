/* The recorder, as a board's platform compiles it; where it records, and how much, a test says. */
#include <stdint.h>

const char *g_recording_path = "";
uint32_t g_recording_most = 1u << 20;

#define LMAINTE_RECORD_PATH g_recording_path
#define LMAINTE_RECORD_MOST g_recording_most
#define LMAINTE_RECORD_IMPLEMENTATION
#include "include/lmainte_record.h"
