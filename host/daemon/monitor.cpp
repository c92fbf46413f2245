#include "host/daemon/monitor.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <exception>
#include <iterator>
#include <optional>
#include <span>

#include "host/box/event_log.h"
#include "host/box/hardware.h"
#include "host/box/inventory.h"
#include "host/box/model.h"
#include "host/include/lmainte_host.h"
#include "include/lmainte.h"

namespace monitor {
namespace {

using Body = std::span<const std::uint8_t>;

constexpr std::size_t kUnitIdSize = 8;

// The daemon as it is when a request comes.
struct Moment {
  const box::Place &place;
  std::uint32_t seconds;
  std::uint32_t answered;
};

void tell_status(const Moment &now, Body /*nothing*/, lmainte_host_reply &reply) {
  reply.word[0] = now.seconds;
  reply.word[1] = now.answered;
  reply.word[2] = box::model_in(now.place);
}

// The unit of an id, where the box has it. Throws where its record cannot be read, which is no state of a unit.
std::optional<box::Unit> unit_of(const box::Place &place, Body body) {
  box::UnitId id{};
  std::memcpy(id.data(), body.data(), sizeof id);
  const box::Inventory inventory(place);
  const auto &places = inventory.places();
  const auto at = std::find_if(places.begin(), places.end(), [&](const box::UnitPlace &unit) { return unit.id == id; });
  if (at == places.end()) return std::nullopt;
  box::Unit unit = inventory.unit(at->name);
  if (!unit.unreadable.empty()) throw box::BoxError(unit.unreadable);
  return unit;
}

void tell_unit(const Moment &now, Body body, lmainte_host_reply &reply) {
  const auto unit = unit_of(now.place, body);
  reply.result = unit ? LMAINTE_HOST_ANSWERED : LMAINTE_HOST_NO_UNIT;
  if (unit) reply.word[0] = unit->status;
}

void tell_power(const Moment &now, Body body, lmainte_host_reply &reply) {
  const auto unit = unit_of(now.place, body);
  reply.result = unit ? LMAINTE_HOST_ANSWERED : LMAINTE_HOST_NO_UNIT;
  if (!unit) return;
  const bool detached = box::Hardware(now.place).detached(unit->place.name);
  reply.word[0] = unit->installed() && !detached ? 1 : 0;
}

void save_event(const Moment &now, Body body, lmainte_host_reply &reply) {
  const box::Event event = body.first<LMAINTE_HOST_EVENT_SIZE>();
  if (!box::EventLog::append(now.place.events(), LMAINTE_HOST_EVENT_HEAD, event)) {
    reply.result = LMAINTE_HOST_BOX_FAILED;
  }
}

struct Command {
  std::uint32_t number;
  std::size_t body_size;
  bool is_of_words;  // which are in the asker's byte order
  void (*tell)(const Moment &now, Body body, lmainte_host_reply &reply);
};

constexpr Command kCommands[] = {
    {LMAINTE_HOST_ASK_STATUS, 0, true, tell_status},
    {LMAINTE_HOST_ASK_UNIT, kUnitIdSize, true, tell_unit},
    {LMAINTE_HOST_ASK_POWER, kUnitIdSize, true, tell_power},
    {LMAINTE_HOST_SAVE_EVENT, LMAINTE_HOST_EVENT_SIZE, false, save_event},
};

const Command *command_of(std::uint32_t number) {
  return std::find_if(std::begin(kCommands), std::end(kCommands),
                      [&](const Command &row) { return row.number == number; });
}

constexpr std::size_t kWordSize = sizeof(std::uint32_t);

std::uint32_t word_at(Body bytes, std::size_t at) {
  std::uint32_t word = 0;
  std::memcpy(&word, bytes.data() + at, sizeof word);
  return word;
}

void swap_words(std::span<std::uint8_t> bytes) {
  for (; bytes.size() >= kWordSize; bytes = bytes.subspan(kWordSize)) std::ranges::reverse(bytes.first(kWordSize));
}

// A program may run on a machine of the other byte order, which is emulated: the size in its head tells.
bool is_of_other_order(Body request) {
  const std::uint32_t size = word_at(request, 0);
  return size != request.size() && __builtin_bswap32(size) == request.size();
}

box::Bytes in_own_order(Body request) {
  box::Bytes bytes(request.begin(), request.end());
  const std::span<std::uint8_t> all(bytes);
  swap_words(all.first(sizeof(lmainte_host_message)));
  const Command *command = command_of(word_at(bytes, offsetof(lmainte_host_message, command)));
  if (command != std::end(kCommands) && command->is_of_words) swap_words(all.subspan(sizeof(lmainte_host_message)));
  return bytes;
}

// Fills in what the request asks for.
void fill(const Moment &now, Body request, lmainte_host_reply &reply) {
  const auto *const command = command_of(reply.head.command);
  if (command == std::end(kCommands)) {
    reply.result = LMAINTE_HOST_NO_COMMAND;
    return;
  }
  const bool fits = request.size() == sizeof reply.head + command->body_size && reply.head.size == request.size();
  if (!fits || reply.head.daemon != LMAINTE_HOST_MONITOR_NUMBER) {
    reply.result = LMAINTE_HOST_BAD_REQUEST;
    return;
  }
  try {
    command->tell(now, request.subspan(sizeof reply.head), reply);
  } catch (const std::exception &) {
    reply.result = LMAINTE_HOST_BOX_FAILED;
  }
}

// A daemon that cannot even read how it is bent is not bent.
box::DaemonBend bend_in(const box::Place &place) {
  try {
    return box::daemon_bend(box::TextDatabase(place));
  } catch (const std::exception &) {
    return {};
  }
}

void garble(box::Bytes &reply) {
  constexpr std::uint32_t kMore = 8;
  std::uint32_t size = 0;
  std::memcpy(&size, reply.data(), sizeof size);
  size += kMore;
  std::memcpy(reply.data(), &size, sizeof size);
}

}  // namespace

Answer Monitor::answer(std::span<const std::uint8_t> asked) {
  const bool is_foreign = asked.size() >= sizeof(lmainte_host_message) && is_of_other_order(asked);
  const box::Bytes own = is_foreign ? in_own_order(asked) : box::Bytes();
  const Body request = is_foreign ? Body(own) : asked;
  const box::DaemonBend bend = bend_in(place_);
  if (bend.way == box::DaemonWay::kDead) return {.reply = {}, .hangs_up = true};
  if (bend.way == box::DaemonWay::kSilent || request.size() < sizeof(lmainte_host_message)) return {};
  lmainte_host_reply reply{};
  std::memcpy(&reply.head, request.data(), sizeof reply.head);
  const auto alive = std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now() - start_);
  fill({place_, static_cast<std::uint32_t>(alive.count()), answered_}, request, reply);
  reply.head.size = sizeof reply;
  ++answered_;
  Answer answer{box::Bytes(sizeof reply)};
  std::memcpy(answer.reply.data(), &reply, sizeof reply);
  if (bend.way == box::DaemonWay::kGarbled) garble(answer.reply);
  if (is_foreign) swap_words(answer.reply);
  if (bend.way == box::DaemonWay::kLate) answer.delay = std::chrono::seconds(bend.seconds);
  return answer;
}

}  // namespace monitor
