#include "host/remote/stand_in.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/syscall.h>

#include <algorithm>
#include <array>
#include <bitset>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/box/call_ring.h"
#include "host/box/record_words.h"
#include "host/include/lmainte_host.h"
#include "host/platform/calls.h"
#include "host/platform/points.h"
#include "host/wire/message.h"
#include "include/lmainte_platform.h"

namespace remote {
namespace {

using wire::Kind;
using wire::Reader;
using wire::Writer;

struct Ended {
  Ending how;
};

// ---- The channel: messages, and the end of the process

class Channel {
 public:
  Channel(base::Descriptor socket, pid_t process)
      : socket_(std::move(socket)),
        end_(static_cast<int>(syscall(SYS_pidfd_open, process, 0))),
        came_(wire::kLongest),
        reply_(wire::kLongest) {}

  // The next message. Throws Ended.
  Reader next() {
    std::array<pollfd, 2> watched{{{socket_.get(), POLLIN, 0}, {end_.get(), POLLIN, 0}}};
    while (poll(watched.data(), watched.size(), -1) < 0 && errno == EINTR) {
    }
    // A child of it may hold the other end still.
    if (end_.get() < 0 || watched[1].revents != 0) throw Ended{Ending::kIsGone};
    const ssize_t size = recv(socket_.get(), came_.data(), came_.size(), MSG_TRUNC);
    if (size <= 0) throw Ended{Ending::kIsGone};
    if (static_cast<std::size_t>(size) > came_.size()) throw Ended{Ending::kMakesNoSense};
    Reader message({came_.data(), static_cast<std::size_t>(size)});
    if (!message.is_good()) throw Ended{Ending::kMakesNoSense};
    return message;
  }

  Writer reply(std::uint32_t sequence) { return Writer(reply_, Kind::kReply, sequence); }
  void send(Writer &writer) {
    const auto message = writer.message();
    if (::send(socket_.get(), message.data(), message.size(), MSG_NOSIGNAL) < 0) throw Ended{Ending::kIsGone};
  }

