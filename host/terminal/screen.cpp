#include "host/terminal/screen.h"

#include <vterm.h>

#include <algorithm>
#include <cstdint>
#include <exception>
#include <stdexcept>
#include <utility>

#include "host/terminal/strainer.h"

namespace terminal {
namespace {

constexpr std::size_t kMostHistory = 100'000;     // lines; a command may write on and on
constexpr std::uint32_t kRightHalf = 0xFFFFFFFF;  // The second cell of a wide character.

void append_utf8(std::string &text, std::uint32_t code) {
  const auto byte = [&](std::uint32_t value) { text.push_back(static_cast<char>(value)); };
  if (code < 0x80) {
    byte(code);
  } else if (code < 0x800) {
    byte(0xC0 | code >> 6);
    byte(0x80 | (code & 0x3F));
  } else if (code < 0x10000) {
    byte(0xE0 | code >> 12);
    byte(0x80 | (code >> 6 & 0x3F));
    byte(0x80 | (code & 0x3F));
  } else {
    byte(0xF0 | code >> 18);
    byte(0x80 | (code >> 12 & 0x3F));
    byte(0x80 | (code >> 6 & 0x3F));
    byte(0x80 | (code & 0x3F));
  }
}

void append_cell(std::string &text, const VTermScreenCell &cell) {
  if (cell.chars[0] == kRightHalf) return;
  if (cell.chars[0] == 0) text.push_back(' ');
  for (int i = 0; i < VTERM_MAX_CHARS_PER_CELL && cell.chars[i] != 0; ++i) append_utf8(text, cell.chars[i]);
}

// In one column, libvterm writes the right half of a wide character outside its memory.
Size checked(Size size) {
  if (size.rows >= Size::kFewestRows && size.columns >= Size::kFewestColumns) return size;
  throw std::invalid_argument("a terminal has at least one row and two columns");
}

std::string without_trailing_blanks(std::string text) {
  text.erase(text.find_last_not_of(' ') + 1);
  return text;
}

std::optional<Colour> colour_of(const VTermScreen *screen, VTermColor colour) {
  if (VTERM_COLOR_IS_DEFAULT_FG(&colour) || VTERM_COLOR_IS_DEFAULT_BG(&colour)) return std::nullopt;
  Colour found;
  if (VTERM_COLOR_IS_INDEXED(&colour)) found.index = colour.indexed.idx;
  vterm_screen_convert_color_to_rgb(screen, &colour);
  found.red = colour.rgb.red;
  found.green = colour.rgb.green;
  found.blue = colour.rgb.blue;
  return found;
}

Look look_of(const VTermScreen *screen, const VTermScreenCell &cell) {
  return {colour_of(screen, cell.fg), colour_of(screen, cell.bg), cell.attrs.bold != 0,
          cell.attrs.italic != 0,     cell.attrs.underline != 0,  cell.attrs.reverse != 0};
}

}  // namespace

Finder finder_of(std::string text) {
  return [text = std::move(text)](std::string_view line, std::size_t from) -> std::optional<Stretch> {
    const auto at = line.find(text, from);
    return at == std::string_view::npos ? std::nullopt : std::optional(Stretch{at, text.size()});
  };
}

struct Screen::Machine {
  Size size;
  Strainer strainer;
  VTerm *vterm;
  VTermScreen *screen;
  VTermScreenCallbacks callbacks{};
  std::vector<char> is_new;  // of each cell: written since the screen grew old
  VTermPos written{-1, -1};  // where the last character went
  std::exception_ptr failure;

  std::size_t cell(int row, int column) const {
    return static_cast<std::size_t>(row) * static_cast<std::size_t>(size.columns) + static_cast<std::size_t>(column);
  }

  char &is_new_at(int row, int column) { return is_new[cell(row, column)]; }

  void take_size(Size wanted) {
    const Size old = std::exchange(size, wanted);
    const std::vector<char> before = std::exchange(is_new, std::vector<char>(cell(wanted.rows, 0)));
    const auto stride = static_cast<std::size_t>(old.columns);
    const auto columns = static_cast<std::ptrdiff_t>(std::min(old.columns, wanted.columns));
    for (int row = 0; row < std::min(old.rows, wanted.rows); ++row) {
      const auto from = before.begin() + static_cast<std::ptrdiff_t>(static_cast<std::size_t>(row) * stride);
      std::copy(from, from + columns, is_new.begin() + static_cast<std::ptrdiff_t>(cell(row, 0)));
    }
  }

