#include "tests/unit/doubles/kept_events.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <map>

namespace doubles {
namespace {

// A hash table that the process shares with its children. Nothing is allocated: a signal handler may record, too.
constexpr size_t kPlaces = 1 << 14;
constexpr uint32_t kSignalCame = 0x110C0379;  // of disp_done, which has a trace record of its own
constexpr uint32_t kDotStart = 0x110C0370;    // of the module that disp_done is part of

KeptEvent *table() {
  static void *const memory =
      mmap(nullptr, kPlaces * sizeof(KeptEvent), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) std::abort();
  return static_cast<KeptEvent *>(memory);
}

int open_file() {
  const char *path = std::getenv("LMAINTE_KEPT_EVENTS");
  return path == nullptr ? -1 : open(path, O_WRONLY | O_APPEND | O_CLOEXEC);
}

// Puts an event into its place. False where it is there already.
bool put(const KeptEvent &kept) {
  size_t place = (kept.event * 31 + kept.line * 7 + kept.words) % kPlaces;
  for (size_t tried = 0; tried < kPlaces; ++tried, place = (place + 1) % kPlaces) {
    KeptEvent &there = table()[place];
    if (std::memcmp(&there, &kept, sizeof kept) == 0) return false;
    if (there.event != 0) continue;
    there = kept;
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
  std::map<uint32_t, uint32_t> module_of;  // by the event
  for (size_t i = 0; i < kPlaces; ++i) module_of[table()[i].event] = table()[i].module;
  std::map<std::pair<uint32_t, uint32_t>, uint32_t> event_at;  // by module and line
  Lines doubled;
  for (size_t i = 0; i < kPlaces; ++i) {
    const KeptEvent &kept = table()[i];
    if (kept.event == 0) continue;
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
