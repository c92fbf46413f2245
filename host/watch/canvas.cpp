#include "host/watch/canvas.h"

#include <algorithm>
#include <cwchar>

#include "host/base/shown.h"

namespace watch {
namespace {

constexpr Glyph kCutOff{U'…', '>'};

char32_t code_of(std::string_view character) {
  const auto first = static_cast<unsigned char>(character[0]);
  if (character.size() == 1) return first;
  char32_t code = first & (0x7FU >> character.size());
  for (const char byte : character.substr(1)) code = code << 6U | (static_cast<unsigned char>(byte) & 0x3FU);
  return code;
}

}  // namespace

std::string utf8_of(char32_t letter) {
  const auto byte = [](char32_t value) { return static_cast<char>(value); };
  const auto next = [&](unsigned shift) { return byte(0x80U | (letter >> shift & 0x3FU)); };
  if (letter < 0x80) return {byte(letter)};
  if (letter < 0x800) return {byte(0xC0U | letter >> 6U), next(0)};
  if (letter < 0x10000) return {byte(0xE0U | letter >> 12U), next(6), next(0)};
  return {byte(0xF0U | letter >> 18U), next(12), next(6), next(0)};
}

// One cell each: what takes more or less room on a terminal is not drawn.
std::u32string Canvas::letters_of(std::string_view text) const {
  const std::string safe = base::shown(text);
  std::u32string letters;
  for (std::string_view left = safe; !left.empty();) {
    const std::size_t size = std::max<std::size_t>(base::character_size(left), 1);
    const char32_t code = code_of(left.substr(0, size));
    const bool fits = code < 0x80 || (letters_ == Letters::kUnicode && wcwidth(static_cast<wchar_t>(code)) == 1);
    letters += fits ? code : U'?';
    left.remove_prefix(size);
  }
  return letters;
}

void Canvas::set(int row, int column, char32_t letter, Paint paint) {
  if (has(row, column)) cells_[index(row, column)] = {letter, paint, false};
}

int Canvas::put(int row, int column, std::string_view text, Paint paint, int most) {
  const std::u32string letters = letters_of(text);
  const auto room = static_cast<std::size_t>(std::max(0, std::min(most, columns_ - column)));
  const std::size_t shown = std::min(letters.size(), room);
  for (std::size_t i = 0; i < shown; ++i) set(row, column + static_cast<int>(i), letters[i], paint);
  if (letters.size() > room && room > 0) put(row, column + static_cast<int>(room) - 1, kCutOff, Paint::kQuiet);
  return column + static_cast<int>(shown);
}

void Canvas::put(int row, int column, const Glyph &glyph, Paint paint) {
  set(row, column, letters_ == Letters::kUnicode ? glyph.fine : static_cast<char32_t>(glyph.plain), paint);
}

void Canvas::choose(int row, int column, int width) {
  for (int i = column; i < column + width; ++i) {
    if (has(row, i)) cells_[index(row, i)].chosen = true;
  }
}

void Canvas::clear(int row, int column, int width) {
  for (int i = column; i < column + width; ++i) set(row, i, U' ', Paint::kPlain);
}

std::vector<std::string> Canvas::lines() const {
  std::vector<std::string> lines;
  for (int row = 0; row < rows_; ++row) {
    std::string line;
    for (int column = 0; column < columns_; ++column) line += utf8_of(at(row, column).letter);
    line.erase(line.find_last_not_of(' ') + 1);
    lines.push_back(line);
  }
  return lines;
}

}  // namespace watch
