#include "src/dialogue/empty_list.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "src/dialogue/list_file.h"

namespace lmainte {

// Unlike the other list files, this one lies in the current directory, and a shell removes it. A failure is not reported.
void show_empty_list(const Call &call, const EmptyListErrors &errors, const ListLine *lines) {
  if (lines == nullptr) {
    call.error(errors.no_lines);
    return;
  }
  ListPath name;
  write_list_path(name, "");
  FILE *file = fopen(name, "w");
  if (file == nullptr) {
    call.system_call_failed(errors.no_file);
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
