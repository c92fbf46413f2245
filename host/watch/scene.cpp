#include "host/watch/scene.h"

#include <algorithm>

#include "host/watch/marks.h"

namespace watch {

bool is_troubled(const Unit &unit) {
  return unit.state != State::kNormal || unit.detached || unit.link_down;
}

bool carries_trouble(const Server &server, std::size_t unit) {
  for (std::size_t i = unit + 1; i < server.units.size() && server.units[i].carrier == unit; ++i) {
    if (is_troubled(server.units[i])) return true;
  }
  return false;
}

std::optional<std::size_t> find_unit(const Server &server, std::string_view name) {
  const auto found = std::ranges::find(server.units, name, &Unit::name);
  if (found == server.units.end()) return std::nullopt;
  return static_cast<std::size_t>(found - server.units.begin());
}

std::string condition_of(const Unit &unit) {
  std::string text(row_of(unit.state).word);
  if (unit.led == Led::kOn) text += ", LED on";
  if (unit.led == Led::kBlinks) text += ", LED blinks";
  if (unit.maintenance) text += ", under maintenance";
  if (unit.detached) text += ", out of operation";
  if (unit.link_down) text += ", link down";
  if (!unit.fan.empty()) text += ", fans " + unit.fan;
  return text;
}

}  // namespace watch
