// The option --speed of the verbs that run commands: how fast the time of their box passes.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/clock/keeper.h"
#include "host/spbox/verb.h"

namespace spbox {

class SpeedOption {
 public:
  // The speed of a verb that has one also where the option is not given; empty: that of the wall, and nobody keeps the time.
  explicit SpeedOption(std::string usual = "") : text_(usual), usual_(std::move(usual)) {}

  Word word();
  void check() const;  // throws UsageError

  // The option, for another spbox.
  std::vector<std::string> words() const;

  std::optional<box_time::Speed> speed() const;

  // Keeps the time of the box that it is given (box_time::keep), as long as it lives. None where there is no speed.
  std::unique_ptr<box_time::Keeper> keeper() const;

 private:
  std::string text_, usual_;
};

}  // namespace spbox
