#include "host/spbox/spelling.h"

#include <algorithm>

namespace spbox {
namespace {

// How many keys lie between two words: one too many, one too few, a wrong one, or two that changed places.
std::size_t distance(std::string_view one, std::string_view other) {
  std::vector<std::vector<std::size_t>> rows(one.size() + 1, std::vector<std::size_t>(other.size() + 1));
  for (std::size_t i = 0; i <= one.size(); ++i) {
    for (std::size_t j = 0; j <= other.size(); ++j) {
      if (i == 0 || j == 0) {
        rows[i][j] = i + j;
        continue;
      }
      const std::size_t wrong = one[i - 1] == other[j - 1] ? 0 : 1;
      rows[i][j] = std::min({rows[i - 1][j] + 1, rows[i][j - 1] + 1, rows[i - 1][j - 1] + wrong});
      if (i > 1 && j > 1 && one[i - 1] == other[j - 2] && one[i - 2] == other[j - 1]) {
        rows[i][j] = std::min(rows[i][j], rows[i - 2][j - 2] + 1);
      }
    }
  }
  return rows.back().back();
}

}  // namespace

std::string nearest(std::string_view word, const std::vector<std::string> &names) {
  std::string found;
  std::size_t least = std::min<std::size_t>(2, word.size() / 2) + 1;  // of a short word, nothing but its length is left
  for (const std::string &name : names) {
    const std::size_t keys = distance(word, name);
    if (keys >= least) continue;
    least = keys;
    found = name;
  }
  return found;
}

std::string did_you_mean(std::string_view word, const std::vector<std::string> &names) {
  const std::string name = nearest(word, names);
  return name.empty() ? "" : " Did you mean `" + name + "`?";
}

}  // namespace spbox
