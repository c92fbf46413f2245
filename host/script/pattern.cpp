#include "host/script/pattern.h"

#include <regex.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>
#include <stdexcept>
#include <string_view>
#include <vector>

namespace script {
namespace {

// The C library looks for a match without an end where an expression refers back to a group, and its time and memory
// grow with the square of the repetitions, written out; nobody can interrupt it.
constexpr std::size_t kLargest = 1000;

// Behind the brackets that open at this place; at the end of the text, if nothing closes them.
std::size_t behind_brackets(std::string_view text, std::size_t at) {
  at += text.substr(at).starts_with("[^") ? 2 : 1;
  if (at < text.size() && text[at] == ']') ++at;
  while (at < text.size() && text[at] != ']') {
    const bool is_class = text[at] == '[' && at + 1 < text.size() && std::string_view(":.=").find(text[at + 1]) < 3;
    const std::size_t end = is_class ? text.find(std::string{text[at + 1], ']'}, at + 2) : at;
    if (end == std::string_view::npos) return text.size();
    at = end + (is_class ? 2 : 1);
  }
  return std::min(at + 1, text.size());
}

// The larger number of "{2,17}", or 1 where there is none.
std::size_t repetitions_at(const std::string &text, std::size_t at) {
  char *end = nullptr;
  const std::size_t least = std::strtoull(&text[at + 1], &end, 10);
  const std::size_t most = *end == ',' ? std::strtoull(end + 1, nullptr, 10) : least;
  return std::clamp<std::size_t>(std::max(least, most), 1, kLargest + 1);
}

// How many characters and groups an expression has when each repetition is written out: "a(bc){3}" has ten.
class Size {
 public:
  void add_character() {
    group_ += last_;
    last_ = 1;
  }
  void begin_group() {
    outer_.push_back(group_ + last_);
    group_ = last_ = 0;
  }
  void end_group() {
    if (outer_.empty()) return;
    last_ += group_ + 1;
    group_ = outer_.back();
    outer_.pop_back();
  }
  void repeat(std::size_t times) { last_ = std::min(last_ * times, kLargest + 1); }
  [[nodiscard]] bool is_too_large() const { return group_ + last_ > kLargest; }

 private:
  std::vector<std::size_t> outer_;
  std::size_t group_ = 0;
  std::size_t last_ = 0;
};

const char *excess_of(const std::string &text) {
  Size size;
  for (std::size_t at = 0; at < text.size() && !size.is_too_large();) {
    const char next = at + 1 < text.size() ? text[at + 1] : '\0';
    switch (text[at]) {
      case '[':
        size.add_character();
        at = behind_brackets(text, at);
        continue;
      case '\\':
        if (next >= '1' && next <= '9') return "refers back to a group: look for the text itself";
        size.add_character();
        at += 2;
        continue;
      case '(':
        size.begin_group();
        break;
      case ')':
        size.end_group();
        break;
      case '{':
        size.repeat(repetitions_at(text, at));
        break;
      default:
        size.add_character();
    }
    ++at;
  }
  return size.is_too_large() ? "is too large: it has more than 1000 characters, its repetitions written out" : nullptr;
}

}  // namespace

struct Pattern::Compiled {
  explicit Compiled(const std::string &text) {
    if (const char *excess = excess_of(text)) throw std::invalid_argument("\"" + text + "\" " + excess);
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
