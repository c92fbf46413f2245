#include "tests/unit/doubles/kept_events.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <map>
#include <vector>

namespace doubles {
namespace {

// A hash table that the process shares with its children. Nothing is allocated: a signal handler may record, too.
constexpr size_t kPlaces = 1 << 14;
constexpr uint32_t kSignalCame = 0x110C0379;  // of disp_done, which has a trace record of its own
constexpr uint32_t kDotStart = 0x110C0370;    // of the module that disp_done is part of

struct Table {
  std::atomic<uint32_t> count;
  KeptEvent places[kPlaces];
};

Table &table() {
  static void *const memory = mmap(nullptr, sizeof(Table), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) std::abort();
  return *static_cast<Table *>(memory);
}

int open_file() {
  const char *path = std::getenv("LMAINTE_KEPT_EVENTS");
  return path == nullptr ? -1 : open(path, O_WRONLY | O_APPEND | O_CLOEXEC);
}

// Puts an event into its place. False where it is there already.
bool put(const KeptEvent &kept) {
  size_t place = (kept.event * 31 + kept.line * 7 + kept.words) % kPlaces;
  for (size_t tried = 0; tried < kPlaces; ++tried, place = (place + 1) % kPlaces) {
    KeptEvent &there = table().places[place];
    if (std::memcmp(&there, &kept, sizeof kept) == 0) return false;
    if (there.event != 0) continue;
    there = kept;
    ++table().count;
    return true;
  }
  std::abort();
}

}  // namespace

void keep_event(const KeptEvent &kept) {
  static const int file = open_file();
  if (!put(kept) || file < 0) return;
  if (write(file, &kept, sizeof kept) != sizeof kept) std::abort();
}

Lines lines_of_two_events() {
  // Most tests and their children record nothing that was not seen before: then the last answer stands.
  static uint32_t counted = 0;
  static Lines doubled;
  const uint32_t count = table().count;
  if (count == counted) return doubled;
  counted = count;
  doubled.clear();
  std::vector<KeptEvent> kept_events;
  std::copy_if(std::begin(table().places), std::end(table().places), std::back_inserter(kept_events),
               [](const KeptEvent &kept) { return kept.event != 0; });
  std::map<uint32_t, uint32_t> module_of;  // by the event
  for (const KeptEvent &kept : kept_events) module_of[kept.event] = kept.module;
  std::map<std::pair<uint32_t, uint32_t>, uint32_t> event_at;  // by module and line
  for (const KeptEvent &kept : kept_events) {
    const uint32_t module = kept.event == kSignalCame ? module_of[kDotStart] : kept.module;
    const uint32_t other = event_at.try_emplace({module, kept.line}, kept.event).first->second;
    if (other == kept.event) continue;
    char text[64];
    std::snprintf(text, sizeof text, "%08X and %08X are at line %u of a module", other, kept.event, kept.line);
    doubled.push_back(text);
  }
  return doubled;
}

}  // namespace doubles
