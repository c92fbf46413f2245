// A sheet of cells, as a terminal has them: a letter, and what it means. How that looks is the painter's matter.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace watch {

enum class Paint : std::uint8_t {
  kPlain,
  kQuiet,  // lines, labels
  kHead,
  kGood,
  kDegraded,
  kFaulted,
  kOut,
  kUnreadable,
  kLight,  // of a LED
  kCare,   // under maintenance, out of operation
  kKey
};

struct Cell {
  char32_t letter = U' ';
  Paint paint = Paint::kPlain;
  bool chosen = false;

  bool operator==(const Cell &) const = default;
};

// Which letters there are.
enum class Letters { kAscii, kUnicode };

// A letter of a drawing in both sets.
struct Glyph {
  char32_t fine;
  char plain;
};

class Canvas {
 public:
  Canvas(int rows, int columns, Letters letters)
      : rows_(rows),
        columns_(columns),
        letters_(letters),
        cells_(static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns)) {}

  int rows() const { return rows_; }
  int columns() const { return columns_; }
  const Cell &at(int row, int column) const { return cells_[index(row, column)]; }

  // What is beyond the sheet is cut off. A text may hold any bytes: a terminal shows them and obeys none. One that is longer
  // than `most` columns ends with a mark for it. Returns the column behind it.
  int put(int row, int column, std::string_view text, Paint paint = Paint::kPlain, int most = 1 << 16);
  void put(int row, int column, const Glyph &glyph, Paint paint);
  void choose(int row, int column, int width);
  void clear(int row, int column, int width);

  // The letters alone, without blanks at the ends of lines.
  std::vector<std::string> lines() const;

 private:
  std::size_t index(int row, int column) const {
    return static_cast<std::size_t>(row) * static_cast<std::size_t>(columns_) + static_cast<std::size_t>(column);
  }
  bool has(int row, int column) const { return row >= 0 && row < rows_ && column >= 0 && column < columns_; }
  void set(int row, int column, char32_t letter, Paint paint);
  std::u32string letters_of(std::string_view text) const;

  int rows_, columns_;
  Letters letters_;
  std::vector<Cell> cells_;
};

std::string utf8_of(char32_t letter);

}  // namespace watch
