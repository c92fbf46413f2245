// Makes a play of what an author and others did, and of what stood on the screen then.
#pragma once

#include <chrono>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "host/play/script_writer.h"
#include "host/recorder/deed.h"
#include "host/recorder/wording.h"
#include "host/terminal/screen.h"
#include "host/terminal/session.h"

namespace recorder {

using std::chrono::milliseconds;

// What the screen shows that was written since the last keys, line by line, and for how long somebody has waited for it.
struct View {
  Lines fresh;
  milliseconds waited{0};
};

// The terminal's mode, as far as it decides which keys go together.
struct Typing {
  bool lines;         // The command gets a line when it is whole; until then it can be mended.
  bool maps_returns;  // The key Enter comes as a line's end.
};

class Playwright {
 public:
  // The steps before the command: its box, its terminal.
  explicit Playwright(std::vector<play::Words> opening) : opening_(std::move(opening)) {}

  void starts(const play::Words &command);

  // True where they begin a new step: what the screen shows is old from then on.
  bool types(std::string_view keys, const View &view, Typing typing);

  // A deed takes its place when it begins, and loses it where it fails.
  void does(const ToldDeed &deed, const View &view);
  bool awaits_deeds() const { return !begun_.empty(); }

  void remarks(const std::string &text);
  void resizes(terminal::Size size);
  void line_is_cut(const View &view);
  void goes_on();  // after Ctrl-Z

  void ends(const terminal::Ending &ending, const View &view);
  void is_in_order(const std::vector<std::string> &detached);
  void logs(const Lines &entries);
  void breaks_off();  // Nobody knows how it ended.

  // The script as far as it goes.
  std::string text() const;

 private:
  struct Part {
    enum class Kind { kStep, kRemark, kGap };
    Kind kind;
    play::Words words = {};
    std::string remark = {};
    bool is_wait = false;
  };

  void add(const play::Words &step) { parts_.push_back({Part::Kind::kStep, step}); }
  void wait(const View &view);
  void end_line();

  std::vector<play::Words> opening_;
  std::vector<Part> parts_;
  std::string line_;  // that is typed, as far as it is
  bool is_in_line_ = false;
  Lines seen_;  // since the last keys
  milliseconds longest_{0};
  std::map<pid_t, std::size_t> begun_;  // the parts of those whose end is not told yet
};

}  // namespace recorder
