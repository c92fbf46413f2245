// Text as the operator is shown it. A name comes from a unit's own memory and may hold any bytes: the terminal shows them, and
// never obeys them. Copy it with the command.
#pragma once

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string>
#include <string_view>

// Whether a UTF-8 character changes the order or the look of the text beside it. All of these are compared as bytes.
inline bool is_format(std::string_view character) {
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
inline size_t character_size(std::string_view text) {
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
    return is_whole && !is_format(text.substr(0, form.size)) ? form.size : 0;
  }
  return 0;
}

// One line: characters as they are, other bytes and control characters as "\x1b".
inline std::string shown(std::string_view text) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string result;
  while (!text.empty()) {
    const size_t size = character_size(text);
    const auto byte = static_cast<unsigned char>(text[0]);
    result +=
        size > 0 ? std::string(text.substr(0, size)) : std::string{'\\', 'x', kDigits[byte / 16], kDigits[byte % 16]};
    text.remove_prefix(std::max<size_t>(size, 1));
  }
  return result;
}
