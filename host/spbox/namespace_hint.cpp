#include "host/spbox/namespace_hint.h"

#include <fstream>

namespace spbox {
namespace {

std::string first_word_of(const char *file) {
  std::ifstream in(file);
  std::string word;
  in >> word;
  return word;
}

}  // namespace

std::string namespace_hint() {
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
