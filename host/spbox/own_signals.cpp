#include "host/spbox/own_signals.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <cstdint>

#include "host/base/descriptor.h"

namespace spbox {
namespace {

// As the kernel's own header has it from Linux 6.12 on.
struct RulesetAttribute {
  std::uint64_t handled_access_fs, handled_access_net, scoped;
};
constexpr std::uint64_t kAbstractSocket = 1, kSignal = 2;
constexpr std::uint32_t kAskForVersion = 1;
constexpr long kFirstWithScopes = 6;

}  // namespace

void keep_signals_among_own() {
  if (syscall(SYS_landlock_create_ruleset, nullptr, 0, kAskForVersion) < kFirstWithScopes) return;
  const RulesetAttribute attribute{0, 0, kAbstractSocket | kSignal};
  const base::Descriptor ruleset(
      static_cast<int>(syscall(SYS_landlock_create_ruleset, &attribute, sizeof attribute, 0)));
  if (ruleset.get() >= 0) syscall(SYS_landlock_restrict_self, ruleset.get(), 0);
}

}  // namespace spbox
