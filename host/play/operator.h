// The operator of a play: a terminal, and the command that runs on it.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <optional>
#include <string_view>

#include "host/play/leftovers.h"
#include "host/terminal/terminal.h"

namespace play {

// Who waits for something watches the terminal this long, and looks again.
inline constexpr std::chrono::milliseconds kLookAgain{20};

class Operator {
 public:
  explicit Operator(int alarm) : alarm_(alarm) {}
  ~Operator();  // Cuts the line of a command that still runs and, when it does not end by itself, kills it.
  Operator(const Operator &) = delete;
  Operator &operator=(const Operator &) = delete;

  // Takes another terminal for the next command. Throws while a command runs.
  void take_terminal(terminal::Size size);
  terminal::Size size() const { return size_; }

  // Gives the window of the terminal this size: the command learns it. Throws where there is none, or the line is cut.
  void resize(terminal::Size size);

  // Starts a command, by the words with which a box runs it. Throws while one runs.
  void start(const box::Place &place, const std::vector<std::string> &command, bool others_work = false);

  // The terminal, after a command was started on it; and whose line is not cut. Both throw where it is not so.
  bool has_terminal() const { return terminal_ && before_; }
  std::vector<pid_t> processes() const;  // of the command, and what it left
  terminal::Terminal &terminal();
  terminal::Terminal &line();
  const Before &before() const { return before_.value(); }  // the last command; only with a terminal

  // What commands write goes there, too. A terminal of another kind begins empty.
  void pass_on_to(std::function<void(std::string_view)> listener) { listener_ = std::move(listener); }

  // Sits there, whatever the command does.
  void watch(std::chrono::milliseconds time);

  // The command in the box, without the programs that put it there. Gives up where none of these is at work.
  std::optional<pid_t> wait_for_command_in_box(std::chrono::milliseconds patience);

  // What stands on the screen; nothing before the first command.
  std::optional<std::vector<std::string>> screen();
  std::optional<std::vector<terminal::PaintedRow>> last_painted_screen() const;  // the same with colours
  std::optional<std::vector<std::string>> last_screen() const;  // without a look whether it stands still

 private:
  terminal::Terminal &at_terminal();

  int alarm_;
  std::function<void(std::string_view)> listener_;
  terminal::Size size_;
  std::optional<terminal::Terminal> terminal_;
  std::optional<Before> before_;
};

}  // namespace play
