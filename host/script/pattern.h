// A regular expression for a line, as `grep -E` takes it.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace script {

struct Match {
  std::size_t at, length;
  std::string value;  // of the first group; of all of it where it has no group
};

class Pattern {
 public:
  // Throws std::invalid_argument where it is no regular expression, or one that fits an empty text and so fits everywhere.
  explicit Pattern(const std::string &text);

  // The first place from `from` on that fits.
  std::optional<Match> find(std::string_view line, std::size_t from = 0) const;

 private:
  struct Compiled;
  std::shared_ptr<const Compiled> compiled_;
};

}  // namespace script
