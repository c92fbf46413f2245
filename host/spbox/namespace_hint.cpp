#include "host/spbox/namespace_hint.h"

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

#include "host/box/inhabitants.h"

namespace spbox {
namespace {

std::string first_word_of(const char *file) {
  std::ifstream in(file);
  std::string word;
  in >> word;
  return word;
}

// With their threads, as the limit counts them.
std::size_t processes_of_this_user() {
  namespace fs = std::filesystem;
  std::size_t count = 0;
  for (const pid_t process : box::all_processes()) {
    const fs::path folder = "/proc/" + std::to_string(process);
    struct stat owner {};
    std::error_code ended;
    if (stat(folder.c_str(), &owner) != 0 || owner.st_uid != getuid()) continue;
    for (auto thread = fs::directory_iterator(folder / "task", ended); thread != end(thread); thread.increment(ended)) {
      ++count;
    }
  }
  return count;
}

// bwrap has room for itself, but not for the processes that make the root and become the command.
bool is_at_limit_of_processes() {
  constexpr std::size_t kOfBwrap = 3;
  rlimit limit{};
  if (geteuid() == 0 || getrlimit(RLIMIT_NPROC, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) return false;
  return processes_of_this_user() + kOfBwrap > limit.rlim_cur;
}

}  // namespace

std::string namespace_hint() {
  if (is_at_limit_of_processes()) {
    return "This user may start no more processes: end some, or raise their limit (ulimit -u)";
  }
  if (first_word_of("/proc/sys/user/max_user_namespaces") == "0") {
    return "This system allows no user namespaces: raise the sysctl user.max_user_namespaces";
  }
  if (first_word_of("/proc/sys/kernel/unprivileged_userns_clone") == "0") {
    return "This system keeps user namespaces from ordinary users: set the sysctl kernel.unprivileged_userns_clone to "
           "1";
  }
  if (first_word_of("/proc/sys/kernel/apparmor_restrict_unprivileged_userns") == "1") {
    return "This system keeps user namespaces from programs without a profile: set the sysctl "
           "kernel.apparmor_restrict_unprivileged_userns to 0";
  }
  return "In a container, let it make namespaces (docker run --privileged or --security-opt seccomp=unconfined)";
}

}  // namespace spbox
