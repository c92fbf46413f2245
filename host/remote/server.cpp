#include "host/remote/server.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <system_error>

#include "host/box/daemon_socket.h"
#include "host/remote/stand_in.h"

namespace remote {
namespace {

constexpr std::chrono::milliseconds kPatience{200};  // with a stand-in whose process has ended
constexpr timespec kPause{0, 100'000'000};           // where nobody can be let in

void remove_listener(const std::filesystem::path &socket) {
  std::error_code error;
  std::filesystem::remove(socket, error);
}

base::Descriptor new_listener(const std::filesystem::path &socket) {
  std::filesystem::create_directories(socket.parent_path());
  remove_listener(socket);
  base::Descriptor listener(box::daemon_socket(socket.parent_path(), socket.filename().native(), bind));
  if (listener.get() >= 0 && listen(listener.get(), SOMAXCONN) == 0) return listener;
  const int reason = errno;
  remove_listener(socket);
  throw std::system_error(reason, std::generic_category(), socket.string());
}

// Whoever waits for this server's end is not to wait for a stand-in's.
void close_all_but(int fd) {
  close_range(STDERR_FILENO + 1, static_cast<unsigned>(fd) - 1, 0);
  close_range(static_cast<unsigned>(fd) + 1, UINT_MAX, 0);
}

// A wait lets none in where there is something to do at once.
void let_in(const sigset_t &signals) {
  sigset_t own;
  sigprocmask(SIG_SETMASK, &signals, &own);
  sigprocmask(SIG_SETMASK, &own, nullptr);
}

// Until one ends, or for a while.
void wait_for_a_child() {
  sigset_t ends;
  sigemptyset(&ends);
  sigaddset(&ends, SIGCHLD);
  sigtimedwait(&ends, nullptr, &kPause);
}

bool is_readable(int fd) {
  pollfd watched{fd, POLLIN, 0};
  return poll(&watched, 1, 0) == 1;
}

}  // namespace

Server::Server(const box::Place &place, const std::string &name, Tally &tally)
    : socket_(place.daemons() / name), listener_(new_listener(socket_)), tally_(tally) {}

Server::~Server() {
  listener_.reset();
  remove_listener(socket_);
  const auto end = std::chrono::steady_clock::now() + kPatience;
  for (see_off(); has_to_be_seen_off() && std::chrono::steady_clock::now() < end; see_off()) wait_for_a_child();
  end_stand_ins_of_the_dead();
}

void Server::step(const sigset_t &signals) {
  see_off();
  pollfd watched{listener_.get(), POLLIN, 0};
  if (ppoll(&watched, 1, nullptr, &signals) != 1) return;
  let_in(signals);
  admit_one(signals);
}

void Server::admit_one(const sigset_t &signals) {
  base::Descriptor channel(accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC));
  if (channel.get() < 0) {
    ppoll(nullptr, 0, &kPause, &signals);
    return;
  }
  ucred peer{};
  socklen_t size = sizeof peer;
  if (getsockopt(channel.get(), SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0) return;
  base::Descriptor end_of_peer(static_cast<int>(syscall(SYS_pidfd_open, peer.pid, 0)));
  const pid_t child = stand_ins_.size() < kMostStandIns ? fork() : -1;
  if (child < 0) {
    ++tally_.turned_away;
    return;
  }
  if (child > 0) {
    stand_ins_.push_back({child, std::move(end_of_peer)});
    return;
  }
  listener_.reset();
  end_of_peer.reset();
  stand_ins_.clear();
  close_all_but(channel.get());
  std::signal(SIGTERM, SIG_DFL);
  std::signal(SIGCHLD, SIG_DFL);
  sigprocmask(SIG_SETMASK, &signals, nullptr);
  _exit(stand_in_for(std::move(channel), peer.pid) == Ending::kIsGone ? 0 : kMadeNoSense);
}

bool Server::is_of_the_dead(const StandIn &stand_in) {
  return stand_in.end_of_peer.get() < 0 || is_readable(stand_in.end_of_peer.get());
}

void Server::count(int status) {
  if (WIFSIGNALED(status)) ++tally_.died;
  if (WIFEXITED(status) && WEXITSTATUS(status) == kMadeNoSense) ++tally_.senseless;
}

void Server::see_off() {
  stand_ins_.remove_if([&](const StandIn &stand_in) {
    int status = 0;
    const pid_t ended = waitpid(stand_in.process, &status, WNOHANG);
    if (ended == stand_in.process) count(status);
    return ended != 0;
  });
}

bool Server::has_to_be_seen_off() const {
  return std::ranges::any_of(stand_ins_, is_of_the_dead);
}

// Such a one waits for the lock of a database, in the middle of a call that its process died in.
void Server::end_stand_ins_of_the_dead() const {
  for (const StandIn &stand_in : stand_ins_) {
    if (!is_of_the_dead(stand_in)) continue;
    kill(stand_in.process, SIGKILL);
    waitpid(stand_in.process, nullptr, 0);
  }
}

}  // namespace remote
