#include "host/box/trace_ring.h"

#include <algorithm>
#include <ctime>

namespace box {
namespace {

using TraceRecords = RecordRing<TraceForm>;

std::uint64_t pair(std::uint32_t low, std::uint32_t high) {
  return low | static_cast<std::uint64_t>(high) << 32U;
}
std::uint32_t low(std::uint64_t word) {
  return static_cast<std::uint32_t>(word);
}
std::uint32_t high(std::uint64_t word) {
  return static_cast<std::uint32_t>(word >> 32U);
}

std::int64_t wall_clock() {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  return static_cast<std::int64_t>(now.tv_sec) * 1'000'000'000 + now.tv_nsec;
}

TraceEntry entry_of(const TraceRecords::Record &record) {
  const TraceRecords::Body &body = record.body;
  return {record.number, static_cast<std::int64_t>(body[0]),
          low(body[1]),  high(body[1]),
          low(body[2]),  high(body[2]),
          low(body[5]),  {low(body[3]), high(body[3]), low(body[4]), high(body[4])}};
}

}  // namespace

void TraceRing::create(const std::filesystem::path &file) {
  TraceRecords::create(file);
}

void TraceRing::check(const std::filesystem::path &file) {
  TraceRecords::check(file);
}

bool TraceRing::map(const char *file) noexcept {
  return ring_.map(file);
}

bool TraceRing::append(std::uint32_t module, std::uint32_t level, std::uint32_t kind, std::uint32_t event,
                       const std::uint32_t *words, std::uint32_t word_count) noexcept {
  RingHead *head = ring_.head();
  if (head == nullptr) return false;
  std::array<std::uint32_t, 4> values{};
  const std::uint32_t count = words == nullptr ? 0 : std::min<std::uint32_t>(word_count, values.size());
  std::copy_n(words, count, values.begin());
  const std::uint64_t number = head->next.fetch_add(1, std::memory_order_relaxed);
  TraceRecords::write(head, number,
                      {static_cast<std::uint64_t>(wall_clock()), pair(module, level), pair(kind, event),
                       pair(values[0], values[1]), pair(values[2], values[3]), count});
  return true;
}

std::uint64_t TraceRing::next() noexcept {
  const RingHead *head = ring_.head();
  return head == nullptr ? 0 : head->next.load(std::memory_order_relaxed);
}

std::vector<TraceEntry> TraceRing::read(const std::filesystem::path &file) {
  return read_last(file, kSlots);
}

std::vector<TraceEntry> TraceRing::read_last(const std::filesystem::path &file, std::uint32_t count) {
  std::vector<TraceEntry> entries;
  for (const TraceRecords::Record &record : TraceRecords::read_last(file, count)) entries.push_back(entry_of(record));
  return entries;
}

}  // namespace box
