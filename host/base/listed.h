// Names in a sentence.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace base {

// "a, b or c", with " or " before the last one; of a container of strings or views.
template <typename Names>
std::string listed(const Names &names, std::string_view before_last = ", ") {
  std::string text;
  std::size_t left = names.size();
  for (const std::string_view name : names) {
    if (!text.empty()) text += left == 1 ? before_last : ", ";
    text += name;
    --left;
  }
  return text;
}

}  // namespace base
