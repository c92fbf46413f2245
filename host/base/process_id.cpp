#include "host/base/process_id.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>

namespace base {
namespace {

// The id, once it is known. The kernel clears this page in each child, so that the child does not find its parent's. Null where
// the kernel does not do that.
pid_t *make_page_of_this_process() noexcept {
  const auto size = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  void *const page = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (page == MAP_FAILED) return nullptr;
  if (madvise(page, size, MADV_WIPEONFORK) == 0) return static_cast<pid_t *>(page);
  munmap(page, size);
  return nullptr;
}

}  // namespace

pid_t process_id() noexcept {
  static pid_t *const known = make_page_of_this_process();
  if (known == nullptr) return getpid();
  if (*known == 0) *known = getpid();
  return *known;
}

}  // namespace base
