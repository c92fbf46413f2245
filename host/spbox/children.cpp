#include "host/spbox/children.h"

#include <poll.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <set>
#include <system_error>

#include "host/base/descriptor.h"
#include "host/box/inhabitants.h"
#include "host/clock/hours.h"

namespace spbox {
namespace {

constexpr std::chrono::milliseconds kLookForOrphans{20};

[[noreturn]] void failure(const char *what) {
  throw std::system_error(errno, std::generic_category(), what);
}

std::set<pid_t> children_of_this_process() {
  std::set<pid_t> children;
  for (const pid_t process : box::all_processes()) {
    const auto state = box::state_of(process);
    if (state && state->parent == getpid()) children.insert(process);
  }
  return children;
}

// Until the child ends, or it is time to look for others that have.
void let_time_pass(pid_t child) {
  const base::Descriptor its_end(static_cast<int>(syscall(SYS_pidfd_open, child, 0)));
  pollfd watched{its_end.get(), POLLIN, 0};
  box_time::poll_by_wall({&watched, 1}, box_time::wall() + kLookForOrphans);
}

}  // namespace

Children::Children() {
  if (prctl(PR_SET_CHILD_SUBREAPER, 1) != 0) failure("becoming the parent of orphans");
}

bool Children::has_ended(pid_t child) const {
  if (expected_.at(child)) return true;
  siginfo_t info{};
  return waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOHANG | WNOWAIT) == 0 && info.si_pid == child;
}

int Children::exit_status_of(pid_t child) {
  const std::optional<int> &ended = expected_.at(child);
  const int how = box_time::is_keeper() ? WNOHANG : 0;
  while (!ended) {
    int status = 0;
    const pid_t process = waitpid(-1, &status, how);
    if (process == 0) let_time_pass(child);
    if (process < 0 && errno != EINTR) failure("waiting for a child process");
    const auto known = expected_.find(process);
    if (known != expected_.end()) known->second = status;
  }
  return WIFSIGNALED(*ended) ? 128 + WTERMSIG(*ended) : WEXITSTATUS(*ended);
}

// Those that start others as fast as they are ended are given up in the end.
void Children::end_orphans() const {
  constexpr int kRounds = 100;
  for (int round = 0; round < kRounds; ++round) {
    std::set<pid_t> orphans = children_of_this_process();
    for (const auto &[child, status] : expected_) orphans.erase(child);
    if (orphans.empty()) return;
    for (const pid_t orphan : orphans) kill(orphan, SIGKILL);
    for (const pid_t orphan : orphans) waitpid(orphan, nullptr, 0);
  }
}

}  // namespace spbox
