#include "host/script/pattern.h"

#include <regex.h>

#include <array>
#include <stdexcept>

namespace script {

struct Pattern::Compiled {
  explicit Compiled(const std::string &text) {
    const int error = regcomp(&regex, text.c_str(), REG_EXTENDED);
    if (error == 0) return;
    std::array<char, 128> why{};
    regerror(error, &regex, why.data(), why.size());
    throw std::invalid_argument("\"" + text + "\" is no regular expression: " + why.data());
  }
  ~Compiled() { regfree(&regex); }
  Compiled(const Compiled &) = delete;
  Compiled &operator=(const Compiled &) = delete;

  regex_t regex{};
};

Pattern::Pattern(const std::string &text) : compiled_(std::make_shared<Compiled>(text)) {
  if (find("")) throw std::invalid_argument("\"" + text + "\" fits an empty line, and so fits everywhere");
}

std::optional<Match> Pattern::find(std::string_view line, std::size_t from) const {
  if (from > line.size()) return {};
  const std::string rest(line.substr(from));
  std::array<regmatch_t, 2> found{};
  const int flags = from == 0 ? 0 : REG_NOTBOL;
  if (regexec(&compiled_->regex, rest.c_str(), found.size(), found.data(), flags) != 0) return {};
  const auto &value = compiled_->regex.re_nsub > 0 ? found[1] : found[0];
  const auto size = [](const regmatch_t &match) { return static_cast<std::size_t>(match.rm_eo - match.rm_so); };
  const bool has_value = value.rm_so >= 0;  // not where the group is one of several, and another one fits
  return Match{from + static_cast<std::size_t>(found[0].rm_so), size(found[0]),
               has_value ? rest.substr(static_cast<std::size_t>(value.rm_so), size(value)) : ""};
}

}  // namespace script
