#include "procedure/text.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>

namespace lmainte::procedure {
namespace {

std::string_view first(std::string_view text, size_t size) {
  return {text.data(), std::min(size, text.size())};
}

// Whether a UTF-8 character changes the order or the look of the text beside it. All of these are compared as bytes.
bool is_format(std::string_view character) {
  constexpr struct {
    std::string_view first, last;
  } kRows[] = {{"\xc2\xad", "\xc2\xad"},
               {"\xd8\x9c", "\xd8\x9c"},
               {"\xe1\xa0\x8e", "\xe1\xa0\x8e"},
               {"\xe2\x80\x8b", "\xe2\x80\x8f"},
               // NOLINTNEXTLINE(misc-misleading-bidirectional): what is looked for
               {"\xe2\x80\xa8", "\xe2\x80\xae"},
               {"\xe2\x81\xa0", "\xe2\x81\xaf"},
               {"\xef\xbb\xbf", "\xef\xbb\xbf"},
               {"\xef\xbf\xb9", "\xef\xbf\xbb"},
               {"\xf3\xa0\x80\x80", "\xf3\xa0\x81\xbf"}};
  return std::any_of(std::begin(kRows), std::end(kRows),
                     [&](const auto &row) { return row.first <= character && character <= row.last; });
}

// How many bytes the UTF-8 character at the front takes; 0 where there is none, or one that a terminal obeys: a control
// character, or one that turns the order of the text around.
size_t character_size(std::string_view text) {
  struct Form {
    unsigned char first, last;      // of the first byte
    unsigned char lowest, highest;  // of the second one; the others are 0x80 to 0xBF
    size_t size;
  };
  constexpr Form kForms[] = {
      {0x20, 0x7E, 0, 0, 1},       {0xC2, 0xC2, 0xA0, 0xBF, 2}, {0xC3, 0xDF, 0x80, 0xBF, 2},
      {0xE0, 0xE0, 0xA0, 0xBF, 3}, {0xE1, 0xEC, 0x80, 0xBF, 3}, {0xED, 0xED, 0x80, 0x9F, 3},
      {0xEE, 0xEF, 0x80, 0xBF, 3}, {0xF0, 0xF0, 0x90, 0xBF, 4}, {0xF1, 0xF3, 0x80, 0xBF, 4},
      {0xF4, 0xF4, 0x80, 0x8F, 4},
  };
  const auto is_within = [&](size_t i, unsigned char lowest, unsigned char highest) {
    const auto byte = static_cast<unsigned char>(text[i]);
    return lowest <= byte && byte <= highest;
  };
  for (const Form &form : kForms) {
    if (text.size() < form.size || !is_within(0, form.first, form.last)) continue;
    bool is_whole = form.size < 2 || is_within(1, form.lowest, form.highest);
    for (size_t i = 2; i < form.size; ++i) is_whole = is_whole && is_within(i, 0x80, 0xBF);
    return is_whole && !is_format(first(text, form.size)) ? form.size : 0;
  }
  return 0;
}

// Where a line may be broken: at its first blank, but not within the quotes of a shell's word.
size_t end_of_word(std::string_view line, bool is_shell) {
  bool is_quoted = false;
  for (size_t i = 0; i < line.size(); ++i) {
    if (is_shell && line[i] == '\'') is_quoted = !is_quoted;
    if (is_shell && line[i] == '\\' && !is_quoted)
      ++i;  // what stands behind it is no quote
    else if (line[i] == ' ' && !is_quoted)
      return i;
  }
  return std::string_view::npos;
}

}  // namespace

Text &Text::add(std::string_view more) {
  const size_t size = std::min(more.size(), kRoom - 1 - size_);
  memcpy(bytes_ + size_, more.data(), size);
  size_ += size;
  bytes_[size_] = '\0';
  return *this;
}

Text &Text::add_format(const char *format, std::va_list values) {
  const int size = vsnprintf(bytes_ + size_, kRoom - size_, format, values);
  if (size > 0) size_ = std::min(size_ + static_cast<size_t>(size), kRoom - 1);
  bytes_[size_] = '\0';
  return *this;
}

Text &Text::add_format(const char *format, ...) {
  std::va_list values;
  va_start(values, format);
  add_format(format, values);
  va_end(values);
  return *this;
}

Text text_of(const char *format, ...) {
  PROCEDURE_TEXT(text, format);
  return text;
}

Text shown(std::string_view text) {
  Text result;
  while (!text.empty()) {
    const size_t size = character_size(text);
    if (size > 0)
      result.add(first(text, size));
    else
      result.add_format("\\x%02x", static_cast<unsigned char>(text[0]));
    text.remove_prefix(std::max<size_t>(size, 1));
  }
  return result;
}

Text folded(std::string_view raw, const Fold &fold) {
  const Text whole = shown(raw);
  std::string_view line = whole.view();
  Text result;
  size_t used = 0;
  for (bool is_first = true;; is_first = false) {
    const size_t blank = end_of_word(line, fold.is_shell);
    const bool is_last = blank == std::string_view::npos;
    const std::string_view word = first(line, blank);
    const size_t needed = 1 + word.size() + (is_last ? 0 : fold.end.size());
    if (!is_first && used + needed > fold.columns) {
      result.add(fold.end).add("\n").add(fold.begin);
      used = fold.begin.size();
    } else if (!is_first) {
      result.add(" ");
      ++used;
    }
    result.add(word);
    used += word.size();
    if (is_last) return result;
    line.remove_prefix(blank + 1);
  }
}

Text in_lines(std::string_view text, size_t columns) {
  Text result;
  for (;;) {
    const size_t end = text.find('\n');
    result.add(folded(first(text, end), {.columns = columns}).view());
    if (end == std::string_view::npos) return result;
    result.add("\n");
    text.remove_prefix(end + 1);
  }
}

}  // namespace lmainte::procedure