  // No exception passes through libvterm, which is C: it is kept until the bytes are taken in.
  template <typename Work>
  static int guarded(void *user, Work work) noexcept {
    Screen &screen = *static_cast<Screen *>(user);
    try {
      work(screen, *screen.machine_);
    } catch (...) {
      screen.machine_->failure = std::current_exception();
    }
    return 1;
  }

  static int take_note(VTermRect written, void *user) {
    return guarded(user, [&](Screen &, Machine &machine) {
      machine.written = {written.start_row, written.start_col};
      for (int row = written.start_row; row < written.end_row; ++row) {
        for (int column = written.start_col; column < written.end_col; ++column) machine.is_new_at(row, column) = 1;
      }
    });
  }

  // The screen scrolls, and old text stays old.
  static int move(VTermRect to, VTermRect from, void *user) {
    return guarded(user, [&](Screen &, Machine &machine) {
      const std::vector<char> before = machine.is_new;
      for (int row = 0; row < to.end_row - to.start_row; ++row) {
        for (int column = 0; column < to.end_col - to.start_col; ++column) {
          machine.is_new_at(to.start_row + row, to.start_col + column) =
              before[machine.cell(from.start_row + row, from.start_col + column)];
        }
      }
    });
  }

  static int keep_line(int columns, const VTermScreenCell *cells, void *user) {
    return guarded(user, [&](Screen &owner, Machine &) {
      std::string line;
      for (int column = 0; column < columns; ++column) append_cell(line, cells[column]);
      owner.history_.push_back(without_trailing_blanks(std::move(line)));
      if (owner.history_.size() > kMostHistory) owner.history_.pop_front();
    });
  }

  static void answer(const char *bytes, std::size_t length, void *user) {
    guarded(user, [&](Screen &owner, Machine &) { owner.answer_({bytes, length}); });
  }

  // A combining character that comes in a later piece than its character: libvterm knows where that is, but not in the last column,
  // where the cursor stays on it. There it is written anew, so that both come together. Empty elsewhere.
  std::string last_character_again() const {
    VTermPos cursor;
    vterm_state_get_cursorpos(vterm_obtain_state(vterm), &cursor);
    if (cursor.row != written.row || cursor.col != written.col) return {};
    VTermScreenCell cell;
    vterm_screen_get_cell(screen, cursor, &cell);
    std::string text = "\x1b[" + std::to_string(cursor.col + 1) + "G";
    append_cell(text, cell);
    return text;
  }

