#include "host/box/mapping_guard.h"
#include "host/box/place.h"
#include "host/box/trace_ring.h"
#include "host/platform/calls.h"
#include "host/platform/exported.h"
#include "host/platform/path_in_box.h"
#include "host/platform/points.h"
#include "include/lmainte_record.h"

namespace {

constexpr std::uint32_t kHeadLength = 8;
constexpr std::uint32_t kMaxLength = kHeadLength + 4 * sizeof(std::uint32_t);

constinit box::TraceRing ring;

// A file that is emptied meanwhile costs the trace and not the command. Set when the library is loaded: no call of it changes
// what a command does at signals.
[[gnu::constructor]] void survive_a_lost_trace() {
  box::survive_lost_mappings();
}

bool map_ring() {
  const platform::PathInBox path(box::kTracePath);
  return path.is_whole() && ring.map(path.text());
}

}  // namespace

std::uint64_t platform::records_of_the_trace() noexcept {
  return ring.next();
}

void platform::look_for_the_trace() noexcept {
  map_ring();
}

namespace {

constexpr std::size_t kEventDigits = 8;

// A record is a point by its event, in as many hexadecimal digits. No memory may be allocated for it, either.
bool is_refused(std::uint32_t event) {
  char name[kEventDigits];
  for (std::size_t i = kEventDigits; i > 0; event >>= 4U) name[--i] = "0123456789ABCDEF"[event & 0xFU];
  return platform::reach(box::PointKind::kTrace, {name, kEventDigits}).way == box::Way::kRefused;
}

}  // namespace

// A ring that is missing is looked for again by the next record.
int32_t mgb_trace_write(uint32_t module, uint32_t level, uint32_t kind, uint32_t event, const uint32_t *words,
                        uint32_t length) {
  if (length < kHeadLength || length > kMaxLength || length % sizeof(uint32_t) != 0) return -1;
  const auto count = static_cast<uint32_t>((length - kHeadLength) / sizeof(uint32_t));
  if (words == nullptr && count != 0) return -1;
  lmainte_record_trace(module, level, kind, event, words, length);
  if (is_refused(event)) return -1;
  if (ring.append(module, level, kind, event, words, count)) return 0;
  return map_ring() && ring.append(module, level, kind, event, words, count) ? 0 : -1;
}
