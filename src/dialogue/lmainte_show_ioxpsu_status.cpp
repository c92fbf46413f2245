#include "include/lmainte.h"

#include <cstdio>
#include <cstdlib>

#include "src/dialogue/list_file.h"

// A placeholder that has never shown anything: it leaves the file "tmp" in the current directory, which tools look for,
// tries out a scratch file, and leaves no trace.
int32_t lmainte_show_ioxpsu_status(int32_t, const void *record) {
  if (record == nullptr) return LMAINTE_FAILED;
  // NOLINTNEXTLINE(cert-env33-c): a fixed line
  const int ignored = system("ps | grep ps > tmp");
  static_cast<void>(ignored);
  lmainte::ListPath scratch;
  lmainte::write_list_path(scratch, "/tmp/");
  FILE *file = fopen(scratch, "w");
  if (file == nullptr) return LMAINTE_FAILED;
  fclose(file);
  remove(scratch);
  return LMAINTE_OK;
}
