#include "failures/traced.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <map>
#include <set>
#include <system_error>
#include <utility>

#include "host/base/child.h"
#include "host/base/descriptor.h"
#include "host/base/pipe.h"

namespace failures {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kForTheLast{3};  // processes that end behind the program
const std::set<std::string> kImages{"spbox", "bwrap", "monitor_daemon"};

[[noreturn]] void fail(const char *what) {
  throw std::system_error(errno, std::generic_category(), what);
}

// What becomes of the call in which a process is.
struct Fate {
  bool changes = false;
  std::optional<int> error;
  user_regs_struct before{};
};

struct Process {
  std::string name, image;
  bool counts = false;
  unsigned long loader_begin = 0, loader_end = 0;
  unsigned children = 0;
  std::map<const Call *, unsigned> calls;
  Fate fate;
};

class Tracer {
 public:
  Tracer(const std::optional<Failure> &failure, Run &run) : failure_(failure), run_(run) {}

  void begin(pid_t first) {
    first_ = first;
    processes_[first].name = "0";
    constexpr long kOptions = PTRACE_O_TRACESYSGOOD | PTRACE_O_TRACEFORK | PTRACE_O_TRACEVFORK | PTRACE_O_TRACECLONE |
                              PTRACE_O_TRACEEXEC | PTRACE_O_EXITKILL;
    if (ptrace(PTRACE_SEIZE, first, nullptr, kOptions) != 0) fail("ptrace");
    if (ptrace(PTRACE_INTERRUPT, first, nullptr, nullptr) != 0) fail("ptrace");
  }

  void go(Clock::time_point end) {
    while (!processes_.empty()) {
      int status = 0;
      const pid_t process = waitpid(-1, &status, __WALL);
      if (process < 0 && errno == ECHILD) return;
      if (process >= 0) take(process, status);
      if (run_.status) end = std::min(end, ended_ + kForTheLast);
      if (Clock::now() >= end) return end_all();
    }
  }

 private:
  void end_all() {
    for (const auto &[pid, process] : processes_) {
      if (run_.status) run_.left.push_back(process.image + " " + process.name);
      kill(pid, SIGKILL);
    }
    while (waitpid(-1, nullptr, __WALL) >= 0 || errno == EINTR) {
    }
    processes_.clear();
  }

  void take(pid_t pid, int status) {
    if (WIFEXITED(status) || WIFSIGNALED(status)) {
      if (pid == first_) {
        run_.status = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
        ended_ = Clock::now();
      }
      processes_.erase(pid);
      return;
    }
    const int signal = WSTOPSIG(status), event = status >> 16;
    int delivered = 0;
    auto next = PTRACE_SYSCALL;
    if (signal == (SIGTRAP | 0x80)) {
      at_call(pid, processes_[pid]);
    } else if (event == PTRACE_EVENT_EXEC) {
      become(pid, processes_[pid]);
    } else if (event == PTRACE_EVENT_FORK || event == PTRACE_EVENT_VFORK || event == PTRACE_EVENT_CLONE) {
      add_child(pid);
    } else if (event == PTRACE_EVENT_STOP) {
      if (signal == SIGSTOP || signal == SIGTSTP || signal == SIGTTIN || signal == SIGTTOU) next = PTRACE_LISTEN;
    } else if (event == 0) {
      delivered = signal;
    }
    ptrace(next, pid, nullptr, delivered);
  }

  void add_child(pid_t pid) {
    unsigned long child = 0;
    if (ptrace(PTRACE_GETEVENTMSG, pid, nullptr, &child) != 0) return;
    Process &parent = processes_[pid];
    Process &added = processes_[static_cast<pid_t>(child)];  // which may have come first
    added.name = parent.name + "." + std::to_string(++parent.children);
    added.image = parent.image;
    added.counts = parent.counts;
    added.loader_begin = parent.loader_begin;
    added.loader_end = parent.loader_end;
  }

  static void become(pid_t pid, Process &process) {
    const std::string folder = "/proc/" + std::to_string(pid);
    std::error_code gone;
    process.image = fs::read_symlink(folder + "/exe", gone).filename();
    process.counts = kImages.contains(process.image);
    process.loader_begin = process.loader_end = 0;
    std::ifstream maps(folder + "/maps");
    for (std::string line; std::getline(maps, line);) {
      if (line.find("/ld-linux") == std::string::npos) continue;
      const auto dash = line.find('-');
      if (process.loader_begin == 0) process.loader_begin = std::stoul(line, nullptr, 16);
      process.loader_end = std::stoul(line.substr(dash + 1), nullptr, 16);
    }
  }

  void at_call(pid_t pid, Process &process) {
    __ptrace_syscall_info info{};
    if (ptrace(PTRACE_GET_SYSCALL_INFO, pid, sizeof info, &info) <= 0) return;
    if (info.op == PTRACE_SYSCALL_INFO_EXIT) return settle(pid, process);
    if (info.op != PTRACE_SYSCALL_INFO_ENTRY || !process.counts) return;
    if (info.instruction_pointer >= process.loader_begin && info.instruction_pointer < process.loader_end) return;
    const Call *const call = call_of(static_cast<long>(info.entry.nr));
    if (call == nullptr) {
      run_.unknown.push_back(std::to_string(info.entry.nr));
      return;
    }
    if (!can_fail(*call, info)) return;
    const unsigned number = ++process.calls[call];
    if (!failure_) {
      run_.moments.push_back({process.name, process.image, call, number});
    } else if (failure_->reaches(process.name, *call, number, run_.has_failed)) {
      begin_failure(pid, process, info);
    }
  }

