#include "host/spbox/found_program.h"

#include <unistd.h>

#include <cstdlib>
#include <sstream>
#include <stdexcept>
#include <system_error>

namespace spbox {

namespace fs = std::filesystem;

fs::path find_program(const std::string &name) {
  std::error_code error;
  if (name.find('/') != std::string::npos) return fs::absolute(name, error);
  const char *path = std::getenv("PATH");
  std::istringstream folders(path == nullptr ? "/usr/bin:/bin" : path);
  for (std::string folder; std::getline(folders, folder, ':');) {
    fs::path candidate = fs::absolute(folder.empty() ? "." : folder, error) / name;
    if (fs::is_regular_file(candidate, error) && access(candidate.c_str(), X_OK) == 0) return candidate;
  }
  return {};
}

fs::path find_part(const fs::path &spbox, const std::string &name, int access_mode) {
  const fs::path own = spbox.parent_path(), parts = (own / SPBOX_PARTS).lexically_normal();
  for (const fs::path &at : {own, parts}) {
    if (access((at / name).c_str(), access_mode) == 0) return at / name;
  }
  throw std::runtime_error(name + " is neither beside " + spbox.string() + " nor in " + parts.string() +
                           ". Install spbox whole, or put it beside spbox.");
}

void check_bwrap() {
  if (!find_program("bwrap").empty()) return;
  throw std::runtime_error(
      "bwrap is missing: it gives a command a root of its own. Install it (apt install bubblewrap).");
}

void check_pager() {
  if (access("/bin/busybox", X_OK) == 0) return;
  throw std::runtime_error("/bin/busybox is missing: lists are shown through its pager. Install it (apt install " +
                           std::string("busybox), or see with --no-pager what a command does without."));
}

}  // namespace spbox
