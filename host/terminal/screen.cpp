#include "host/terminal/screen.h"

#include <vterm.h>

#include <cstdint>

namespace terminal {
namespace {

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

std::string without_trailing_blanks(std::string text) {
  text.erase(text.find_last_not_of(' ') + 1);
  return text;
}

}  // namespace

struct Screen::Machine {
  Size size;
  VTerm *vterm;
  VTermScreen *screen;
  VTermScreenCallbacks callbacks{};

  static int keep_line(int columns, const VTermScreenCell *cells, void *user) {
    std::string line;
    for (int column = 0; column < columns; ++column) append_cell(line, cells[column]);
    static_cast<Screen *>(user)->history_.push_back(without_trailing_blanks(std::move(line)));
    return 1;
  }

  static void answer(const char *bytes, std::size_t length, void *user) {
    static_cast<Screen *>(user)->answer_({bytes, length});
  }

  Machine(Size wanted, Screen *owner)
      : size(wanted), vterm(vterm_new(wanted.rows, wanted.columns)), screen(vterm_obtain_screen(vterm)) {
    vterm_set_utf8(vterm, 1);
    vterm_output_set_callback(vterm, &Machine::answer, owner);
    callbacks.sb_pushline = &Machine::keep_line;
    vterm_screen_set_callbacks(screen, &callbacks, owner);
    vterm_screen_reset(screen, 1);
  }
  ~Machine() { vterm_free(vterm); }
  Machine(const Machine &) = delete;
  Machine &operator=(const Machine &) = delete;
};

Screen::Screen(Size size, std::function<void(std::string_view)> answer)
    : answer_(std::move(answer)), machine_(std::make_unique<Machine>(size, this)) {}

Screen::~Screen() = default;

void Screen::feed(std::string_view bytes) {
  vterm_input_write(machine_->vterm, bytes.data(), bytes.size());
}

std::vector<std::string> Screen::rows() const {
  std::vector<std::string> rows;
  for (int row = 0; row < machine_->size.rows; ++row) {
    std::string line;
    for (int column = 0; column < machine_->size.columns; ++column) {
      VTermScreenCell cell;
      vterm_screen_get_cell(machine_->screen, {row, column}, &cell);
      append_cell(line, cell);
    }
    rows.push_back(without_trailing_blanks(std::move(line)));
  }
  return rows;
}

}  // namespace terminal
