// How a procedure tells the operator something: in lines that a terminal of 80 columns shows whole. The sentences are in steps.h.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <string>
#include <string_view>

#include "../shown.h"

namespace procedure {

inline constexpr size_t kColumns = 80;

inline std::string formatted(const char *format, std::va_list values) {
  char room[2048];
  std::vsnprintf(room, sizeof room, format, values);
  return room;
}

// As printf does, but into a text.
[[gnu::format(printf, 1, 2)]] inline std::string text_of(const char *format, ...) {
  std::va_list values;
  va_start(values, format);
  std::string text = formatted(format, values);
  va_end(values);
  return text;
}

// A line as it is shown, broken at its blanks where it is too long. Each part but the last ends with `end`, each but the first begins
// with `begin`. A word that is longer than a line stays whole.
inline std::string folded(std::string_view line, size_t columns, std::string_view end = "",
                          std::string_view begin = "") {
  const std::string text = shown(line);
  line = text;
  std::string result;
  size_t used = 0;
  for (bool is_first = true;; is_first = false) {
    const size_t blank = line.find(' ');
    const std::string_view word = line.substr(0, blank);
    const size_t needed = 1 + word.size() + (blank == std::string_view::npos ? 0 : end.size());
    if (!is_first && used + needed > columns) {
      result.append(end).append("\n").append(begin);
      used = begin.size();
    } else if (!is_first) {
      result += ' ';
      ++used;
    }
    result += word;
    used += word.size();
    if (blank == std::string_view::npos) return result;
    line.remove_prefix(blank + 1);
  }
}

// The same for a text of several lines.
inline std::string in_lines(std::string_view text, size_t columns = kColumns) {
  std::string result;
  for (;;) {
    const size_t end = text.find('\n');
    result += folded(text.substr(0, end), columns);
    if (end == std::string_view::npos) return result;
    result += '\n';
    text.remove_prefix(end + 1);
  }
}

// For what is not told, but shown by the library as it stands.
constexpr bool fits_on_terminal(const char *text) {
  size_t columns = 0;
  for (; *text != '\0'; ++text) {
    columns = *text == '\n' ? 0 : columns + 1;
    if (columns > kColumns) return false;
  }
  return true;
}

// Sentences, and the end of their line.
inline void tell(const std::string &sentences) {
  std::puts(in_lines(sentences).c_str());
}

[[gnu::format(printf, 1, 2)]] inline void tell(const char *format, ...) {
  std::va_list values;
  va_start(values, format);
  tell(formatted(format, values));
  va_end(values);
}

}  // namespace procedure
