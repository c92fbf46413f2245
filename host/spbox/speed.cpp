#include "host/spbox/speed.h"

namespace spbox {

Word SpeedOption::word() {
  return {.name = "--speed",
          .help = "Time in the box: so many times as fast as on\nthe wall, 1 to 1000, or `full`: nobody waits" +
                  (usual_.empty() ? "" : ";\n" + usual_ + " without it"),
          .to = &text_,
          .value = "N"};
}

void SpeedOption::check() const {
  if (text_.empty() || box_time::speed_of(text_)) return;
  throw UsageError("--speed " + text_ + ": give a number from 1 to 1000, or full.");
}

std::vector<std::string> SpeedOption::words() const {
  if (text_.empty()) return {};
  return {"--speed", text_};
}

std::optional<box_time::Speed> SpeedOption::speed() const {
  return box_time::speed_of(text_);
}

std::unique_ptr<box_time::Keeper> SpeedOption::keeper() const {
  const auto kept = speed();
  return kept ? std::make_unique<box_time::Keeper>(*kept) : nullptr;
}

}  // namespace spbox
