#include "host/box/mapping_guard.h"

#include <sys/mman.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>

namespace box {
namespace {

struct Mapping {
  std::atomic<std::uintptr_t> begin, size;
};

// A process maps its trace once. A test maps many, and the newest are guarded.
constinit std::array<Mapping, 16> mappings{};
constinit std::atomic<unsigned> mappings_guarded = 0;
struct sigaction handler_before {};

bool replace(std::uintptr_t address) noexcept {
  for (const Mapping &mapping : mappings) {
    const std::uintptr_t begin = mapping.begin, size = mapping.size;
    if (address < begin || address - begin >= size) continue;
    void *const memory = reinterpret_cast<void *>(begin);  // NOLINT(performance-no-int-to-ptr): compared as numbers
    return mmap(memory, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0) == memory;
  }
  return false;
}

// After the return the same instruction runs again, into the new memory, or into the old default and the end.
void on_bus_error(int signal, siginfo_t *info, void *context) {
  const int kept_errno = errno;
  const bool replaced = replace(reinterpret_cast<std::uintptr_t>(info->si_addr));
  errno = kept_errno;
  if (replaced) return;
  if ((handler_before.sa_flags & SA_SIGINFO) != 0) return handler_before.sa_sigaction(signal, info, context);
  if (handler_before.sa_handler != SIG_DFL && handler_before.sa_handler != SIG_IGN)
    return handler_before.sa_handler(signal);
  sigaction(signal, &handler_before, nullptr);
}

}  // namespace

void survive_lost_mappings() noexcept {
  struct sigaction now {};
  if (sigaction(SIGBUS, nullptr, &now) != 0) return;
  if ((now.sa_flags & SA_SIGINFO) != 0 && now.sa_sigaction == on_bus_error) return;
  handler_before = now;
  now = {};
  now.sa_sigaction = on_bus_error;
  now.sa_flags = SA_SIGINFO | SA_ONSTACK;
  sigaction(SIGBUS, &now, nullptr);
}

void guard_mapping(void *memory, std::size_t size) noexcept {
  Mapping &mapping = mappings[mappings_guarded.fetch_add(1) % mappings.size()];
  mapping.size = 0;  // no range while it changes
  mapping.begin = reinterpret_cast<std::uintptr_t>(memory);
  mapping.size = size;
}

}  // namespace box
