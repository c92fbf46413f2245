#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstring>
#include <ctime>

#include "host/base/descriptor.h"
#include "host/box/daemon_socket.h"
#include "host/box/place.h"
#include "host/platform/calls.h"
#include "host/platform/exported.h"
#include "host/platform/points.h"
#include "include/lmainte_record.h"

namespace {

struct Channel {
  int fd = -1;
  uint32_t asked = 0;  // the sequence of the last request
};

using Message = std::array<uint8_t, LMAINTE_HOST_MESSAGE_MOST>;

constexpr int64_t kSecond = 1'000'000'000;
constexpr int64_t kLongestWait = INT_MAX;  // seconds

// The process's channels. A free place has no descriptor.
std::array<Channel, LMAINTE_HOST_CHANNELS_MOST> channels;

int32_t failed(int reason) {
  errno = reason;
  return -1;
}

// A free place, for -1.
Channel *channel_of(int fd) {
  auto *const found = std::find_if(channels.begin(), channels.end(), [&](const Channel &at) { return at.fd == fd; });
  return found == channels.end() ? nullptr : found;
}

Channel *open_channel(int fd) {
  return fd < 0 ? nullptr : channel_of(fd);
}

lmainte_host_message head_of(const void *message) {
  lmainte_host_message head;
  std::memcpy(&head, message, sizeof head);
  return head;
}

// A reply to a request before the last one: its asker has given up.
bool is_late(const Channel &channel, const void *message, ssize_t length) {
  return length >= static_cast<ssize_t>(sizeof(lmainte_host_message)) && head_of(message).sequence != channel.asked;
}

// Whether there is something to receive: a message that is not late, or the daemon's end.
bool is_ready(const Channel &channel) {
  lmainte_host_message head;
  ssize_t length = 0;
  while ((length = recv(channel.fd, &head, sizeof head, MSG_PEEK)) > 0 && is_late(channel, &head, length)) {
    recv(channel.fd, &head, sizeof head, 0);
  }
  return length >= 0 || errno != EAGAIN;
}

int64_t now() {
  timespec time{};
  clock_gettime(CLOCK_MONOTONIC, &time);
  return static_cast<int64_t>(time.tv_sec) * kSecond + time.tv_nsec;
}

struct Watch {
  std::array<pollfd, LMAINTE_HOST_CHANNELS_MOST> polled;
  nfds_t count = 0;

  Watch() {
    for (const Channel &channel : channels) {
      if (channel.fd >= 0) polled[count++] = {channel.fd, POLLIN, 0};
    }
  }

  // Waits for anything at all until the deadline. Returns as poll does, and 0 after a signal that came too late.
  int wait(int64_t deadline) {
    while (true) {
      const int64_t left = std::max<int64_t>(deadline - now(), 0);
      const timespec limit{static_cast<time_t>(left / kSecond), static_cast<long>(left % kSecond)};
      const int result = ppoll(polled.data(), count, &limit, nullptr);
      if (result >= 0 || errno != EINTR) return result;
    }
  }

  // How many of them have something to receive; -1 where one is no descriptor any more.
  int32_t take(fd_set *readable, uint8_t *gone) const {
    int32_t ready = 0;
    for (nfds_t i = 0; i < count; ++i) {
      const pollfd &at = polled[i];
      if ((at.revents & POLLNVAL) != 0) return failed(EBADF);
      if ((at.revents & (POLLHUP | POLLERR)) != 0) *gone = LMAINTE_HOST_ONE_GONE;
      if (at.revents == 0 || !is_ready(*channel_of(at.fd))) continue;
      FD_SET(at.fd, readable);
      ++ready;
    }
    return ready;
  }
};

bool is_limit(const timeval *limit) {
  return limit != nullptr && limit->tv_sec >= 0 && limit->tv_usec >= 0 && limit->tv_usec < 1'000'000;
}

int64_t deadline_of(const timeval &limit) {
  return now() + std::min<int64_t>(limit.tv_sec, kLongestWait) * kSecond + static_cast<int64_t>(limit.tv_usec) * 1000;
}

}  // namespace

int32_t lmainte_host_open_channel(const char *daemon) {
  if (daemon == nullptr) return failed(EINVAL);
  Channel *place = channel_of(-1);
  if (place == nullptr) return failed(EMFILE);
  try {
    base::Descriptor channel(box::daemon_socket(box::Place::here().daemons(), daemon, connect));
    if (channel.get() >= FD_SETSIZE) return failed(EMFILE);
    if (channel.get() >= 0) *place = {channel.get(), 0};
    return channel.release();
  } catch (...) {
    return failed(ENOMEM);
  }
}

