#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <sstream>
#include <string_view>
#include <system_error>

#include "host/box/child.h"
#include "host/box/contents.h"
#include "host/box/number.h"
#include "host/spbox/daemon_process.h"
#include "host/spbox/enclosure.h"
#include "host/spbox/enter_box.h"
#include "host/spbox/verbs.h"

namespace spbox {
namespace {

namespace fs = std::filesystem;

// What may end a command. The terminal sends these to every process of its foreground group, spbox and bwrap included:
// those two stay until the command has ended in its own way.
constexpr std::array<int, 4> kEnding{SIGINT, SIGQUIT, SIGTERM, SIGHUP};

volatile sig_atomic_t command_pid = 0;
volatile sig_atomic_t early_signals = 0;  // a bit for each that came before the command was there, and waits for it

constexpr int bit_of(int signal) {
  return 1 << signal;
}

// A signal for spbox alone is passed on. When the terminal goes, only the leader of its session hears of it.
void pass_on(int signal, siginfo_t *info, void * /*context*/) {
  const int error = errno;
  const bool for_all = info->si_code > 0 && !(signal == SIGHUP && getsid(0) == getpid());
  if (command_pid == 0) {
    early_signals = early_signals | bit_of(signal);
  } else if (!for_all) {
    kill(command_pid, signal);
  }
  errno = error;
}

[[noreturn]] void system_failure(const std::string &what) {
  throw std::system_error(errno, std::generic_category(), what);
}

// A program as the shell finds it; as it was given where it is not found, so that the failure is reported inside.
fs::path find_program(const std::string &name) {
  std::error_code error;
  if (name.find('/') != std::string::npos) return fs::absolute(name, error);
  const char *path = std::getenv("PATH");
  std::istringstream folders(path == nullptr ? "/usr/bin:/bin" : path);
  for (std::string folder; std::getline(folders, folder, ':');) {
    fs::path candidate = fs::absolute(folder.empty() ? "." : folder, error) / name;
    if (access(candidate.c_str(), X_OK) == 0) return candidate;
  }
  return {};
}

// A program that belongs to spbox: installed beside it, or in the folder beside its own where both were built.
fs::path find_part(const fs::path &spbox, const std::string &folder, const std::string &name) {
  for (const fs::path &at : {spbox.parent_path(), spbox.parent_path().parent_path() / folder}) {
    if (access((at / name).c_str(), X_OK) == 0) return at / name;
  }
  throw std::runtime_error(name + " is neither beside " + spbox.string() + " nor in ../" + folder + ". Build it, or " +
                           "put it beside spbox.");
}

std::string first_word_of(const char *file) {
  std::ifstream in(file);
  std::string word;
  in >> word;
  return word;
}

// Why the kernel may have refused a root of its own, as far as that can be told.
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

// The signals that were ignored already when spbox was started, and are to stay so: one letter each.
std::string ignored_now() {
  std::string letters;
  for (const int signal : kEnding) {
    struct sigaction old = {};
    sigaction(signal, nullptr, &old);
    letters += old.sa_handler == SIG_IGN ? 'i' : 'd';
  }
  return letters;
}

[[noreturn]] void become_bwrap(std::vector<std::string> arguments) {
  for (const int signal : kEnding) std::signal(signal, SIG_IGN);
  const box::ArgumentVector words(std::move(arguments));
  execvp("bwrap", words.data());
  // NOLINTNEXTLINE(concurrency-mt-unsafe): one thread
  std::fprintf(stderr, "spbox: bwrap cannot be run: %s.\n", std::strerror(errno));
  _exit(kFailure);
}

sigset_t ending_signals() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int signal : kEnding) sigaddset(&signals, signal);
  return signals;
}

void listen_for_signals() {
  for (const int signal : kEnding) {
    struct sigaction action = {};
    action.sa_sigaction = pass_on;
    action.sa_flags = SA_SIGINFO | SA_RESTART;
    action.sa_mask = ending_signals();
    sigaction(signal, &action, nullptr);
  }
}

// What comes until the other end is closed.
std::string read_to_end(int fd) {
  std::string text;
  char character = 0;
  for (ssize_t got = 0; (got = read(fd, &character, 1)) == 1 || (got < 0 && errno == EINTR);) {
    if (got == 1) text += character;
  }
  return text;
}

