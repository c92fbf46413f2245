#include "host/clock/offspring.h"

namespace box_time {

Offspring::Offspring(bool is_listed) : is_listed_(is_listed) {
  if (is_listed_) return;
  for (const pid_t process : processes()) {
    if (const auto file = process_file(process)) by_parent_.emplace(file->parent, process);
  }
}

std::vector<pid_t> Offspring::of(const Watched &process) const {
  if (is_listed_) return process.children();
  std::vector<pid_t> found;
  const auto [first, end] = by_parent_.equal_range(process.id());
  for (auto child = first; child != end; ++child) found.push_back(child->second);
  return found;
}

}  // namespace box_time