  Machine(Size wanted, Screen *owner)
      : size(checked(wanted)), vterm(vterm_new(size.rows, size.columns)), screen(vterm_obtain_screen(vterm)) {
    vterm_set_utf8(vterm, 1);
    vterm_output_set_callback(vterm, &Machine::answer, owner);
    is_new.resize(cell(size.rows, 0));
    vterm_screen_reset(screen, 1);
    callbacks.sb_pushline = &Machine::keep_line;
    callbacks.damage = &Machine::take_note;
    callbacks.moverect = &Machine::move;
    vterm_screen_set_callbacks(screen, &callbacks, owner);
  }
  ~Machine() { vterm_free(vterm); }
  Machine(const Machine &) = delete;
  Machine &operator=(const Machine &) = delete;
};

Screen::Screen(Size size, std::function<void(std::string_view)> answer)
    : answer_(std::move(answer)), machine_(std::make_unique<Machine>(size, this)) {}

Screen::~Screen() = default;

// What is new stays so where it stands. Meanwhile text is moved between places of the old size and of the new one.
void Screen::resize(Size size) {
  const Size old = machine_->size, wanted = checked(size);
  machine_->take_size({std::max(old.rows, wanted.rows), std::max(old.columns, wanted.columns)});
  vterm_set_size(machine_->vterm, wanted.rows, wanted.columns);
  machine_->take_size(wanted);
  if (machine_->failure) std::rethrow_exception(std::exchange(machine_->failure, nullptr));
}

void Screen::feed(std::string_view bytes) {
  const bool follows_character = machine_->strainer.ends_in_character();
  std::string sound = machine_->strainer.passed(bytes);
  if (follows_character && !sound.empty() && (sound[0] & '\x80') != 0)
    sound.insert(0, machine_->last_character_again());
  vterm_input_write(machine_->vterm, sound.data(), sound.size());
  if (machine_->failure) std::rethrow_exception(std::exchange(machine_->failure, nullptr));
}

// A line's text, and of each of its bytes whether its cell is new.
struct Screen::Row {
  std::string text;
  std::vector<char> is_new;
};

Screen::Row Screen::row(int number) const {
  Row row;
  for (int column = 0; column < machine_->size.columns; ++column) {
    VTermScreenCell cell;
    vterm_screen_get_cell(machine_->screen, {number, column}, &cell);
    append_cell(row.text, cell);
    row.is_new.resize(row.text.size(), machine_->is_new_at(number, column));
  }
  row.text = without_trailing_blanks(std::move(row.text));
  return row;
}

std::vector<std::string> Screen::rows() const {
  std::vector<std::string> rows;
  for (int number = 0; number < machine_->size.rows; ++number) rows.push_back(row(number).text);
  return rows;
}

std::vector<PaintedRow> Screen::painted() const {
  std::vector<PaintedRow> rows;
  for (int number = 0; number < machine_->size.rows; ++number) {
    PaintedRow &row = rows.emplace_back();
    for (int column = 0; column < machine_->size.columns; ++column) {
      VTermScreenCell cell;
      vterm_screen_get_cell(machine_->screen, {number, column}, &cell);
      const Look look = look_of(machine_->screen, cell);
      if (row.empty() || row.back().look != look) row.push_back({"", look});
      append_cell(row.back().text, cell);
    }
    while (!row.empty() && row.back().look == Look()) {
      row.back().text = without_trailing_blanks(std::move(row.back().text));
      if (!row.back().text.empty()) break;
      row.pop_back();
    }
  }
  return rows;
}

std::optional<std::string> Screen::find(const Finder &finder,
                                        bool (*counts)(const Row &row, const Stretch &stretch)) const {
  for (int number = 0; number < machine_->size.rows; ++number) {
    const Row row = this->row(number);
    for (auto found = finder(row.text, 0); found; found = finder(row.text, found->at + 1)) {
      if (counts(row, *found)) return row.text;
    }
  }
  return {};
}

std::optional<std::string> Screen::find(const Finder &finder) const {
  return find(finder, [](const Row &, const Stretch &) { return true; });
}

// A blank is new and old at once: a command may move over it instead of writing it.
std::optional<std::string> Screen::find_new(const Finder &finder) const {
  return find(finder, [](const Row &row, const Stretch &stretch) {
    for (std::size_t i = stretch.at; i < stretch.at + stretch.length; ++i) {
      if (row.text[i] != ' ' && row.is_new[i] == 0) return false;
    }
    return true;
  });
}

std::vector<std::string> Screen::new_text() const {
  std::vector<std::string> stretches;
  const auto end = [&](std::string &stretch) {
    const auto first = stretch.find_first_not_of(' ');
    if (first != std::string::npos) stretches.push_back(without_trailing_blanks(stretch.substr(first)));
    stretch.clear();
  };
  for (int number = 0; number < machine_->size.rows; ++number) {
    const Row row = this->row(number);
    std::string stretch;
    for (std::size_t i = 0; i < row.text.size(); ++i) {
      if (row.text[i] != ' ' && row.is_new[i] == 0) {
        end(stretch);
      } else {
        stretch += row.text[i];
      }
    }
    end(stretch);
  }
  return stretches;
}

bool Screen::shows(std::string_view text) const {
  return find(finder_of(std::string(text))).has_value();
}

bool Screen::shows_new(std::string_view text) const {
  return find_new(finder_of(std::string(text))).has_value();
}

void Screen::grow_old() {
  std::fill(machine_->is_new.begin(), machine_->is_new.end(), 0);
}

}  // namespace terminal
