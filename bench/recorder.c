/* The recorder, as a board's platform compiles it; where it records, the benchmark says. */
const char *g_recording_path = "";

#define LMAINTE_RECORD_PATH g_recording_path
#define LMAINTE_RECORD_IMPLEMENTATION
#include "include/lmainte_record.h"
