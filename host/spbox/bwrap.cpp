#include "host/spbox/bwrap.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <system_error>

#include "host/base/child.h"
#include "host/base/descriptor.h"
#include "host/spbox/call_filter.h"
#include "host/spbox/standard_output.h"
#include "host/spbox/verb.h"

namespace spbox {
namespace {

[[noreturn]] void become(const base::ArgumentVector &words) {
  execvp(words.program(), words.data());
  // NOLINTNEXTLINE(concurrency-mt-unsafe): one thread
  complain(std::string("bwrap cannot be run: ") + std::strerror(errno) + ".");
  std::fflush(nullptr);
  _exit(kFailure);
}

// A descriptor from which this text can be read.
int file_with(const std::string &text) {
  base::Descriptor file(memfd_create("preloaded", MFD_CLOEXEC));
  const int error = file.get() < 0 ? errno : base::write_all(file.get(), text);
  if (error != 0 || lseek(file.get(), 0, SEEK_SET) != 0) {
    throw std::system_error(error != 0 ? error : errno, std::generic_category(), "the list of preloaded libraries");
  }
  return file.release();
}

}  // namespace

pid_t start_in_root(const RootPlan &plan, const std::vector<std::string> &program, int passed,
                    const std::function<void()> &in_child) {
  const base::Descriptor filter = call_filter();
  std::vector<std::string> arguments = bwrap_arguments(plan);
  const base::Descriptor list(plan.preloaded.empty() ? -1 : file_with(preload_list(plan.preloaded)));
  if (list.get() >= 0) {
    const std::vector<std::string> more = preload_arguments(list.get());
    arguments.insert(arguments.end(), more.begin(), more.end());
  }
  arguments.insert(arguments.end(), {"--seccomp", std::to_string(filter.get()), "--"});
  arguments.insert(arguments.end(), program.begin(), program.end());
  const base::ArgumentVector words(std::move(arguments));
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child < 0) base::no_process_for("the box");
  if (child > 0) return child;
  for (const int fd : {filter.get(), list.get(), passed}) fcntl(fd, F_SETFD, 0);
  in_child();
  become(words);
}

}  // namespace spbox
