#include "host/box/place.h"

#include <cstdlib>

namespace box {

Place Place::here() {
  const char *root = std::getenv("SPBOX_ROOT");
  return Place(root != nullptr && *root != '\0' ? root : "/");
}

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

}  // namespace box
