#include "host/terminal/session.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <system_error>
#include <utility>

#include "host/base/child.h"
#include "host/base/number.h"
#include "host/base/pipe.h"

namespace terminal {

// What the leader tells: first the command's process id, then its wait status each time that it stops, and when it ends. One write each, so never torn.
struct Session::Report {
  int value;
};

namespace {

volatile pid_t g_command = 0;

void pass_on(int signal) {
  const int saved = errno;
  if (g_command > 0) kill(-g_command, signal);
  errno = saved;
}

void keep_only(int first, int second) {
  const auto low = static_cast<unsigned>(std::min(first, second));
  const auto high = static_cast<unsigned>(std::max(first, second));
  if (low > 3) close_range(3, low - 1, 0);
  if (high > low + 1) close_range(low + 1, high - 1, 0);
  close_range(high + 1, ~0U, 0);
}

void default_signals() {
  for (int number = 1; number < NSIG; ++number) signal(number, SIG_DFL);
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
}

// The terminal belongs to the group that runs in its foreground; taking it from the background raises SIGTTOU.
void take_foreground(pid_t group) {
  signal(SIGTTOU, SIG_IGN);
  tcsetpgrp(STDIN_FILENO, group);
  signal(SIGTTOU, SIG_DFL);
}

[[noreturn]] void become_command(const base::ArgumentVector &arguments, int exec_error) {
  setpgid(0, 0);
  take_foreground(getpid());
  setenv("TERM", "xterm", 1);
  unsetenv("LINES");
  unsetenv("COLUMNS");
  execvp(arguments.program(), arguments.data());
  base::cannot_become_program(exec_error, errno);
}

[[noreturn]] void lead(const char *terminal_path, const base::ArgumentVector &arguments, int reports, int exec_error) {
  keep_only(reports, exec_error);
  default_signals();
  prctl(PR_SET_PDEATHSIG, SIGKILL);  // A leader whose session is gone, killed perhaps, would wait for ever.
  setsid();
  const int tty = open(terminal_path, O_RDWR);
  if (tty < 0 || ioctl(tty, TIOCSCTTY, 0) != 0) base::cannot_become_program(exec_error, errno);
  for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd) dup2(tty, fd);
  if (tty > STDERR_FILENO) close(tty);

  const pid_t command = fork();
  if (command < 0) base::cannot_become_program(exec_error, errno);
  if (command == 0) become_command(arguments, exec_error);
  close(exec_error);
  g_command = command;
  signal(SIGHUP, pass_on);  // A shell whose terminal is gone tells its command, too.

  int status = 0;
  if (write(reports, &command, sizeof command) < 0) _exit(126);
  do {
    while (waitpid(command, &status, WUNTRACED) < 0 && errno == EINTR) continue;
    if (!WIFSTOPPED(status)) take_foreground(getpid());
    if (write(reports, &status, sizeof status) < 0) _exit(126);
  } while (WIFSTOPPED(status));
  for (;;) pause();
}

struct Stat {
  std::string name;
  char state;
  pid_t parent;
  pid_t session;
};

// The line reads: pid (name) state parent group session ... The name may hold blanks and parentheses itself.
std::optional<Stat> stat_of(const std::filesystem::path &process) {
  std::ifstream file(process / "stat");
  // A process may have gone meanwhile; that there is no descriptor to look at it is another matter.
  if (!file.is_open() && (errno == EMFILE || errno == ENFILE)) {
    throw std::system_error(errno, std::generic_category(), process.string());
  }
  std::string line;
  std::getline(file, line);
  const auto open = line.find('(');
  const auto close = line.rfind(')');
  if (open == std::string::npos || close == std::string::npos) return {};
  Stat stat{line.substr(open + 1, close - open - 1), 0, 0, 0};
  int group = 0;
  std::istringstream rest(line.substr(close + 1));
  if (!(rest >> stat.state >> stat.parent >> group >> stat.session)) return {};
  return stat;
}

}  // namespace

