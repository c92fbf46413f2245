// What people are told of an exception, also where its own text is for programmers.
#pragma once

#include <exception>
#include <filesystem>
#include <new>
#include <string>

namespace base {

inline constexpr const char *kNoMemory = "there is not enough memory";

inline std::string told(const std::exception &error) {
  if (dynamic_cast<const std::bad_alloc *>(&error) != nullptr) return kNoMemory;
  const auto *of_file = dynamic_cast<const std::filesystem::filesystem_error *>(&error);
  return of_file == nullptr ? error.what() : of_file->path1().string() + ": " + of_file->code().message();
}

}  // namespace base
