// Texts of bounded size, and what becomes of them before the operator reads them.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <string_view>

namespace lmainte::procedure {

// A text that is cut where its room ends.
class Text {
 public:
  static constexpr size_t kRoom = 2048;  // bytes, with the NUL

  Text() { bytes_[0] = '\0'; }
  explicit Text(std::string_view text) : Text() { add(text); }

  const char *c_str() const { return bytes_; }
  std::string_view view() const { return {bytes_, size_}; }

  Text &add(std::string_view more);
  [[gnu::format(printf, 2, 3)]] Text &add_format(const char *format, ...);
  [[gnu::format(printf, 2, 0)]] Text &add_format(const char *format, std::va_list values);

 private:
  size_t size_ = 0;
  char bytes_[kRoom];
};

[[gnu::format(printf, 1, 2)]] Text text_of(const char *format, ...);

// Declares a text of the format and the values of the function in which it stands: no other one can take the values up.
#define PROCEDURE_TEXT(name, format)           \
  lmainte::procedure::Text name;               \
  std::va_list values_of_##name;               \
  va_start(values_of_##name, format);          \
  (name).add_format(format, values_of_##name); \
  va_end(values_of_##name)

// What is shown on the terminal in one line: a name comes from a unit's own memory and may hold any bytes. Characters of UTF-8
// stay as they are; all that a terminal obeys, and all that is no character, becomes "\x1b".
Text shown(std::string_view text);

constexpr size_t kColumns = 80;

// How a line is broken at its blanks: each part but the last ends with `end`, each but the first begins with `begin`.
struct Fold {
  size_t columns = kColumns;
  std::string_view end = "", begin = "";
  bool is_shell = false;  // a shell's line: a word in quotes stays whole
};

// One line as it is shown, broken where it is too long. A word that is longer than a line stays whole.
Text folded(std::string_view raw, const Fold &fold = {});

// The same for a text of several lines.
Text in_lines(std::string_view text, size_t columns = kColumns);

}  // namespace lmainte::procedure