// Starts bwrap as a child and stays until it has ended. Returns the command's exit status.
//
// Until the command is inside nobody listens to the signals of its group but spbox. So that none is lost, and none comes
// twice, the command blocks them, tells its process id, and waits: spbox takes note of it, which divides the signals
// that spbox has to pass on from those that wait for the command itself.
int visit(std::vector<std::string> arguments, const std::vector<std::string> &command) {
  std::array<int, 2> ends{};
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) system_failure("socketpair");
  fcntl(ends[1], F_SETFD, 0);
  arguments.insert(arguments.end(), {"--", kSpboxInside, kEnter, std::to_string(ends[1]), ignored_now()});
  arguments.insert(arguments.end(), command.begin(), command.end());
  listen_for_signals();
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child < 0) system_failure("fork");
  if (child == 0) become_bwrap(std::move(arguments));
  close(ends[1]);
  // 0 when it never got there.
  command_pid = box::number_in<pid_t>(read_to_end(ends[0])).value_or(0);
  for (const int signal : kEnding) {
    if (command_pid > 0 && (early_signals & bit_of(signal)) != 0) kill(command_pid, signal);
  }
  close(ends[0]);
  const bool entered = command_pid > 0;
  const int status = box::exit_status_of(child);
  command_pid = 0;
  if (!entered) {
    throw std::runtime_error("the command was not run: no root of its own could be made for it (see above). " +
                             namespace_hint() + (geteuid() == 0 ? "." : ", or run spbox as root."));
  }
  return status;
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

int run(const fs::path &folder, bool pager, const std::vector<std::string> &command) {
  const box::Place place(fs::absolute(folder));
  box::model_of_box(box::Place{folder});  // says what is wrong where this is no box
  check_bwrap();
  if (pager) check_pager();
  Visit guest{.box = place,
              .spbox = fs::read_symlink("/proc/self/exe"),
              .control_program = {},
              .program = find_program(command.front()),
              .folder = fs::current_path(),
              .pager = pager};
  guest.control_program = find_part(guest.spbox, "programs", "control_program");
  const fs::path daemon = find_part(guest.spbox, "daemon", "monitor_daemon");
  MountPoints mount_points(place);
  for (const std::string &name : guests_in_tmp(guest)) mount_points.make(name, fs::is_directory("/tmp/" + name));
  const DaemonProcess answers(daemon, place);
  return visit(bwrap_arguments(guest), command);
}

// Why a program cannot be run inside the box's root, and what helps.
std::string cannot_run(const std::string &program, int error) {
  if (error == ENOENT && program.find('/') == std::string::npos) {
    return "there is no such program on the PATH in the box. The box has the workstation's programs, but of /tmp only "
           "the program's own folder, the working folder and spbox's.";
  }
  if (error == ENOENT && access(program.c_str(), F_OK) != 0) {
    return "there is no such file in the box. It has the workstation's folders, but a /tmp, a /dev and a /mgb of its "
           "own.";
  }
  if (error == ENOENT) return "the interpreter or loader that it names is not there.";
  if (error == EACCES) return "it is no program that may be run (see its permissions).";
  return std::string("it cannot be run: ") + std::strerror(error) + ".";  // NOLINT(concurrency-mt-unsafe): one thread
}

}  // namespace

int enter_box(int argc, char **argv) {
  if (argc < 3) return kUsage;
  const auto fd = box::number_in<int>(argv[0]);
  if (!fd) return kUsage;
  const sigset_t ending = ending_signals();
  sigset_t before;
  sigprocmask(SIG_BLOCK, &ending, &before);
  for (std::size_t i = 0; i < kEnding.size(); ++i) {
    if (argv[1][i] == 'd') std::signal(kEnding[i], SIG_DFL);
  }
  dprintf(*fd, "%d", static_cast<int>(getpid()));
  shutdown(*fd, SHUT_WR);
  read_to_end(*fd);  // nothing comes: spbox closes its end once it knows whom to pass signals on to
  close(*fd);
  sigprocmask(SIG_SETMASK, &before, nullptr);
  execvp(argv[2], argv + 2);
  const int error = errno;
  std::fprintf(stderr, "spbox: %s: %s\n", argv[2], cannot_run(argv[2], error).c_str());
  return error == ENOENT ? 127 : 126;
}

Verb run_verb() {
  struct Options {
    fs::path box;
    bool no_pager = false;
    std::vector<std::string> command;
  };
  auto options = std::make_shared<Options>();
  return {.name = "run",
          .line = "Run a command in the box, on this terminal",
          .words = {box_word(options->box),
                    {.name = "COMMAND",
                     .help = "The command and its arguments; -- may stand before it",
                     .to = Rest{&options->command},
                     .need = Need::kRequired},
                    {.name = "--no-pager",
                     .help = "Without a pager: /bin/busybox cannot be run",
                     .to = &options->no_pager}},
          .footer =
              "The command sees the workstation, but cannot write there. It has the box's\n"
              "databases, programs and times as /mgb, and the box's own /tmp. Of the\n"
              "workstation's /tmp it sees only what holds the program, the working folder or\n"
              "spbox. The exit status is the command's own, or 128 and the number of the\n"
              "signal that ended it.\n\n"
              "Examples:\n"
              "  spbox run box ./replace_unit\n"
              "  spbox run box /mgb/bin/ctlled -u /PSU#0 -c blink\n"
              "  spbox run box sh                         look around",
          .act = [options] { return run(options->box, !options->no_pager, options->command); }};
}

}  // namespace spbox
