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

  // The pattern, with the number in the place of its integer conversion if it has one. Cut at 127 characters.
  RecordName(const char *pattern, int32_t number) { fill(pattern, number); }

  // The same for an empty name.
  void fill(const char *pattern, int32_t number) {
    if (fill_usual(pattern, number)) return;
    // NOLINTNEXTLINE(clang-diagnostic-format-nonliteral): the record's name is a pattern for the number
    snprintf(text_, sizeof text_, pattern, number);
  }

  const char *text() const { return text_; }

 private:
  static constexpr size_t kSize = 128;

  // Fills in the usual names of records, those without a number and "..._%02d", in a quarter of the instructions that snprintf
  // takes: readers make hundreds of them. Returns false for another pattern, or a number with more digits. The name must be
  // written anew then.
  bool fill_usual(const char *pattern, int32_t number) {
    const char *mark = strchrnul(pattern, '%');
    const auto stem = static_cast<size_t>(mark - pattern);
    if (stem >= kSize) return false;
    memcpy(text_, pattern, stem);
    if (*mark == '\0') return true;
    const bool is_counted = mark[1] == '0' && mark[2] >= '1' && mark[2] <= '9' && mark[3] == 'd' && mark[4] == '\0';
    if (!is_counted || number < 0) return false;
    const auto digits = static_cast<size_t>(mark[2] - '0');
    if (stem + digits >= kSize) return false;
    for (size_t at = stem + digits; at > stem; number /= 10) text_[--at] = static_cast<char>('0' + number % 10);
    return number == 0;
  }

  char text_[kSize] = {};
};

}  // namespace lmainte
