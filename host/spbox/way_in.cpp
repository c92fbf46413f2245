#include "host/spbox/way_in.h"

#include <cerrno>
#include <cstdlib>

namespace spbox {

std::string shell_word(std::string_view text) {
  const auto harmless = [](char letter) {
    return std::string_view("/_.,:=+@%#-").find(letter) != std::string_view::npos || (letter >= '0' && letter <= '9') ||
           (letter >= 'A' && letter <= 'Z') || (letter >= 'a' && letter <= 'z');
  };
  bool plain = !text.empty() && text.front() != '#';
  for (const char letter : text) plain = plain && harmless(letter);
  if (plain) return std::string(text);
  std::string word = "'";
  for (const char letter : text) word += letter == '\'' ? R"('\'')" : std::string(1, letter);
  return word + "'";
}

std::string way_in(const std::filesystem::path &folder) {
  const char *const called = std::getenv("SPBOX_CALLED");  // by a script that stands for spbox, in a shell's words
  const bool by_script = called != nullptr && *called != '\0';
  return (by_script ? called : shell_word(program_invocation_name)) + " run " + shell_word(folder.native());
}

}  // namespace spbox
