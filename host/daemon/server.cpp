#include "host/daemon/server.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>

#include "host/box/daemon_socket.h"
#include "host/include/lmainte_host.h"

namespace monitor {
namespace {

constexpr std::size_t kMostPeers = 64, kMostWaiting = 64, kMostAtOnce = 64;
constexpr std::chrono::milliseconds kClosedFor{100};

[[noreturn]] void failure(const std::string &what) {
  throw std::system_error(errno, std::generic_category(), what);
}

void remove_socket(const std::filesystem::path &socket) {
  std::error_code error;
  std::filesystem::remove(socket, error);
}

base::Descriptor listener_at(const std::filesystem::path &socket) {
  std::filesystem::remove(socket);  // of a daemon that was killed
  base::Descriptor listener(box::daemon_socket(socket.parent_path(), socket.filename().native(), bind));
  if (listener.get() < 0) failure(socket.string());
  if (listen(listener.get(), SOMAXCONN) == 0) return listener;
  const int reason = errno;
  remove_socket(socket);
  errno = reason;
  failure(socket.string());
}

int open_spare() {
  return open("/", O_PATH | O_CLOEXEC);
}

}  // namespace

Server::Server(const box::Place &place)
    : socket_(place.daemons() / LMAINTE_HOST_MONITOR),
      listener_(listener_at(socket_)),
      spare_(open_spare()),
      monitor_(place) {}

Server::~Server() {
  for (const Peer &peer : peers_) close(peer.fd);
  listener_.reset();
  remove_socket(socket_);
}

std::vector<pollfd> Server::watched() const {
  std::vector<pollfd> watched;
  for (const Peer &peer : peers_) watched.push_back({peer.fd, POLLIN, 0});
  if (Clock::now() >= closed_until_) watched.push_back({listener_.get(), POLLIN, 0});
  return watched;
}

// Whoever finds no room hears of it at once: the connection ends.
void Server::accept_peers() {
  for (std::size_t i = 0; i < kMostAtOnce; ++i) {
    const bool came = peers_.size() < kMostPeers ? admit_one() : turn_one_away();
    if (came || errno == ECONNABORTED || errno == EINTR) continue;
    if (errno == EAGAIN) return;
    const bool no_descriptor = errno == EMFILE || errno == ENFILE;
    if (no_descriptor && turn_one_away()) continue;
    if (errno != EAGAIN) closed_until_ = Clock::now() + kClosedFor;
    return;
  }
}

// Both: false with errno set where nobody came in.
bool Server::admit_one() {
  const int fd = accept4(listener_.get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
  if (fd >= 0) peers_.push_back({fd, {}});
  return fd >= 0;
}

bool Server::turn_one_away() {
  spare_.reset();
  base::Descriptor peer(accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC));
  const bool came = peer.get() >= 0;
  peer.reset();
  const int reason = errno;
  spare_ = base::Descriptor(open_spare());
  errno = reason;
  return came;
}

bool Server::hear(Peer &peer) {
  std::array<std::uint8_t, LMAINTE_HOST_MESSAGE_MOST> request;
  const ssize_t length = recv(peer.fd, request.data(), request.size(), 0);
  if (length < 0) return errno == EAGAIN || errno == EINTR;
  if (length == 0) return false;
  Answer answer = monitor_.answer({request.data(), static_cast<std::size_t>(length)});
  if (answer.hangs_up || peer.replies.size() == kMostWaiting) return false;
  if (!answer.reply.empty()) peer.replies.push_back({Clock::now() + answer.delay, std::move(answer.reply)});
  return true;
}

// A peer that does not read what it asked for is left.
bool Server::speak(Peer &peer) {
  while (!peer.replies.empty() && peer.replies.front().due <= Clock::now()) {
    const box::Bytes &reply = peer.replies.front().reply;
    if (send(peer.fd, reply.data(), reply.size(), MSG_NOSIGNAL) < 0) return false;
    peer.replies.pop_front();
  }
  return true;
}

int Server::milliseconds_left() const {
  constexpr auto kNever = Clock::time_point::max();
  const auto now = Clock::now();
  auto next = closed_until_ > now ? closed_until_ : kNever;
  for (const Peer &peer : peers_) {
    if (!peer.replies.empty()) next = std::min(next, peer.replies.front().due);
  }
  if (next == kNever) return -1;
  return static_cast<int>(std::chrono::ceil<std::chrono::milliseconds>(std::max(next, now) - now).count());
}

void Server::step(const sigset_t &signals) {
  std::vector<pollfd> polled = watched();
  const int left = milliseconds_left();
  const timespec limit{left / 1000, left % 1000 * 1'000'000L};
  const int ready = ppoll(polled.data(), polled.size(), left < 0 ? nullptr : &limit, &signals);
  if (ready < 0 && errno != EINTR) failure("waiting for requests");
  auto at = polled.begin();
  for (auto peer = peers_.begin(); peer != peers_.end();) {
    const bool came = ready > 0 && (at++)->revents != 0;
    const bool stays = (!came || hear(*peer)) && speak(*peer);
    if (!stays) close(peer->fd);
    peer = stays ? std::next(peer) : peers_.erase(peer);
  }
  if (ready > 0) accept_peers();
}

}  // namespace monitor
