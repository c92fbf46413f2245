#include "src/dialogue/empty_list.h"

#include <unistd.h>
#include <cerrno>
#include <cstdio>
#include <cstdlib>

namespace lmainte {

// Unlike the other list files, this one lies in the current directory, and a shell removes it. A failure is not reported.
void show_empty_list(const Call &call, const EmptyListErrors &errors, const ListLine *lines) {
  if (lines == nullptr) {
    call.error(errors.no_lines);
    return;
  }
  char name[128];
  snprintf(name, sizeof name, "mainte_fru_list.%d", static_cast<int>(getpid()));
  FILE *file = fopen(name, "w");
  if (file == nullptr) {
    call.system_error(errors.no_file, errno);
    return;
  }
  fclose(file);
  lmainte_show_file(name);
  char command[sizeof name + sizeof "rm -f "];
  snprintf(command, sizeof command, "rm -f %s", name);
  // NOLINTNEXTLINE(cert-env33-c): a fixed line, but for a number
  const int ignored = system(command);
  static_cast<void>(ignored);
}

}  // namespace lmainte
