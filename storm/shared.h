// Memory that a process shares with its children, whatever becomes of them.
#pragma once

#include <sys/mman.h>

#include <cerrno>
#include <new>
#include <system_error>

namespace storm {

// For the life of the process and of its children. Throws.
template <typename Content>
Content &shared() {
  void *const memory = mmap(nullptr, sizeof(Content), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) throw std::system_error(errno, std::generic_category(), "sharing memory");
  return *new (memory) Content{};
}

}  // namespace storm
