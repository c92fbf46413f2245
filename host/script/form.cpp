#include "host/script/form.h"

#include <sstream>
#include <utility>

#include "host/base/listed.h"

namespace script {

bool take_verb(const Form &form, Words &words) {
  std::istringstream verb{std::string(form.verb)};
  std::size_t taken = 0;
  for (std::string word; verb >> word; ++taken) {
    if (taken == words.size() || words[taken] != word) return false;
  }
  words.erase(words.begin(), words.begin() + static_cast<std::ptrdiff_t>(taken));
  if (words.size() < form.fewest || words.size() > form.most) {
    throw std::invalid_argument("write it as: " + std::string(form.written));
  }
  return true;
}

std::invalid_argument unknown(const std::string &verb, const std::vector<std::string_view> &verbs, const char *what) {
  return std::invalid_argument(std::string("there is no ") + what + " \"" + verb + "\"; there are " +
                               base::listed(verbs, " and "));
}

std::string help_of(const Form &form, std::size_t column) {
  std::string text, left = "  " + std::string(form.written);
  if (left.size() >= column) text += std::exchange(left, "") + "\n";
  std::istringstream lines{std::string(form.meaning)};
  for (std::string line; std::getline(lines, line); left.clear()) {
    left.resize(column, ' ');
    text += left + line + "\n";
  }
  return text;
}

}  // namespace script