 private:
  base::Descriptor socket_, end_;
  std::vector<std::uint8_t> came_, reply_;
};

// ---- What the process is, and what it has open

struct Peer {
  pid_t process = 0;
  wire::ByteOrder order = wire::kByteOrder;
  std::bitset<32> of_parent;  // databases that its parent has open: it cannot use them
  std::int64_t since = 0;     // no call of it begins before that
};

// Who a signal of a deviation is for.
struct Delivery {
  Channel *channel = nullptr;
  std::uint32_t sequence = 0;  // of the message that is under way
};
constinit Delivery delivery;

// The process takes it before it goes on. Ends this one where that cannot be: it is called by functions that throw nothing.
void deliver(int signal) {
  try {
    std::array<std::uint8_t, 64> room{};
    Writer writer(room, Kind::kSignal, delivery.sequence);
    writer.number(signal);
    delivery.channel->send(writer);
    Reader answer = delivery.channel->next();
    if (answer.kind() != Kind::kGoOn || !answer.is_whole()) _exit(kMadeNoSense);
  } catch (const Ended &ended) {
    _exit(ended.how == Ending::kIsGone ? 0 : kMadeNoSense);
  }
}

// ---- What is asked for. All of a message is read before anything is done; false where it is none of its kind.

bool hear_begin(Reader &in, Writer & /*out*/, Peer & /*peer*/) {
  const auto parent = static_cast<pid_t>(in.word());
  const std::string words(in.text(wire::kLongestText));
  if (!in.is_whole()) return false;
  platform::command_begins(words, parent);
  return true;
}

bool hear_end(Reader &in, Writer & /*out*/, Peer & /*peer*/) {
  const std::int32_t status = in.number();
  const std::string words(in.text(wire::kLongestText));
  if (!in.is_whole()) return false;
  platform::command_ends(words, status);
  return true;
}

bool hear_trace(Reader &in, Writer &out, Peer & /*peer*/) {
  constexpr std::uint32_t kHead = 8, kMost = 4;
  const std::uint32_t module = in.word(), level = in.word(), kind = in.word(), event = in.word(), count = in.word();
  std::array<std::uint32_t, kMost> words{};
  for (std::uint32_t &word : words) word = in.word();
  if (!in.is_whole() || count > kMost) return false;
  out.number(mgb_trace_write(module, level, kind, event, words.data(), kHead + 4 * count));
  return true;
}

bool hear_point(Reader &in, Writer &out, Peer & /*peer*/) {
  const std::uint32_t kind = in.word();
  const std::string name(in.text(wire::kLongestText));
  if (!in.is_whole() || kind >= box::kPointKinds.size()) return false;
  const box::Turn turn = platform::reach(static_cast<box::PointKind>(kind), name);
  out.word(static_cast<std::uint32_t>(turn.way)).number(turn.value);
  return true;
}

bool hear_call_begins(Reader &in, Writer &out, Peer & /*peer*/) {
  if (!in.is_whole()) return false;
  const box::Call call = platform::begun_call();
  out.long_word(static_cast<std::uint64_t>(call.time_ns)).long_word(call.position);
  return true;
}

bool hear_call_ends(Reader &in, Writer & /*out*/, Peer &peer) {
  box::Call call;
  const std::uint32_t kind = in.word();
  call.kind = static_cast<box::CallKind>(kind);
  // As they were told when the call began; anybody may say anything.
  call.time_ns = std::max(std::min(static_cast<std::int64_t>(in.long_word()), box::call_time()), peer.since);
  call.position = std::min(in.long_word(), platform::records_of_the_trace());
  call.result = in.number();
  call.first = in.word();
  call.second = in.word();
  call.text = in.text(wire::kLongestText);
  // That a command begins and ends is told in messages of their own.
  if (!in.is_whole() || kind <= static_cast<std::uint32_t>(box::CallKind::kEnd) || kind >= box::kCallKinds)
    return false;
  platform::end_call(call);
  return true;
}

// Of a database that the parent process has open, as its child finds it: it is open, can be closed, and nothing else.
std::optional<std::int32_t> result_of_parents(Kind kind, std::uint32_t db_id, Peer &peer) {
  if (db_id >= peer.of_parent.size() || !peer.of_parent[db_id]) return std::nullopt;
  if (kind == Kind::kOpen) return LMAINTE_HOST_DB_SESSION;
  if (kind != Kind::kClose) return LMAINTE_HOST_DB_STORAGE;
  peer.of_parent.reset(db_id);
  return 0;
}

struct SessionCall {
  Kind kind;
  box::CallKind kept_as;
  int32_t (*function)(uint32_t db_id);
};
constexpr std::array<SessionCall, 4> kSessionCalls{{
    {Kind::kOpen, box::CallKind::kOpen, scdb_open},
    {Kind::kClose, box::CallKind::kClose, scdb_close},
    {Kind::kLock, box::CallKind::kLock, scdb_lock},
    {Kind::kUnlock, box::CallKind::kUnlock, scdb_unlock},
}};

template <std::size_t Row>
bool hear_session(Reader &in, Writer &out, Peer &peer) {
  constexpr SessionCall kCall = kSessionCalls[Row];
  const std::uint32_t db_id = in.word();
  if (!in.is_whole()) return false;
  if (const auto result = result_of_parents(kCall.kind, db_id, peer)) {
    platform::KeptCall call(kCall.kept_as, {}, db_id);
    out.number(call.ends_with(*result));
  } else {
    out.number(kCall.function(db_id));
  }
  return true;
}

// A key as the functions take it.
struct Key {
  Key(std::string_view text, bool is_there) : is_there_(is_there) {
    std::memcpy(bytes_.data(), text.data(), text.size());
  }
  const char *get() const { return is_there_ ? bytes_.data() : nullptr; }
  std::string_view name() const { return {bytes_.data(), strnlen(bytes_.data(), bytes_.size())}; }

