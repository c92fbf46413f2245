// The option --speed of the verbs that run commands: how fast the time of their box passes.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/clock/keeper.h"
#include "host/spbox/verb.h"

namespace spbox {

class SpeedOption {
 public:
  Word word();
  void check() const;  // throws UsageError

  // The option as it was given, for another spbox.
  std::vector<std::string> words() const;

  // Keeps the time of the box that it is given (box_time::keep), as long as it lives. None where the option was not given.
  std::unique_ptr<box_time::Keeper> keeper() const;

 private:
  std::string text_;
};

}  // namespace spbox
