#include "storm/tally.h"

#include <fcntl.h>
#include <unistd.h>

namespace storm {
namespace {

// A worker may have closed its standard error, and be confined.
const int standard_error = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);

}  // namespace

void Tally::find(const std::string &sentence) {
  ++findings;
  const std::string line = "FOUND " + sentence + "\n";
  [[maybe_unused]] const ssize_t nobody_reads = write(standard_error, line.data(), line.size());
}

std::uint64_t Tally::killed() const {
  std::uint64_t all = 0;
  for (const Row &row : rows) all += row.killed;
  return all;
}

}  // namespace storm
