// Plays an operator and technicians step by step, and tells what they saw.
#pragma once

#include <chrono>
#include <deque>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "host/play/in_order.h"
#include "host/play/picture.h"
#include "host/play/plan.h"
#include "host/play/stage.h"
#include "host/play/transcript.h"
#include "host/terminal/helper.h"
#include "host/terminal/terminal.h"

namespace play {

// A step that failed: where, the step, what was awaited, the screen that stood there instead.
class Failure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class Player {
 public:
  Player(Stage &stage, Transcript &transcript, Picture &picture, int alarm)
      : stage_(stage), transcript_(transcript), picture_(picture), alarm_(alarm) {}
  ~Player();  // Cuts the line of a command that still runs and, when it does not end by itself, kills it.
  Player(const Player &) = delete;
  Player &operator=(const Player &) = delete;

  // Plays all steps and waits for the technicians. Throws Failure at the first step that fails, and
  // terminal::Interrupted when the alarm rings.
  void play(const std::vector<Step> &steps);

 private:
  struct Action;
  struct Hands {
    const Step *step;
    terminal::Helper technician;
  };

  void perform(const Step &step);
  Failure failure(const Step &step, const std::string &reason);
  void wait_for_hands();

  void box(const Step &step);
  void terminal(const Step &step);
  void start(const Step &step);
  void wait(const Step &step);
  void absent(const Step &step);
  void type(const Step &step);
  void screen(const Step &step);
  void exit(const Step &step);
  void dies(const Step &step);
  void signal(const Step &step);
  void hangup(const Step &step);
  void hands(const Step &step);
  void handsdone(const Step &step);
  void spbox(const Step &step);
  void says(const Step &step);
  void in_order(const Step &step);
  void patience(const Step &step);
  void pause(const Step &step);
  void say(const Step &step);

  terminal::Terminal &the_terminal();
  terminal::Terminal &running();
  terminal::Ending end();
  std::optional<pid_t> command_in_box() const;
  void tell(const std::string &what, const std::string &output);

  Stage &stage_;
  Transcript &transcript_;
  Picture &picture_;
  int alarm_;
  terminal::Size size_;
  std::optional<terminal::Terminal> terminal_;
  std::optional<Before> before_;
  std::optional<std::string> said_;  // by the last spbox step
  std::deque<Hands> hands_;
  std::chrono::milliseconds patience_{10'000};
};

}  // namespace play
