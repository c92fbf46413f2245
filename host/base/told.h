// What people are told of an exception, also where its own text is for programmers.
#pragma once

#include <exception>
#include <new>

namespace base {

inline constexpr const char *kNoMemory = "there is not enough memory";

inline const char *told(const std::exception &error) {
  return dynamic_cast<const std::bad_alloc *>(&error) == nullptr ? error.what() : kNoMemory;
}

}  // namespace base
