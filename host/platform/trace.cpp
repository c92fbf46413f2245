#include <climits>
#include <cstdlib>
#include <cstring>

#include "host/box/mapping_guard.h"
#include "host/box/place.h"
#include "host/box/trace_ring.h"
#include "host/platform/exported.h"

namespace {

constexpr std::uint32_t kHeadLength = 8;
constexpr std::uint32_t kMaxLength = kHeadLength + 4 * sizeof(std::uint32_t);

constinit box::TraceRing ring;

// A file that is emptied meanwhile costs the trace and not the command. Set when the library is loaded: no call of it changes
// what a command does at signals.
[[gnu::constructor]] void survive_a_lost_trace() {
  box::survive_lost_mappings();
}

// Maps Place::here().trace(). No memory may be allocated: the caller may be a signal handler, or a child between fork and
// execve.
bool map_ring() {
  char path[PATH_MAX];
  const char *root = std::getenv(LMAINTE_HOST_ROOT);
  const std::size_t length = root == nullptr ? 0 : std::strlen(root);
  if (length > sizeof path - 1 - sizeof box::kTracePath) return false;
  if (length != 0) std::memcpy(path, root, length);
  path[length] = '/';
  std::memcpy(path + length + 1, box::kTracePath, sizeof box::kTracePath);
  return ring.map(path);
}

}  // namespace

// A ring that is missing is looked for again by the next record.
int32_t mgb_trace_write(uint32_t module, uint32_t level, uint32_t kind, uint32_t event, const uint32_t *words,
                        uint32_t length) {
  if (length < kHeadLength || length > kMaxLength || length % sizeof(uint32_t) != 0) return -1;
  const auto count = static_cast<uint32_t>((length - kHeadLength) / sizeof(uint32_t));
  if (words == nullptr && count != 0) return -1;
  if (ring.append(module, level, kind, event, words, count)) return 0;
  return map_ring() && ring.append(module, level, kind, event, words, count) ? 0 : -1;
}
