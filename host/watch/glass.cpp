// Nothing of a box is included here: the terminal library has a function of that name.
#define NCURSES_NOMACROS 1
#define NCURSES_WIDECHAR 1

#include "host/watch/glass.h"

#include <ncurses.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>

namespace watch {
namespace {

// How paints look, by their numbers; without colours the letters have to do.
struct Look {
  short colour;
  attr_t attributes;
};
constexpr std::array<Look, 11> kLooks{{{-1, A_NORMAL},
                                       {COLOR_CYAN, A_NORMAL},
                                       {-1, A_BOLD},
                                       {COLOR_GREEN, A_NORMAL},
                                       {COLOR_YELLOW, A_BOLD},
                                       {COLOR_RED, A_BOLD},
                                       {COLOR_BLUE, A_BOLD},
                                       {COLOR_MAGENTA, A_BOLD},
                                       {COLOR_YELLOW, A_BOLD},
                                       {COLOR_MAGENTA, A_NORMAL},
                                       {-1, A_REVERSE}}};
static_assert(kLooks.size() == static_cast<std::size_t>(Paint::kKey) + 1);

struct KeyName {
  int theirs, ours;
};
// As desk.h has them.
constexpr int kFirstKey = 0x110000;
constexpr KeyName kKeys[] = {{KEY_UP, kFirstKey},
                             {KEY_DOWN, kFirstKey + 1},
                             {KEY_LEFT, kFirstKey + 2},
                             {KEY_RIGHT, kFirstKey + 3},
                             {KEY_BACKSPACE, kFirstKey + 4},
                             {0x7F, kFirstKey + 4},
                             {'\b', kFirstKey + 4},
                             {KEY_ENTER, '\n'},
                             {'\r', '\n'}};

}  // namespace

struct Glass::State {
  SCREEN *screen;
  bool has_colours;
};

Glass::Glass() {
  if (isatty(STDIN_FILENO) == 0 || isatty(STDOUT_FILENO) == 0) {
    throw std::runtime_error("there is no terminal to show a picture on. --once prints one.");
  }
  SCREEN *screen = newterm(nullptr, stdout, stdin);
  const char *name = std::getenv("TERM");  // NOLINT(concurrency-mt-unsafe): one thread
  const std::string type =
      name == nullptr || *name == '\0' ? "that is not named in TERM" : "`" + std::string(name) + "`";
  if (screen == nullptr)
    throw std::runtime_error("the type of terminal " + type + " is unknown. --once prints a picture.");
  std::string capability = "cup";
  if (tigetstr(capability.data()) == nullptr) {
    endwin();
    delscreen(screen);
    throw std::runtime_error("a terminal of the type " + type + " cannot show a picture. --once prints one.");
  }
  state_ = new State{screen, has_colors()};
  constexpr int kEscapeMilliseconds = 25;  // which come between the bytes of one key at most
  set_escdelay(kEscapeMilliseconds);
  cbreak();
  noecho();
  nonl();
  keypad(stdscr, true);
  nodelay(stdscr, true);
  curs_set(0);
  mouseinterval(0);
  mousemask(BUTTON1_PRESSED, nullptr);
  if (!state_->has_colours) return;
  start_color();
  use_default_colors();
  for (std::size_t i = 0; i < kLooks.size(); ++i) init_pair(static_cast<short>(i + 1), kLooks.at(i).colour, -1);
}

Glass::~Glass() {
  mousemask(0, nullptr);
  endwin();
  delscreen(state_->screen);
  delete state_;
}

int Glass::rows() const {
  return getmaxy(stdscr);
}

int Glass::columns() const {
  return getmaxx(stdscr);
}

void Glass::show(const Canvas &canvas) {
  werase(stdscr);
  for (int row = 0; row < canvas.rows() && row < rows(); ++row) {
    for (int column = 0; column < canvas.columns() && column < columns(); ++column) {
      const Cell &cell = canvas.at(row, column);
      const auto paint = static_cast<std::size_t>(cell.paint);
      const attr_t attributes = kLooks.at(paint).attributes | (cell.chosen ? A_REVERSE : A_NORMAL);
      const std::array<wchar_t, 2> letter{static_cast<wchar_t>(cell.letter), 0};
      cchar_t shown{};
      setcchar(&shown, letter.data(), attributes, state_->has_colours ? static_cast<short>(paint + 1) : short{0},
               nullptr);
      mvwadd_wch(stdscr, row, column, &shown);
    }
  }
  wrefresh(stdscr);
}

void Glass::say(const char *sentence) {
  werase(stdscr);
  mvwaddnstr(stdscr, 0, 0, sentence, rows() * columns());  // goes on in the next row
  wrefresh(stdscr);
}

std::optional<Glass::Input> Glass::next() {
  wint_t typed = 0;
  const int result = wget_wch(stdscr, &typed);
  if (result == ERR) return std::nullopt;
  const int code = static_cast<int>(typed);
  if (result == KEY_CODE_YES && code == KEY_RESIZE) return Input{};
  if (result == KEY_CODE_YES && code == KEY_MOUSE) {
    MEVENT event{};
    if (getmouse(&event) != OK || (event.bstate & BUTTON1_PRESSED) == 0) return Input{};
    return Input{.key = 0, .is_click = true, .row = event.y, .column = event.x};
  }
  for (const KeyName &name : kKeys) {
    const bool is_letter = name.theirs < KEY_MIN;
    if (name.theirs == code && is_letter == (result == OK)) return Input{.key = name.ours};
  }
  return result == OK ? Input{.key = code} : Input{};
}

}  // namespace watch
