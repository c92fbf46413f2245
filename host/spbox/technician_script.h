// A technician's script: what to do to a box's units, and when, a step a line.
#pragma once

#include <chrono>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "host/box/inventory.h"

namespace spbox {

// The text names the step, what is wrong with it, and the way out.
class ScriptError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct Step {
  enum class Kind { kAfter, kWhen, kChange, kFlicker };

  int number;        // counted from 1; comments and empty lines are no steps
  std::string text;  // as it was written
  Kind kind;
  std::chrono::milliseconds time{0};  // kAfter: to wait; kFlicker: between two changes
  std::uint32_t times = 0;            // kFlicker: changes
  box::Change change{};               // kChange
  std::vector<std::string> words;     // kWhen: what comes after "when"; else the units
};

// Steps are parted by line ends or semicolons, and their words by blanks:
//
//   after 3                            so many seconds later
//   when led /PSU#3 blink              once the box is in this state
//   when flag /PSU#3 start
//   when detached /PSU#3 yes
//   when mode lock                     maintenance mode
//   when trace lmainte_chk_fru_install entry   once the library has recorded this, later than what the last such step
//                                      has found or, without one, than the beginning of the script
//   when text screen.txt Replace /PSU#3        once the file has this text
//   pull /PSU#3 /PSU#4                 and insert, fault, degrade, repair
//   flicker /PSU#3 5 0.5               five times out or in, half a second apart
//   # a comment                        from a word that begins with # to the line's end
//
// Throws ScriptError.
std::vector<Step> parse_technician(std::string_view text);

// Words from one of them on, a blank between two.
std::string joined(const std::vector<std::string> &words, std::size_t from = 0);

// What is wrong with a step, after its number and its text.
ScriptError error_of(const Step &step, const std::string &reason);

}  // namespace spbox
