// An operator's terminal: a pseudo-terminal on which a command runs, and the screen that it shows.
#pragma once

#include <poll.h>
#include <termios.h>

#include <chrono>
#include <exception>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/base/descriptor.h"
#include "host/terminal/screen.h"
#include "host/terminal/session.h"

namespace terminal {

using std::chrono::milliseconds;

// The terminal's mode, as far as commands change it.
struct Mode {
  bool echo;       // what is typed appears
  bool lines;      // input comes line by line
  bool interrupt;  // Ctrl-C interrupts

  bool operator==(const Mode &) const = default;
};

// What a wait throws when its alarm rings.
class Interrupted : public std::exception {
 public:
  const char *what() const noexcept override { return "interrupted"; }
};

class Terminal {
 public:
  // A wait throws Interrupted as soon as the descriptor `alarm` becomes readable. Throws std::system_error.
  explicit Terminal(Size size = {}, int alarm = -1);
  ~Terminal() = default;
  Terminal(const Terminal &) = delete;
  Terminal &operator=(const Terminal &) = delete;

  // Starts a command, found by the environment variable PATH, in the terminal's foreground. What an earlier one left is
  // killed; the screen stays. Throws std::system_error when the command cannot be run.
  void start(const std::vector<std::string> &command);

  // What the operator does and sees. wait_for says whether the text came up within one line of the screen; it gives up
  // early when the command ends without it.
  // type sends the keys, and false when the command did not take them all in time, or ended before: the rest is lost.
  bool type(std::string_view keys, milliseconds patience = milliseconds{10'000});
  bool wait_for(std::string_view text, milliseconds patience);
  bool wait_for_new(std::string_view text, milliseconds patience);  // written since the last start or keys, all of it
  bool shows(std::string_view text);                                // once the screen stands still
  // The same of what a finder finds: the line where it stands.
  std::optional<std::string> wait_for_new(const Finder &finder, milliseconds patience);
  std::optional<std::string> find(const Finder &finder);
  void watch(milliseconds time);  // takes in what the command writes, so long
  std::vector<std::string>
  screen();  // The lines of the screen, from its top to its bottom, without blanks at their ends.
  std::vector<std::string> last_screen() const { return screen_.rows(); }  // as far as it was taken in
  std::vector<PaintedRow> last_painted_screen() const { return screen_.painted(); }
  std::vector<std::string> everything_shown();  // The lines that scrolled away, then the screen.

  // For who sits at a terminal of their own, and passes all through: what the command writes goes to `listener`, too; keys
  // are sent as the command takes them; watch_with waits until something comes of it, or of `others`, which poll(2) fills in.
  void pass_on_to(std::function<void(std::string_view)> listener) { listener_ = std::move(listener); }
  void send_keys(std::string_view keys) { unsent_ += keys; }
  void watch_with(std::span<pollfd> others, milliseconds patience);
  std::vector<std::string> new_text() const { return screen_.new_text(); }
  void let_grow_old() { screen_.grow_old(); }
  void resize(Size size);                                         // of the window: the command gets SIGWINCH
  bool take_stop() { return session_ && session_->take_stop(); }  // Whether the command was stopped since.
  void go_on();

  std::optional<Ending> wait_for_exit(milliseconds patience);  // Nothing when the command still runs then.
  Mode mode() const;
  bool maps_returns() const;  // the key Enter gives a line's end

  // Who waits at this terminal takes in what comes at the others, whose commands could not write on otherwise.
  void keep_up(std::vector<Terminal *> others) { others_ = std::move(others); }

  // Cuts the line: the command gets SIGHUP and reads an end of input. Nothing comes through after it.
  void hang_up();
  // Hangs up on a command that runs, gives it this time to end, then kills what is left.
  void end(milliseconds patience);
  bool hung_up() const { return master_.get() < 0; }

  bool runs() { return session_ && !session_->ending(); }
  pid_t command() const { return session_->command(); }
  std::vector<Process> processes() const;                     // The command, its children, and what they left behind.
  std::optional<pid_t> process(std::string_view name) const;  // One of them by its program's name.

 private:
  bool wait_until(const std::function<bool()> &is_true, milliseconds patience);
  void grow_old();
  void set_window(Size size);
  termios attributes() const;
  bool exchange(std::chrono::nanoseconds patience);
  bool send();
  bool take_in();
  void settle();

  base::Descriptor master_, slave_;
  int alarm_;
  std::string path_;
  std::string unsent_;        // what the operator types and the terminal answers, in the order in which it came
  std::size_t keys_end_ = 0;  // where in it what is typed ends
  Screen screen_;
  std::optional<Session> session_;
  std::vector<Terminal *> others_;
  std::function<void(std::string_view)> listener_;
  bool is_end_told_ = false;
};

}  // namespace terminal