int32_t lmainte_host_close_channel(int32_t fd) {
  Channel *channel = open_channel(fd);
  if (channel == nullptr) return failed(EBADF);
  *channel = {};
  return close(fd);
}

namespace {

int32_t send_message(int32_t fd, const void *message) {
  if (message == nullptr) return failed(EINVAL);
  if (platform::is_refused(box::PointKind::kMessage, "send")) return failed(EPIPE);
  Channel *channel = open_channel(fd);
  if (channel == nullptr) return failed(EBADF);
  const lmainte_host_message head = head_of(message);
  if (head.size < sizeof head || head.size > LMAINTE_HOST_MESSAGE_MOST) return failed(EMSGSIZE);
  const ssize_t sent = send(fd, message, head.size, MSG_NOSIGNAL);
  if (sent < 0) return -1;
  channel->asked = head.sequence;
  return static_cast<int32_t>(sent);
}

int32_t receive_message(int32_t fd, void *message) {
  if (message == nullptr) return failed(EINVAL);
  if (platform::is_refused(box::PointKind::kMessage, "receive")) return failed(ECONNRESET);
  const Channel *channel = open_channel(fd);
  if (channel == nullptr) return failed(EBADF);
  Message came;
  ssize_t length = 0;
  do {
    length = recv(fd, came.data(), came.size(), MSG_TRUNC);
  } while (length > 0 && is_late(*channel, came.data(), length));
  if (length < 0) return -1;
  if (length == 0) return failed(ECONNRESET);
  const auto size = static_cast<std::size_t>(length);
  if (size < sizeof(lmainte_host_message) || size > came.size() || head_of(came.data()).size != size) {
    return failed(EBADMSG);
  }
  std::memcpy(message, came.data(), size);
  return static_cast<int32_t>(size);
}

int32_t wait_for_reply(uint8_t *status_1, uint8_t *status_2, fd_set *readable, fd_set *writable, fd_set *exceptional,
                       const timeval *limit) {
  if (status_1 == nullptr || status_2 == nullptr || readable == nullptr || writable != nullptr ||
      exceptional != nullptr || !is_limit(limit)) {
    return failed(EINVAL);
  }
  if (platform::is_refused(box::PointKind::kMessage, "select")) return failed(EIO);
  FD_ZERO(readable);
  *status_1 = LMAINTE_HOST_TIME_OVER;
  *status_2 = LMAINTE_HOST_ALL_THERE;
  Watch watch;
  if (watch.count == 0) return failed(ENOTCONN);
  const int64_t deadline = deadline_of(*limit);
  int32_t ready = 0;
  // A late reply ends a wait, and is not what is waited for.
  while (ready == 0) {
    const int polled = watch.wait(deadline);
    if (polled <= 0) return polled;
    ready = watch.take(readable, status_2);
  }
  if (ready > 0) *status_1 = LMAINTE_HOST_READY;
  return ready;
}

// Of the message, as far as it says one that it may have.
int32_t size_of(const void *message) {
  if (message == nullptr) return 0;
  return static_cast<int32_t>(std::min<uint32_t>(head_of(message).size, LMAINTE_HOST_MESSAGE_MOST));
}

// What a message is about.
void name_message(platform::KeptCall &call, const void *message) {
  const lmainte_host_message head = head_of(message);
  call.set_first(head.daemon);
  call.set_second(head.command);
}

}  // namespace

int32_t lcmn_send(int32_t fd, const void *message) {
  const uint64_t began = lmainte_record_begin();
  platform::KeptCall call(box::CallKind::kSend);
  if (message != nullptr) name_message(call, message);
  return lmainte_record_send(began, fd, message, size_of(message), call.ends_with(send_message(fd, message)));
}

int32_t lcmn_receive(int32_t fd, void *message) {
  const uint64_t began = lmainte_record_begin();
  platform::KeptCall call(box::CallKind::kReceive);
  const int32_t result = receive_message(fd, message);
  if (result > 0) name_message(call, message);
  return lmainte_record_receive(began, fd, message, result, call.ends_with(result));
}

int32_t lcmn_select(uint8_t *status_1, uint8_t *status_2, fd_set *readable, fd_set *writable, fd_set *exceptional,
                    struct timeval *limit) {
  const uint64_t began = lmainte_record_begin();
  platform::KeptCall call(box::CallKind::kWaitForReply);
  const int32_t result = wait_for_reply(status_1, status_2, readable, writable, exceptional, limit);
  return lmainte_record_select(began, status_1, status_2, call.ends_with(result));
}

int32_t lcmn_process_iszero(const fd_set *set) {
  if (set == nullptr) return 1;
  fd_set none;
  FD_ZERO(&none);
  return std::memcmp(set, &none, sizeof none) == 0 ? 1 : 0;
}
