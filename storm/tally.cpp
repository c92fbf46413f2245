#include "storm/tally.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <new>
#include <system_error>

namespace storm {

Tally &Tally::shared() {
  void *const memory = mmap(nullptr, sizeof(Tally), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) throw std::system_error(errno, std::generic_category(), "sharing memory");
  return *new (memory) Tally{};
}

void Tally::find(const std::string &sentence) {
  ++findings;
  const std::string line = "FOUND " + sentence + "\n";
  [[maybe_unused]] const ssize_t nobody_reads = write(STDERR_FILENO, line.data(), line.size());
}

std::uint64_t Tally::killed() const {
  std::uint64_t all = 0;
  for (const Row &row : rows) all += row.killed;
  return all;
}

}  // namespace storm
