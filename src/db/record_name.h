// The name of a record, as the database client takes it: 128 bytes, zero behind the text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace lmainte {

class RecordName {
 public:
  RecordName() = default;

  RecordName(const char *pattern, int32_t number) { fill(pattern, number); }

  // The pattern, with the number in the place of its integer conversion if it has one. Cut at 127 characters. Where the
  // name had this pattern before, only its number is written anew: readers make hundreds of names.
  void fill(const char *pattern, int32_t number) {
    if (pattern != pattern_) take_apart(pattern);
    if (put_number(number)) return;
    clear();
    // NOLINTNEXTLINE(clang-diagnostic-format-nonliteral): the record's name is a pattern for the number
    snprintf(text_, sizeof text_, pattern, number);
  }

  const char *text() const { return text_; }

 private:
  static constexpr size_t kSize = 128;

  void clear() {
    pattern_ = nullptr;
    if (text_[0] != '\0') memset(text_, 0, sizeof text_);
  }

  // The usual names of records, those without a number and "..._%02d", need no snprintf, which takes much longer. `pattern_`
  // stays null for all others.
  void take_apart(const char *pattern) {
    clear();
    const char *mark = strchrnul(pattern, '%');
    const auto stem = static_cast<size_t>(mark - pattern);
    const bool is_counted = mark[0] == '%' && mark[1] == '0' && mark[2] >= '1' && mark[2] <= '9' && mark[3] == 'd';
    if (is_counted ? mark[4] != '\0' : mark[0] != '\0') return;
    const size_t digits = is_counted ? static_cast<size_t>(mark[2] - '0') : 0;
    if (stem + digits >= kSize) return;
    memcpy(text_, pattern, stem);
    pattern_ = pattern;
    stem_ = stem;
    end_ = stem + digits;
  }

  // False for a number that has more digits, or none of its own.
  bool put_number(int32_t number) {
    if (pattern_ == nullptr) return false;
    if (stem_ == end_) return true;
    if (number < 0) return false;
    for (size_t at = end_; at > stem_; number /= 10) text_[--at] = static_cast<char>('0' + number % 10);
    return number == 0;
  }

  char text_[kSize] = {};
  const char *pattern_ = nullptr;  // the text is this one with a number
  size_t stem_ = 0;                // the number stands from here
  size_t end_ = 0;                 // to here
};

}  // namespace lmainte