 private:
  std::array<char, wire::kKeyRoom> bytes_{};
  bool is_there_;
};

// The words of a record that the box knows, in the other byte order.
box::Bytes in_order(const Peer &peer, std::string_view name, std::string_view record) {
  box::Bytes bytes(record.begin(), record.end());
  if (peer.order != wire::kByteOrder) box::swap_words(name, bytes);
  return bytes;
}

bool hear_read(Reader &in, Writer &out, Peer &peer) {
  const std::uint32_t db_id = in.word();
  const bool has_key = in.flag(), has_record = in.flag(), has_size = in.flag();
  const std::uint32_t flags = in.word();
  const Key key(in.text(wire::kKeyRoom), has_key);
  if (!in.is_whole()) return false;
  void *found = nullptr;
  int32_t size = 0;
  if (const auto of_parent = result_of_parents(Kind::kRead, db_id, peer)) {
    platform::KeptCall call(box::CallKind::kRead, key.name(), db_id);
    out.number(call.ends_with(*of_parent)).text({});
    return true;
  }
  int32_t result = scdb_get(db_id, key.get(), has_record ? &found : nullptr, has_size ? &size : nullptr, flags);
  const std::unique_ptr<void, void (*)(void *)> owned(found, std::free);
  if (result == 0 && static_cast<std::size_t>(size) > wire::kLongestRecord) result = LMAINTE_HOST_DB_STORAGE;
  const std::string_view record(static_cast<const char *>(found), result == 0 ? static_cast<std::size_t>(size) : 0);
  const box::Bytes bytes = in_order(peer, key.name(), record);
  out.number(result).text({reinterpret_cast<const char *>(bytes.data()), bytes.size()});
  return true;
}

bool hear_write(Reader &in, Writer &out, Peer &peer) {
  const std::uint32_t db_id = in.word();
  const bool has_key = in.flag(), has_data = in.flag();
  const std::int32_t size = in.number();
  const std::uint32_t flags = in.word();
  const Key key(in.text(wire::kKeyRoom), has_key);
  const std::string_view data = in.text(wire::kLongestRecord);
  if (!in.is_whole() || (has_data && size > 0 && static_cast<std::size_t>(size) != data.size())) return false;
  if (const auto of_parent = result_of_parents(Kind::kWrite, db_id, peer)) {
    platform::KeptCall call(box::CallKind::kWrite, key.name(), db_id, static_cast<std::uint32_t>(size));
    out.number(call.ends_with(*of_parent));
    return true;
  }
  box::Bytes bytes = in_order(peer, key.name(), data);
  bytes.push_back(0);  // so that it is somewhere
  out.number(lcmn_scdb_put(db_id, key.get(), has_data ? bytes.data() : nullptr, size, flags));
  return true;
}

bool hear_log(Reader &in, Writer &out, Peer & /*peer*/) {
  const bool has_head = in.flag(), has_record = in.flag();
  const std::uint32_t head = in.word();
  const std::string record(in.text(LMAINTE_HOST_EVENT_SIZE));
  if (!in.is_whole() || (has_record && record.size() != LMAINTE_HOST_EVENT_SIZE)) return false;
  errno = 0;
  const std::int32_t result = mgblog_save(has_head ? &head : nullptr, has_record ? record.data() : nullptr);
  out.number(result).number(result < 0 ? errno : 0);
  return true;
}

bool hear_name(Reader &in, Writer &out, Peer & /*peer*/) {
  const bool has_id = in.flag(), has_name = in.flag();
  std::array<std::uint32_t, 2> id{};
  for (std::uint32_t &word : id) word = in.word();
  const std::int32_t form = in.number(), unused_1 = in.number(), unused_2 = in.number();
  if (!in.is_whole()) return false;
  std::array<char, wire::kKeyRoom> name{};
  out.number(
      api_conv_unit_name_get(has_id ? id.data() : nullptr, form, has_name ? name.data() : nullptr, unused_1, unused_2));
  out.text({name.data(), strnlen(name.data(), name.size())});
  return true;
}

struct Row {
  Kind kind;
  bool (*hear)(Reader &in, Writer &out, Peer &peer);
};
constexpr std::array<Row, 14> kRows{{
    {Kind::kBegin, hear_begin},
    {Kind::kEnd, hear_end},
    {Kind::kTrace, hear_trace},
    {Kind::kPoint, hear_point},
    {Kind::kCallBegins, hear_call_begins},
    {Kind::kCallEnds, hear_call_ends},
    {Kind::kOpen, hear_session<0>},
    {Kind::kClose, hear_session<1>},
    {Kind::kLock, hear_session<2>},
    {Kind::kUnlock, hear_session<3>},
    {Kind::kRead, hear_read},
    {Kind::kWrite, hear_write},
    {Kind::kLog, hear_log},
    {Kind::kName, hear_name},
}};

bool hear_hello(Reader message, Peer &peer) {
  const std::uint32_t version = message.word(), order = message.word();
  peer.of_parent = message.word();
  peer.order = static_cast<wire::ByteOrder>(order);
  const bool is_order = peer.order == wire::ByteOrder::kBig || peer.order == wire::ByteOrder::kLittle;
  return message.kind() == Kind::kHello && message.is_whole() && version == wire::kVersion && is_order;
}

// False where it is no message that may come now.
bool answer(Channel &channel, Reader message, Peer &peer) {
  for (const Row &row : kRows) {
    if (row.kind != message.kind()) continue;
    delivery.sequence = message.sequence();
    Writer reply = channel.reply(message.sequence());
    if (!row.hear(message, reply, peer)) return false;
    channel.send(reply);
    return true;
  }
  return false;
}

}  // namespace

Ending stand_in_for(base::Descriptor socket, pid_t process) {
  Channel channel(std::move(socket), process);
  Peer peer{.process = process, .of_parent = {}, .since = box::call_time()};
  delivery.channel = &channel;
  platform::stand_for(process);
  platform::stand_for_points_of(process, deliver);
  try {
    bool makes_sense = hear_hello(channel.next(), peer);
    while (makes_sense) makes_sense = answer(channel, channel.next(), peer);
    return Ending::kMakesNoSense;
  } catch (const Ended &ended) {
    return ended.how;
  }
}

}  // namespace remote
