#include "host/clock/pace.h"

#include <algorithm>

#include "host/base/number.h"

namespace box_time {

std::optional<Speed> speed_of(const std::string &word) {
  if (word == "full") return Speed{};
  const auto times = base::number_in<std::uint32_t>(word).value_or(0);
  if (times < 1 || times > Speed::kMost) return std::nullopt;
  return Speed{times};
}

nanoseconds Pace::look(const Sight &sight) {
  const nanoseconds on_wall = std::clamp(sight.wall - wall_, nanoseconds(0), kLongestSight);
  const nanoseconds of_processor = std::max(sight.processor - processor_, nanoseconds(0));
  wall_ = sight.wall;
  processor_ = sight.processor;
  worked_ = sight.is_quiet ? nanoseconds(0) : worked_ + of_processor;
  if (sight.is_late) return passed_;
  if (speed_.is_full() && sight.is_quiet && !sight.waits_on_wall) {
    if (sight.moment) passed_ = std::max(passed_, *sight.moment);
    return passed_;
  }
  pass(flow(sight, on_wall, of_processor), sight);
  return passed_;
}

// How much time passes, were there no moment for which somebody waits.
nanoseconds Pace::flow(const Sight &sight, nanoseconds on_wall, nanoseconds of_processor) {
  const bool works_long = worked_ > kLongestWork;
  if (speed_.is_full()) {
    if (sight.is_quiet) return on_wall;
    return works_long ? of_processor : nanoseconds(0);
  }
  if (is_held_ && !sight.is_quiet && !works_long) return nanoseconds(0);
  is_held_ = false;
  return on_wall * speed_.times;
}

void Pace::pass(nanoseconds time, const Sight &sight) {
  const nanoseconds then = passed_ + time;
  const bool comes = sight.moment && *sight.moment <= then && *sight.moment > passed_;
  passed_ = comes ? *sight.moment : then;
  if (!comes) return;
  is_held_ = true;
  worked_ = nanoseconds(0);
}

}  // namespace box_time
