// What a report and a recording get to know of a play while it is played. What cannot be looked at is left out of them: the play
// goes on.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/box/pulse.h"
#include "host/clock/hours.h"
#include "host/play/account.h"
#include "host/report/cast.h"
#include "host/report/report.h"

namespace play {

struct Stage;
struct Step;
class Box;
class Operator;

// The server of a box as `spbox watch` draws it, in lines: its chassis, and below it who is at work and what is bent. Throws.
std::vector<std::string> server_of(const Box &box);
std::vector<std::string> chassis_of(const Box &box);  // without what is below it

class Chronicle {
 public:
  struct Wanted {
    bool report = false, cast = false;
  };
  Chronicle(std::string name, Wanted wanted);

  void begins(const Step &step);
  void does(const std::string &sentence, const std::string &output);
  void shows(const std::string &caption);
  void ends(Stage &stage);                              // the step that began last
  void fails(Stage &stage, const std::string &reason);  // it, or one beside it

  // Of the operator whose terminal says something first; a recording has one terminal.
  void wrote(const std::string &name, const Operator &op, std::string_view bytes);

  void close(const Box &box);  // when the play has ended: looks at what the box has kept
  std::string page() const { return report::page_of(play_); }
  std::string recording() const { return cast_ ? cast_->text() : report::Cast({}, play_.name).text(); }

 private:
  // How many records each ring of the box has had.
  struct Counts {
    std::uint64_t records = 0, calls = 0;
  };

  std::chrono::milliseconds time() const;
  void look_at(Stage &stage);
  void look_at_box(const Box &box, report::Step &step);

  Wanted wanted_;
  report::Play play_;
  std::vector<Counts> counts_;  // of each step
  std::vector<report::Deed> deeds_;
  report::Picture server_;
  std::optional<box::Pulse> pulse_;
  box_time::Clock::time_point begin_ = box_time::Clock::now();
  std::optional<report::Cast> cast_;
  std::string recorded_;  // the operator's name
  terminal::Size size_;
};

}  // namespace play