std::optional<pid_t> eldest(const std::vector<Process> &processes, std::string_view name) {
  std::map<pid_t, pid_t> parents;
  for (const auto &process : processes) {
    if (process.name == name) parents.emplace(process.pid, process.parent);
  }
  const auto is_forked_by_none = [&](const auto &named) { return !parents.contains(named.second); };
  const auto found = std::find_if(parents.begin(), parents.end(), is_forked_by_none);
  return found != parents.end() ? std::optional(found->first) : std::nullopt;
}

std::string text(const Ending &ending) {
  const auto number = std::to_string(ending.number);
  return ending.by_signal ? "signal " + number + " (" + strsignal(ending.number) + ")" : "exit status " + number;
}

Session::Session(const std::string &terminal_path, const std::vector<std::string> &command) {
  const base::ArgumentVector arguments(command);
  base::Pipe reports, exec_error;
  const auto fail = [&](int error) {
    throw std::system_error(error, std::generic_category(), "cannot run " + command.at(0));
  };
  // NOLINTNEXTLINE(cppcoreguidelines-prefer-member-initializer): what can throw comes before the child
  leader_ = fork();
  if (leader_ < 0) fail(errno);
  if (leader_ == 0) lead(terminal_path.c_str(), arguments, reports.in.get(), exec_error.in.get());
  reports.in.reset();
  exec_error.in.reset();
  reports_ = std::move(reports.out);

  int error = 0;  // Nothing comes where execve succeeds.
  const bool failed = read(exec_error.out.get(), &error, sizeof error) == sizeof error;
  command_ = next_report().value;
  if (!failed && command_ > 0) return;
  end();
  fail(failed ? error : EIO);
}

Session::~Session() {
  end();
}

void Session::kill_all() const {
  for (int round = 0; round < 100 && !processes().empty(); ++round) {
    for (const auto &process : processes()) kill(process.pid, SIGKILL);
    usleep(10'000);
  }
}

void Session::end() const noexcept {
  if (leader_ <= 0) return;
  try {
    kill_all();
  } catch (const std::exception &) {
    // Without /proc only the command's own group is known. The leader tells when it has buried the command.
    if (command_ > 0) kill(-command_, SIGKILL);
    pollfd wait{reports_.get(), POLLIN, 0};
    if (!ending_) poll(&wait, 1, 1000);
  }
  kill(leader_, SIGKILL);
  waitpid(leader_, nullptr, 0);
}

Session::Report Session::next_report() const {
  Report report{-1};
  if (read(reports_.get(), &report, sizeof report) != sizeof report) report.value = -1;
  return report;
}

void Session::take_reports() {
  pollfd wait{reports_.get(), POLLIN, 0};
  while (!ending_ && poll(&wait, 1, 0) > 0) {
    const int status = next_report().value;
    if (WIFSTOPPED(status)) {
      is_stopped_ = true;
    } else {
      ending_ = WIFSIGNALED(status) ? Ending{true, WTERMSIG(status)} : Ending{false, WEXITSTATUS(status)};
    }
  }
}

std::optional<Ending> Session::ending() {
  take_reports();
  return ending_;
}

bool Session::take_stop() {
  take_reports();
  return std::exchange(is_stopped_, false);
}

void Session::go_on() const {
  kill(-command_, SIGCONT);
}

std::vector<Process> Session::processes() const {
  std::vector<Process> found;
  for (const auto &entry : std::filesystem::directory_iterator("/proc")) {
    const pid_t pid = base::number_in<pid_t>(entry.path().filename().native()).value_or(0);
    if (pid <= 0 || pid == leader_) continue;
    const auto stat = stat_of(entry.path());
    if (stat && stat->session == leader_ && stat->state != 'Z' && stat->state != 'X') {
      found.push_back({pid, stat->parent, stat->name});
    }
  }
  return found;
}

}  // namespace terminal
