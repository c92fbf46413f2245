#include "host/spbox/condition.h"

#include "host/spbox/bent_text.h"
#include "host/spbox/unit_text.h"

namespace spbox {

bool is_usual(const box::Unit &unit, const box::Hardware &hardware) {
  const std::string &name = unit.place.name;
  return unit.unreadable.empty() && unit.fru_unreadable.empty() && unit.installed() && !unit.wants_service() &&
         hardware.led(name) == "off" && flag_text(hardware, name).empty();
}

std::vector<std::string> bent_lines(const box::Place &place) {
  std::vector<std::string> lines;
  const box::TextDatabase kept(place);
  for (const std::string &name : box::program_names()) {
    const box::Bend bend = box::bend_of(kept, name);
    if (!bend.straight()) lines.push_back(std::string("Program ").append(name).append(" ").append(bend_text(bend)));
  }
  const box::DaemonBend daemon = box::daemon_bend(kept);
  if (daemon.way != box::DaemonWay::kWell) lines.push_back("The daemon " + way_text(daemon));
  for (const box::BrokenRecord &broken : box::broken_records(place)) lines.push_back(broken_text(broken));
  if (const auto points = box::points_of(place)) {
    for (const box::Deviation &deviation : points->deviations) lines.push_back(deviation_text(deviation));
  }
  return lines;
}

std::vector<std::string> other_lines(const box::Inventory &inventory, const box::Hardware &hardware) {
  std::vector<std::string> lines;
  const auto at_first = box::after_power_on(inventory.model());
  for (const auto &[key, value] : other_settings(hardware, inventory)) {
    const auto found = at_first.find(key);
    if (found == at_first.end() || found->second != value)
      lines.push_back(std::string("Set: ").append(key).append(" ").append(value));
  }
  return lines;
}

}  // namespace spbox
