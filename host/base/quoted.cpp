#include "host/base/quoted.h"

#include <string_view>

#include "host/base/shown.h"

namespace base {
namespace {

// For a shell that knows it: bash, ksh, zsh and busybox do. Nothing in it is obeyed by the terminal that shows it.
std::string quoted_with_escapes(std::string_view word) {
  std::string text = "$'";
  while (!word.empty()) {
    const std::size_t size = character_size(word);
    if (word[0] == '\'' || word[0] == '\\') text += '\\';
    text += size == 0 ? escape_of(word[0]) : word.substr(0, size);
    word.remove_prefix(size == 0 ? 1 : size);
  }
  return text + "'";
}

}  // namespace

std::string quoted(const std::string &word) {
  constexpr const char *kPlain = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-./:@%+=,#";
  if (!word.empty() && word.front() != '#' && word.find_first_not_of(kPlain) == std::string::npos) return word;
  if (shown(word) != word) return quoted_with_escapes(word);
  std::string text = "'";
  for (const char character : word) {
    if (character == '\'') {
      text += "'\\''";
    } else {
      text += character;
    }
  }
  return text + "'";
}

}  // namespace base
