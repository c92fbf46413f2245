#include "host/box/call_ring.h"

#include <algorithm>
#include <cstring>
#include <ctime>
#include <map>

namespace box {
namespace {

using CallRecords = RecordRing<CallForm>;
using CallBody = CallRecords::Body;

// A record's words: those of the call, then the beginning of its text. What is longer goes on in the records behind it, each with the
// number of the first one and as much text as it has room for. Both have their kind in the same place.
enum FirstWord : std::size_t {
  kTimeWord,
  kPositionWord,
  kKindWord,
  kResultWord,
  kValuesWord,
  kDurationWord,
  kTextWord
};
enum MoreWord : std::size_t { kOwnerWord, kPartWord, kMoreTextWord = kKindWord + 1 };
constexpr std::uint64_t kDeviatedBit = 1U << 31U;
constexpr std::size_t kFirstText = (CallForm::kBodyWords - kTextWord) * sizeof(std::uint64_t),
                      kMoreText = (CallForm::kBodyWords - kMoreTextWord) * sizeof(std::uint64_t);
static_assert(CallRing::kLongestText > kFirstText && (CallRing::kLongestText - kFirstText) % kMoreText == 80);

std::uint64_t both(std::uint32_t low, std::uint32_t high) {
  return low | static_cast<std::uint64_t>(high) << 32U;
}
std::uint32_t lower(std::uint64_t word) {
  return static_cast<std::uint32_t>(word);
}
std::uint32_t upper(std::uint64_t word) {
  return static_cast<std::uint32_t>(word >> 32U);
}

void put_text(CallBody &body, std::size_t word, std::string_view text) {
  if (!text.empty()) std::memcpy(&body[word], text.data(), text.size());
}

std::string text_in(const CallBody &body, std::size_t word, std::size_t size) {
  return {reinterpret_cast<const char *>(&body[word]), size};
}

CallBody body_of(const Call &call) {
  CallBody body{};
  body[kTimeWord] = static_cast<std::uint64_t>(call.time_ns);
  body[kPositionWord] = call.position;
  body[kKindWord] = both(static_cast<std::uint32_t>(call.kind), static_cast<std::uint32_t>(call.pid));
  if (call.deviated) body[kKindWord] |= kDeviatedBit;
  body[kResultWord] = both(static_cast<std::uint32_t>(call.result), static_cast<std::uint32_t>(call.text.size()));
  body[kValuesWord] = both(call.first, call.second);
  body[kDurationWord] = call.duration_ns;
  put_text(body, kTextWord, call.text.substr(0, kFirstText));
  return body;
}

CallBody more_of(std::uint64_t owner, std::uint32_t part, std::string_view text) {
  CallBody body{};
  body[kOwnerWord] = owner;
  body[kPartWord] = part;
  put_text(body, kMoreTextWord, text);
  return body;
}

std::size_t parts_of(std::size_t text) {
  const std::size_t kept = std::min(text, CallRing::kLongestText);
  return kept <= kFirstText ? 1 : 1 + (kept - kFirstText + kMoreText - 1) / kMoreText;
}

// Anybody in the box may have written the record.
CallEntry call_in(const CallRecords::Record &record) {
  const CallBody &body = record.body;
  CallEntry entry;
  entry.number = record.number;
  entry.kind = static_cast<CallKind>(lower(body[kKindWord]) & ~kDeviatedBit);
  entry.deviated = (body[kKindWord] & kDeviatedBit) != 0;
  entry.pid = static_cast<pid_t>(upper(body[kKindWord]));
  entry.time_ns = static_cast<std::int64_t>(body[kTimeWord]);
  entry.position = body[kPositionWord];
  entry.duration_ns = body[kDurationWord];
  entry.result = static_cast<std::int32_t>(lower(body[kResultWord]));
  entry.first = lower(body[kValuesWord]);
  entry.second = upper(body[kValuesWord]);
  entry.text_size = upper(body[kResultWord]);
  entry.whole_text = text_in(body, kTextWord, std::min(entry.text_size, kFirstText));
  return entry;
}

bool is_call(const CallEntry &entry) {
  return entry.kind > CallKind::kMore && static_cast<std::uint32_t>(entry.kind) < kCallKinds;
}

bool goes_on(const CallRecords::Record &record, std::uint64_t owner, std::size_t part) {
  return static_cast<CallKind>(lower(record.body[kKindWord])) == CallKind::kMore && record.body[kOwnerWord] == owner &&
         record.body[kPartWord] == part;
}

// Takes the rest of the text from the records behind it, as far as they are there.
void complete(CallEntry &entry, const std::vector<CallRecords::Record> &records, std::size_t at) {
  const std::size_t parts = parts_of(entry.text_size), kept = std::min(entry.text_size, CallRing::kLongestText);
  for (std::size_t part = 1; part < parts; ++part) {
    // Others may have written in between where a writer died: numbers tell.
    const auto found = std::ranges::lower_bound(records.begin() + static_cast<long>(at), records.end(),
                                                entry.number + part, {}, &CallRecords::Record::number);
    if (found == records.end() || found->number != entry.number + part || !goes_on(*found, entry.number, part)) return;
    entry.whole_text += text_in(found->body, kMoreTextWord, std::min(kMoreText, kept - entry.whole_text.size()));
  }
}

}  // namespace

std::int64_t call_time() noexcept {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  return static_cast<std::int64_t>(now.tv_sec) * 1'000'000'000 + now.tv_nsec;
}

void CallRing::create(const std::filesystem::path &file) {
  CallRecords::create(file);
}

void CallRing::check(const std::filesystem::path &file) {
  CallRecords::check(file);
}

bool CallRing::map(const char *file) noexcept {
  return ring_.map(file);
}

bool CallRing::append(const Call &call) noexcept {
  RingHead *head = ring_.head();
  if (head == nullptr) return false;
  const std::string_view text = call.text.substr(0, kLongestText);
  const std::size_t parts = parts_of(text.size());
  const std::uint64_t number = head->next.fetch_add(parts, std::memory_order_relaxed);
  for (std::size_t part = 1, at = kFirstText; part < parts; ++part, at += kMoreText) {
    CallRecords::write(head, number + part,
                       more_of(number, static_cast<std::uint32_t>(part), text.substr(at, kMoreText)));
  }
  // The first one comes last: who finds it finds all of it.
  CallRecords::write(head, number, body_of(call));
  return true;
}

std::uint32_t CallRing::number_of_next_command() noexcept {
  RingHead *head = ring_.head();
  return head == nullptr ? 0 : static_cast<std::uint32_t>(head->spare.fetch_add(1, std::memory_order_relaxed)) + 1;
}

std::vector<CallEntry> CallRing::read(const std::filesystem::path &file) {
  return read_last(file, kSlots);
}

std::vector<CallEntry> CallRing::read_last(const std::filesystem::path &file, std::uint32_t count) {
  const std::vector<CallRecords::Record> records = CallRecords::read_last(file, count);
  std::vector<CallEntry> entries;
  for (std::size_t at = 0; at < records.size(); ++at) {
    CallEntry entry = call_in(records[at]);
    if (!is_call(entry)) continue;
    complete(entry, records, at);
    entry.text = {};
    entries.push_back(std::move(entry));
  }
  return entries;
}

}  // namespace box
