#include "host/spbox/damaged_files.h"

#include <unistd.h>

#include <csignal>
#include <string_view>

#include "host/box/full_file.h"
#include "host/spbox/verb.h"

namespace spbox {
namespace {

[[noreturn]] void on_bus_error(int) {
  constexpr std::string_view kWords =
      "spbox: the data file of the box cannot be read: it was cut short meanwhile, or the disk fails.\n";
  [[maybe_unused]] const ssize_t nobody_can_be_told = write(STDERR_FILENO, kWords.data(), kWords.size());
  _exit(kFailure);
}

}  // namespace

void tell_of_damaged_files() {
  box::survive_full_files();
  std::signal(SIGBUS, on_bus_error);
}

}  // namespace spbox
