#include "host/target/line.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>

#include "host/platform/path_in_box.h"

namespace target {
namespace {

using wire::Kind;
using wire::Reader;
using wire::Writer;

// Where a command's own descriptors are not expected.
constexpr int kOutOfTheWay = 200;

struct Line {
  int fd = -1;
  pid_t owner = 0;  // a child of fork has a line of its own
  std::uint32_t sequence = 0;
  std::uint32_t open = 0,
                unusable = 0;  // databases, by bits; unusable: the parent has it open, or a line that broke had
  bool is_busy = false;        // a signal handler has come in between
};
constinit Line line;

int failed(int fd) {
  if (fd >= 0) close(fd);
  return -1;
}

int moved_out_of_the_way(int fd) {
  const int moved = fcntl(fd, F_DUPFD_CLOEXEC, kOutOfTheWay);
  if (moved < 0) return fd;
  close(fd);
  return moved;
}

bool sent(int fd, Writer &message) {
  const auto bytes = message.message();
  return !bytes.empty() && send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(bytes.size());
}

int connected() {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  const platform::PathInBox path(wire::kSocketLink);
  const std::size_t length = path.is_whole() ? std::strlen(path.text()) : sizeof address.sun_path;
  if (length >= sizeof address.sun_path) return -1;
  std::memcpy(address.sun_path, path.text(), length);
  int fd = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
  if (fd < 0) return -1;
  fd = moved_out_of_the_way(fd);
  if (connect(fd, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0) return failed(fd);
  std::array<std::uint8_t, wire::kLongestShort> room;
  Writer hello(room, Kind::kHello);
  hello.word(wire::kVersion).word(static_cast<std::uint32_t>(wire::kByteOrder)).word(line.unusable);
  return sent(fd, hello) ? fd : failed(fd);
}

// The parent's line stays the parent's.
void begin_as_child() {
  const pid_t self = getpid();
  if (line.owner == self) return;
  if (line.owner != 0 && line.fd >= 0) close(line.fd);
  line = {.fd = -1, .owner = self, .sequence = 0, .open = 0, .unusable = line.unusable | line.open};
}

// Takes a signal that the platform asks for, with the caller's own mask.
bool take_signal(int fd, Reader message, const sigset_t &callers, const sigset_t &held) {
  const std::int32_t signal = message.number();
  if (!message.is_whole()) return false;
  sigprocmask(SIG_SETMASK, &callers, nullptr);
  raise(signal);
  sigprocmask(SIG_SETMASK, &held, nullptr);
  std::array<std::uint8_t, wire::kHeadSize> room;
  Writer go_on(room, Kind::kGoOn, message.sequence());
  return sent(fd, go_on);
}

bool answer_on(int fd, std::uint32_t sequence, std::span<std::uint8_t> room, Reader &answer, const sigset_t &callers,
               const sigset_t &held) {
  for (;;) {
    pollfd watched{fd, POLLIN, 0};
    if (ppoll(&watched, 1, nullptr, &callers) < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    const ssize_t size = recv(fd, room.data(), room.size(), MSG_TRUNC);
    if (size <= 0 || static_cast<std::size_t>(size) > room.size()) return false;
    answer = Reader(room.first(static_cast<std::size_t>(size)));
    if (!answer.is_good() || answer.sequence() != sequence) return false;
    if (answer.kind() == Kind::kReply) return true;
    if (answer.kind() != Kind::kSignal || !take_signal(fd, answer, callers, held)) return false;
  }
}

// What was open is lost with it.
void break_line() {
  line.fd = failed(line.fd);
  line.unusable |= line.open;
  line.open = 0;
}

// A request that cannot even be sent was not heard: it goes by a new line.
bool exchange_on_main(Writer &request, std::span<std::uint8_t> room, Reader &answer, const sigset_t &callers,
                      const sigset_t &held) {
  const std::uint32_t sequence = ++line.sequence;
  request.set_sequence(sequence);
  bool is_sent = false;
  for (int attempt = 0; attempt < 2 && !is_sent; ++attempt) {
    if (line.fd < 0) line.fd = connected();
    if (line.fd < 0) return false;
    is_sent = sent(line.fd, request);
    if (!is_sent) break_line();
  }
  if (!is_sent) return false;
  line.is_busy = true;
  const bool is_answered = answer_on(line.fd, sequence, room, answer, callers, held);
  line.is_busy = false;
  if (!is_answered) break_line();
  return is_answered;
}

// In a signal handler that came in between: by a line of its own.
bool exchange_between(Writer &request, std::span<std::uint8_t> room, Reader &answer, const sigset_t &callers,
                      const sigset_t &held) {
  const int fd = connected();
  const std::uint32_t sequence = ++line.sequence;
  request.set_sequence(sequence);
  const bool is_answered = fd >= 0 && sent(fd, request) && answer_on(fd, sequence, room, answer, callers, held);
  failed(fd);
  return is_answered;
}

}  // namespace

bool exchange(Writer &request, std::span<std::uint8_t> room, Reader &answer) noexcept {
  const int kept_errno = errno;
  sigset_t held, callers;
  sigfillset(&held);
  sigprocmask(SIG_SETMASK, &held, &callers);
  begin_as_child();
  const bool is_answered = line.is_busy ? exchange_between(request, room, answer, callers, held)
                                        : exchange_on_main(request, room, answer, callers, held);
  sigprocmask(SIG_SETMASK, &callers, nullptr);
  errno = kept_errno;
  return is_answered;
}

bool is_between() noexcept {
  return line.is_busy && line.owner == getpid();
}

void note_open(std::uint32_t db_id, bool is_open) noexcept {
  if (db_id >= 32) return;
  const std::uint32_t bit = 1U << db_id;
  line.open = is_open ? line.open | bit : line.open & ~bit;
  line.unusable &= ~bit;
}

}  // namespace target
