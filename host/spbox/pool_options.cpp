#include "host/spbox/pool_options.h"

#include <unistd.h>

#include <algorithm>

namespace spbox {

PoolOptions::PoolOptions() : width_(static_cast<std::size_t>(std::max(1L, sysconf(_SC_NPROCESSORS_ONLN)))) {}

Word PoolOptions::width_word() {
  return {.name = "-j",
          .help = "So many at the same time; as many as there are\nprocessors without it",
          .to = number(width_, 1, 1000),
          .value = "N"};
}

Word PoolOptions::shard_word(const std::string &help) {
  return {.name = "--shard", .help = help, .to = &share_, .value = "K/N"};
}

void PoolOptions::check() {
  try {
    if (!share_.empty()) shard_ = runner::shard_in(share_);
  } catch (const std::invalid_argument &wrong) {
    throw UsageError(wrong.what() + std::string("."));
  }
}

}  // namespace spbox
