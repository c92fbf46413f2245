#include "storm/orphans.h"

#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <system_error>
#include <thread>

#include "host/base/read_all.h"
#include "host/box/inhabitants.h"

namespace storm {
namespace {

using Clock = std::chrono::steady_clock;

std::string in_proc(pid_t process, const char *name) {
  return "/proc/" + std::to_string(process) + "/" + name;
}

// In a box, a process has a root directory of its own.
bool is_in_box(pid_t process) {
  struct stat here {
  }, there{};
  return stat("/", &here) == 0 && stat(in_proc(process, "root").c_str(), &there) == 0 &&
         (here.st_dev != there.st_dev || here.st_ino != there.st_ino);
}

// Waits for those that have ended. Whether others live.
bool some_live() {
  pid_t ended = 0;
  while ((ended = waitpid(-1, nullptr, WNOHANG)) > 0) continue;
  return ended == 0;
}

std::vector<pid_t> living(Orphans which) {
  std::vector<pid_t> found;
  if (!some_live()) return found;
  for (const pid_t process : box::all_processes()) {
    const auto state = box::state_of(process);
    if (!state || state->parent != getpid()) continue;
    if (which == Orphans::kAll || !is_in_box(process)) found.push_back(process);
  }
  return found;
}

std::string command_line_of(pid_t process) {
  std::string words = base::text_if_readable(in_proc(process, "cmdline").c_str());
  std::ranges::replace(words, '\0', ' ');
  return words;
}

}  // namespace

void adopt_orphans() {
  if (prctl(PR_SET_CHILD_SUBREAPER, 1) != 0)
    throw std::system_error(errno, std::generic_category(), "becoming the parent of orphans");
}

std::vector<std::string> orphans_that_live_on(Orphans which, std::chrono::milliseconds patience) {
  const auto deadline = Clock::now() + patience;
  std::vector<pid_t> orphans = living(which);
  while (!orphans.empty() && Clock::now() < deadline) {
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
    orphans = living(which);
  }
  std::vector<std::string> sentences;
  for (const pid_t process : orphans) {
    sentences.push_back("the process " + std::to_string(process) + " lives on: " + command_line_of(process));
    kill(process, SIGKILL);
    waitpid(process, nullptr, 0);
  }
  return sentences;
}

}  // namespace storm
