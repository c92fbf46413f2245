#include "host/terminal/strainer.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "host/base/shown.h"

namespace terminal {
namespace {

constexpr std::string_view kNoCharacter = "\xef\xbf\xbd";  // U+FFFD
constexpr char kCancel = '\x18', kSubstitute = '\x1a', kEscape = '\x1b', kBell = '\x07', kRubout = '\x7f';
constexpr std::size_t kLongest = 128;     // of a sequence; longer ones mean nothing to any terminal
constexpr std::size_t kMostNumbers = 16;  // libvterm has room for so many
constexpr int kLargest = 9999;            // more than a terminal has rows or columns

constexpr bool is_between(char byte, char first, char last) {
  return first <= byte && byte <= last;
}

constexpr bool is_digit(char byte) {
  return is_between(byte, '0', '9');
}

bool is_part_of_character(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80;
}

std::size_t size_announced_by(char first) {
  const auto byte = static_cast<unsigned char>(first);
  return byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : byte >= 0xC0 ? 2 : 1;
}

// The numbers of a sequence between what leads them and what ends them, none larger than a terminal; nothing where they make
// no sense.
std::optional<std::string> sound(std::string_view numbers) {
  std::string text;
  std::size_t count = 1;
  while (!numbers.empty()) {
    const std::size_t digits = std::min(numbers.find_first_not_of("0123456789"), numbers.size());
    int number = 0;
    for (const char digit : numbers.substr(0, digits)) number = std::min(number * 10 + (digit - '0'), kLargest);
    if (digits > 0) text += std::to_string(number);
    numbers.remove_prefix(digits);
    if (numbers.empty()) break;
    if ((numbers[0] != ';' && numbers[0] != ':') || ++count > kMostNumbers) return {};
    text += numbers[0];
    numbers.remove_prefix(1);
  }
  return text;
}

}  // namespace

std::string Strainer::passed(std::string_view bytes) {
  for (const char byte : bytes) take(byte);
  return std::exchange(passed_, "");
}

void Strainer::take(char byte) {
  if (state_ == State::kCharacter && !is_part_of_character(byte)) {
    passed_ += kNoCharacter;
    ends_in_character_ = true;
    state_ = State::kText;
  }
  if (take_control(byte)) return;
  switch (state_) {
    case State::kText:
      return take_text(byte);
    case State::kCharacter:
      return take_continuation(byte);
    case State::kEscape:
      return take_escape(byte);
    case State::kSequence:
      return take_sequence(byte);
    case State::kString:
      return;
    case State::kEndOfString:
      state_ = State::kEscape;
      return take_escape(byte);
  }
}

// Controls work at once, also in the middle of a sequence.
bool Strainer::take_control(char byte) {
  if (byte == '\0' || byte == kRubout) return true;
  if (!is_between(byte, '\0', '\x1f')) return false;
  if (byte == kEscape) {
    held_ = kEscape;
    state_ = state_ == State::kString ? State::kEndOfString : State::kEscape;
  } else if (byte == kCancel || byte == kSubstitute || (byte == kBell && state_ == State::kString)) {
    state_ = State::kText;
  } else if (state_ != State::kString) {
    pass_other({&byte, 1});
  }
  return true;
}

void Strainer::take_text(char byte) {
  if (size_announced_by(byte) == 1) return pass_character({byte});
  held_ = byte;
  state_ = State::kCharacter;
}

void Strainer::take_continuation(char byte) {
  held_ += byte;
  if (held_.size() < size_announced_by(held_[0])) return;
  state_ = State::kText;
  pass_character(held_);
}

void Strainer::pass_character(const std::string &character) {
  last_ = base::character_size(character) == character.size() ? character : kNoCharacter;
  passed_ += last_;
  ends_in_character_ = true;
}

void Strainer::pass_other(std::string_view bytes) {
  passed_ += bytes;
  ends_in_character_ = false;
}

// Strings set titles and ask for settings; there is nothing of them on the screen.
void Strainer::take_escape(char byte) {
  held_ += byte;
  const bool is_first = held_.size() == 2,
             begins_more = std::string_view("[P]X^_").find(byte) != std::string_view::npos;
  if (begins_more && is_first) {
    state_ = byte == '[' ? State::kSequence : State::kString;
  } else if (!is_between(byte, ' ', '/')) {
    state_ = State::kText;
    if (is_between(byte, '0', '~') && !begins_more && held_.size() <= 4) pass_other(held_);
  } else if (held_.size() > kLongest) {
    state_ = State::kText;
  }
}

void Strainer::take_sequence(char byte) {
  if (is_between(byte, '@', '~')) return end_sequence(byte);
  held_ += byte;
  if (!is_between(byte, ' ', '?') || held_.size() > kLongest) state_ = State::kText;
}

void Strainer::end_sequence(char final) {
  state_ = State::kText;
  const std::string_view body = std::string_view(held_).substr(2);
  const std::size_t leader = std::min(body.find_first_not_of("<=>?"), body.size());
  const std::size_t end = std::min(body.find_first_of(" !\"#$%&'()*+,-./"), body.size());
  const auto numbers = sound(body.substr(leader, end - std::min(leader, end)));
  const std::string_view behind = body.substr(end);
  if (!numbers || leader > 1 || behind.size() > 1) return;
  if (final != 'b' || leader > 0 || !behind.empty()) {
    return pass_other(held_.substr(0, 2 + leader) + *numbers + std::string(behind) + final);
  }
  const int times = numbers->empty() || !is_digit(numbers->front()) ? 1 : std::stoi(*numbers);
  for (int i = 0; i < std::max(times, 1); ++i) passed_ += last_;
  ends_in_character_ = ends_in_character_ || !last_.empty();
}

}  // namespace terminal
