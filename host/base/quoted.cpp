#include "host/base/quoted.h"

namespace base {

std::string quoted(const std::string &word) {
  constexpr const char *kPlain = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-./:@%+=,#";
  if (!word.empty() && word.front() != '#' && word.find_first_not_of(kPlain) == std::string::npos) return word;
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
