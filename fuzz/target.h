// A fuzz target: from any bytes to calls, and what must hold then.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <string_view>

namespace fuzz {

using Input = std::span<const std::uint8_t>;

struct Target {
  std::string_view name;     // of its folder in fuzz/corpus, too
  std::string_view meaning;  // what it feeds with the bytes
  void (*run)(Input input);  // ends the process where something does not hold
};

// Those of this program.
std::span<const Target> targets();

// Gives the system's own functions back where doubles stand before them: a process that ends writes files.
void calm();

// Ends the process with this sentence unless it holds, so that the input is kept as a finding.
void require(bool holds, const std::string &sentence);

inline std::string text_of(Input input) {
  return {input.begin(), input.end()};
}

// Takes values from the front of an input. Behind its end all values are 0 and all texts empty.
class Source {
 public:
  explicit Source(Input input) : rest_(input) {}

  bool empty() const { return rest_.empty(); }

  Input bytes(std::size_t most) {
    const Input taken = rest_.first(std::min(most, rest_.size()));
    rest_ = rest_.subspan(taken.size());
    return taken;
  }

  template <typename Number>
  Number number() {
    Number value = 0;
    const Input taken = bytes(sizeof value);
    for (std::size_t i = 0; i < taken.size(); ++i) value = static_cast<Number>(value | Number{taken[i]} << 8 * i);
    return value;
  }
  std::uint8_t byte() { return number<std::uint8_t>(); }
  std::uint32_t below(std::uint32_t limit) { return number<std::uint16_t>() % limit; }
  bool flag() { return byte() % 2 != 0; }

  // Up to the next byte of 0, which is taken, too.
  std::string text(std::size_t most = static_cast<std::size_t>(-1)) {
    const auto length = static_cast<std::size_t>(std::find(rest_.begin(), rest_.end(), 0) - rest_.begin());
    std::string text = text_of(bytes(std::min(most, length)));
    if (!rest_.empty() && rest_.front() == 0) rest_ = rest_.subspan(1);
    return text;
  }

  std::string all_text() { return text_of(bytes(rest_.size())); }

 private:
  Input rest_;
};

}  // namespace fuzz
