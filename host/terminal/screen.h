// What a terminal shows: bytes in, lines of text out.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace terminal {

struct Size {
  static constexpr int kFewestRows = 1, kFewestColumns = 2;

  int rows = 24;
  int columns = 80;
};

// Where something stands in a line, from a place on; nothing: nowhere.
struct Stretch {
  std::size_t at, length;
};
using Finder = std::function<std::optional<Stretch>(std::string_view line, std::size_t from)>;

// Finds a text.
Finder finder_of(std::string text);

// A colour of a terminal: one of its 256, or any other; what it is in red, green and blue.
struct Colour {
  static constexpr int kAny = 256;

  int index = kAny;
  std::uint8_t red = 0, green = 0, blue = 0;

  bool operator==(const Colour &) const = default;
};

// How letters look; without a colour, as the terminal's letters look otherwise.
struct Look {
  std::optional<Colour> front, back;
  bool bold = false, italic = false, underline = false, reverse = false;

  bool operator==(const Look &) const = default;
};

// A stretch of a line that looks the same.
struct PaintedText {
  std::string text;
  Look look;

  bool operator==(const PaintedText &) const = default;
};
using PaintedRow = std::vector<PaintedText>;

class Screen {
 public:
  // `answer` takes what the terminal itself replies, such as its cursor's position. Throws std::invalid_argument where
  // there are fewer rows or columns than a terminal has.
  Screen(Size size, std::function<void(std::string_view)> answer);
  ~Screen();
  Screen(const Screen &) = delete;
  Screen &operator=(const Screen &) = delete;

  void resize(Size size);                   // Throws as the constructor.
  void feed(std::string_view bytes);        // Throws what `answer` throws, when all the bytes are taken in.
  std::vector<std::string> rows() const;    // Without blanks at their ends.
  std::vector<PaintedRow> painted() const;  // The same with their looks; a blank at an end that looks like none stays.
  const std::deque<std::string> &scrolled_off() const { return history_; }  // What left the screen at its top, lately.

  // Whether a line of the screen has the text; of shows_new, only text that was written, all of it, since grow_old.
  bool shows(std::string_view text) const;
  bool shows_new(std::string_view text) const;
  // The line where it is found; of find_new, only what shows_new counts.
  std::optional<std::string> find(const Finder &finder) const;
  std::optional<std::string> find_new(const Finder &finder) const;
  // What find_new counts: of each line, from the top on, the stretches without blanks at their ends.
  std::vector<std::string> new_text() const;
  void grow_old();  // What the screen shows now is new no more, wherever it scrolls to.

 private:
  struct Machine;
  struct Row;
  Row row(int number) const;
  std::optional<std::string> find(const Finder &finder, bool (*counts)(const Row &row, const Stretch &stretch)) const;

  std::function<void(std::string_view)> answer_;
  std::deque<std::string> history_;
  std::unique_ptr<Machine> machine_;
};

}  // namespace terminal