  // Some of their uses cannot.
  static bool can_fail(const Call &call, const __ptrace_syscall_info &info) {
    const auto *const words = info.entry.args;
    if (call.number == SYS_fcntl) return words[1] == F_SETLK || words[1] == F_SETLKW || words[1] == F_GETLK;
    if (call.number == SYS_brk) return words[0] != 0;
    return !call.errors.empty();
  }

  void begin_failure(pid_t pid, Process &process, const __ptrace_syscall_info &info) {
    Fate &fate = process.fate;
    if (ptrace(PTRACE_GETREGS, pid, nullptr, &fate.before) != 0) return;
    constexpr unsigned long kAllOrNothing = 8;  // so many bytes go through an eventfd
    const bool is_short = failure_->error == kShort;
    if (is_short && (process.image != "spbox" || fate.before.rdx <= kAllOrNothing)) return;
    fate.changes = true;
    run_.has_failed = true;
    const bool is_write = info.entry.nr == SYS_write || info.entry.nr == SYS_writev;
    run_.was_silenced = run_.was_silenced || (is_write && info.entry.args[0] == STDERR_FILENO);
    user_regs_struct now = fate.before;
    if (is_short) {
      now.rdx /= 2;
    } else if (info.entry.nr == SYS_brk) {
      now.rdi = 0;  // it answers where the end is: it did not move
    } else {
      fate.error = failure_->error;
      if (failure_->moment.call->failing == Call::Failing::kUndone) now.orig_rax = static_cast<unsigned long>(-1);
    }
    ptrace(PTRACE_SETREGS, pid, nullptr, &now);
  }

  // The program finds its registers as it left them.
  static void settle(pid_t pid, Process &process) {
    const Fate fate = std::exchange(process.fate, {});
    user_regs_struct now{};
    if (!fate.changes || ptrace(PTRACE_GETREGS, pid, nullptr, &now) != 0) return;
    if (fate.error) now.rax = static_cast<unsigned long>(-static_cast<long>(*fate.error));
    now.rdi = fate.before.rdi;
    now.rdx = fate.before.rdx;
    ptrace(PTRACE_SETREGS, pid, nullptr, &now);
  }

  const std::optional<Failure> &failure_;
  Run &run_;
  pid_t first_ = -1;
  Clock::time_point ended_;
  std::map<pid_t, Process> processes_;
};

[[noreturn]] void become(const base::ArgumentVector &words, const fs::path &folder, int go, int output, int error) {
  char nothing = 0;
  const int input = open("/dev/null", O_RDONLY | O_CLOEXEC);
  const bool is_ready = read(go, &nothing, 1) >= 0 && chdir(folder.c_str()) == 0 && dup2(input, STDIN_FILENO) >= 0 &&
                        dup2(output, STDOUT_FILENO) >= 0 && dup2(error, STDERR_FILENO) >= 0;
  if (is_ready) execvp(words.program(), words.data());
  _exit(127);
}

std::string text_in(int fd) {
  std::string text;
  std::array<char, 65536> part;
  off_t at = 0;
  for (ssize_t size = 0; (size = pread(fd, part.data(), part.size(), at)) > 0; at += size) {
    text.append(part.data(), static_cast<std::size_t>(size));
  }
  return text;
}

base::Descriptor memory_file(const char *name) {
  base::Descriptor file(memfd_create(name, MFD_CLOEXEC));
  if (file.get() < 0) fail(name);
  return file;
}

// Lets waitpid return ten times a second, so that the time can be looked at.
class Ticking {
 public:
  Ticking() {
    struct sigaction action {};
    action.sa_handler = [](int) {};
    sigaction(SIGALRM, &action, nullptr);
    set(100'000);
  }
  ~Ticking() { set(0); }
  Ticking(const Ticking &) = delete;
  Ticking &operator=(const Ticking &) = delete;

 private:
  static void set(suseconds_t every) {
    const itimerval timer{{0, every}, {0, every}};
    setitimer(ITIMER_REAL, &timer, nullptr);
  }
};

}  // namespace

Run run_traced(const Words &command, const fs::path &folder, const std::optional<Failure> &failure,
               std::chrono::seconds patience) {
  prctl(PR_SET_CHILD_SUBREAPER, 1);
  const base::ArgumentVector words(command);
  const base::Descriptor output = memory_file("output"), error = memory_file("error");
  base::Pipe go;
  Run run;
  Tracer tracer(failure, run);
  const pid_t first = fork();
  if (first < 0) base::no_process_for(command.at(0));
  if (first == 0) {
    go.in.reset();
    become(words, folder, go.out.get(), output.get(), error.get());
  }
  const Ticking ticking;
  tracer.begin(first);
  go.in.reset();
  tracer.go(Clock::now() + patience);
  run.output = text_in(output.get());
  run.error = text_in(error.get());
  return run;
}

}  // namespace failures
