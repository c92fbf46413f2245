#include "include/lmainte.h"

// The database holds nothing of an I/O expansion unit, so there is nothing to read, and nothing to trace.
int32_t lmainte_get_iox_data(void) {
  return LMAINTE_OK;
}
