// Messages to the daemon, through its socket. To each request that has a head it replies once, in order, with the request's
// numbers, unless it is bent; whatever came, it serves the next one.
#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <memory>
#include <optional>
#include <vector>

#include "fuzz/box/targets.h"
#include "host/base/descriptor.h"
#include "host/box/daemon_bend.h"
#include "host/box/daemon_socket.h"
#include "host/box/text_database.h"
#include "host/daemon/server.h"
#include "host/include/lmainte_host.h"

namespace fuzz {
namespace {

constexpr std::uint32_t kModel = LMAINTE_MODEL_QB1;
constexpr std::size_t kMostSent = 12;  // fewer than the replies for which the daemon has room

bool has_come(int fd) {
  pollfd at{fd, POLLIN, 0};
  return poll(&at, 1, 0) == 1;
}

// With the folder that `spbox run` makes.
box::Place place_of_daemon() {
  const box::Place &place = box_of(kModel).place;
  std::filesystem::create_directories(place.daemons());
  return place;
}

// A daemon, and those who talk to it.
class Talk {
 public:
  Talk() : place_(place_of_daemon()), box_(place_), server_(place_) { sigemptyset(&none_); }

  void bend(box::DaemonWay way) {
    if (way == way_) return;
    box::set_daemon_bend(box_, {way, 0});
    way_ = way;
  }

  base::Descriptor connected() {
    base::Descriptor peer(box::daemon_socket(place_.daemons(), LMAINTE_HOST_MONITOR, connect));
    require(peer.get() >= 0, "the daemon can be reached");
    step();
    return peer;
  }

  // Something must be under way: the daemon waits for it.
  void step() { server_.step(none_); }

  // False where the message is too long for the socket, or the daemon has left.
  static bool send_to(int peer, Input message) {
    return send(peer, message.data(), message.size(), MSG_NOSIGNAL | MSG_DONTWAIT) >= 0;
  }

  static std::optional<box::Bytes> reply_at(int peer) {
    if (!has_come(peer)) return std::nullopt;
    box::Bytes reply(LMAINTE_HOST_MESSAGE_MOST);
    const ssize_t size = recv(peer, reply.data(), reply.size(), MSG_DONTWAIT);
    reply.resize(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
    return reply;
  }

  box::DaemonWay way() const { return way_; }

  // The next one is served, and told the truth.
  void check_alive() {
    bend(box::DaemonWay::kWell);
    const base::Descriptor peer = connected();
    lmainte_host_message request{sizeof request, LMAINTE_HOST_MONITOR_NUMBER, LMAINTE_HOST_ASK_STATUS, 77};
    std::array<std::uint8_t, sizeof request> bytes{};
    std::memcpy(bytes.data(), &request, sizeof request);
    require(send_to(peer.get(), bytes), "the daemon takes a request");
    step();
    const auto reply = reply_at(peer.get());
    lmainte_host_reply said{};
    require(reply && reply->size() == sizeof said, "the daemon replies");
    std::memcpy(&said, reply->data(), sizeof said);
    require(said.result == LMAINTE_HOST_ANSWERED && said.head.sequence == 77 && said.word[2] == kModel,
            "the daemon knows its box");
  }

  // The peers that have left are forgotten.
  void forget(base::Descriptor &peer) {
    peer.reset();
    step();
    std::filesystem::remove(place_.events());
  }

 private:
  box::Place place_;
  box::TextDatabase box_;
  monitor::Server server_;
  box::DaemonWay way_ = box::DaemonWay::kWell;
  sigset_t none_{};
};

// Who asks in the other byte order has the reply in that order; the size in the head tells.
void check_reply(const box::Bytes &reply, Input request, box::DaemonWay way) {
  lmainte_host_reply said{};
  lmainte_host_message asked{};
  require(reply.size() == sizeof said, "a reply has its size");
  std::memcpy(&said, reply.data(), sizeof said);
  std::memcpy(&asked, request.data(), sizeof asked);
  if (asked.size != request.size() && __builtin_bswap32(asked.size) == request.size()) {
    said.head.size = __builtin_bswap32(said.head.size);
    said.result = static_cast<std::int32_t>(__builtin_bswap32(static_cast<std::uint32_t>(said.result)));
  }
  require((said.head.size == sizeof said) == (way != box::DaemonWay::kGarbled), "only a garbled reply lies");
  require(
      said.head.daemon == asked.daemon && said.head.command == asked.command && said.head.sequence == asked.sequence,
      "a reply has its request's numbers");
  require(said.result >= LMAINTE_HOST_ANSWERED && said.result <= LMAINTE_HOST_NO_UNIT,
          "a whole box is read and written");
}

// One message, and what comes of it. False where the daemon has left.
bool exchange(Talk &talk, int peer, Input message) {
  const bool is_request = message.size() >= sizeof(lmainte_host_message);
  if (!Talk::send_to(peer, message)) return false;
  talk.step();
  const auto reply = Talk::reply_at(peer);
  if (talk.way() == box::DaemonWay::kDead || message.empty()) {
    require(reply && reply->empty(), "a daemon that is dead leaves, and takes an empty message for the peer's end");
    return false;
  }
  const bool answers = is_request && talk.way() != box::DaemonWay::kSilent;
  require(reply.has_value() == answers, answers ? "a request is answered" : "what is no request is not answered");
  if (reply) check_reply(*reply, message, talk.way());
  return true;
}

}  // namespace

void run_daemon(Input input) {
  static Talk talk;
  Source source(input);
  base::Descriptor peer = talk.connected();
  bool is_served = true;
  for (std::size_t sent = 0; sent < kMostSent && !source.empty() && is_served; ++sent) {
    const std::uint8_t what = source.byte();
    if (what < box::kDaemonWays.size()) {
      talk.bend(box::kDaemonWays.at(what).way);
    } else {
      is_served = exchange(talk, peer.get(), source.bytes(source.number<std::uint16_t>() % 1100));
    }
  }
  talk.check_alive();
  talk.forget(peer);
}

}  // namespace fuzz
