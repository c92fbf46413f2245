#include "host/spbox/healing.h"

#include <utility>

#include "host/box/breakage.h"
#include "host/box/daemon_bend.h"
#include "host/box/hardware.h"
#include "host/box/inventory.h"
#include "host/box/points.h"
#include "host/box/program_list.h"

namespace spbox {
namespace {

class Healing {
 public:
  Healing(box::Place place, std::vector<std::string> &lines) : place_(std::move(place)), lines_(lines) {}

  // Records first: a unit whose record is broken can only be healed then.
  void go(bool somebody_works) {
    records();
    bends();
    if (box::forget_points(place_)) tell("Points: no longer counted, nothing is otherwise");
    units();
    if (!somebody_works) settings();
  }

 private:
  void tell(std::string line) { lines_.push_back(std::move(line)); }

  void records() {
    std::vector<box::RecordName> names;
    for (const box::BrokenRecord &broken : box::broken_records(place_)) names.push_back(broken.record);
    if (names.empty()) return;
    const std::vector<box::Mended> mended = box::mend_records(place_, names);
    for (std::size_t i = 0; i < names.size(); ++i) {
      tell("Record " + names[i].name +
           (mended.at(i) == box::Mended::kRewritten ? ": as a command has written it since" : ": restored"));
    }
  }

  void bends() {
    box::TextDatabase kept(place_);
    kept.lock();
    for (const std::string &name : box::program_names()) {
      if (box::bend_of(kept, name).straight()) continue;
      box::set_bend(kept, name, {});
      tell("Program " + name + ": straight");
    }
    if (box::daemon_bend(kept).way != box::DaemonWay::kWell) {
      box::set_daemon_bend(kept, {});
      tell("Daemon: answers");
    }
    kept.unlock();
  }

  // A unit that is put in brings those that it carries.
  void units() {
    const box::Inventory inventory(place_);
    for (const box::Change change : {box::Change::kInsert, box::Change::kRepair}) {
      std::vector<std::string> names;
      for (const box::Unit &unit : inventory.units()) {
        if (!unit.unreadable.empty()) continue;
        const bool wants_it = change == box::Change::kInsert ? !unit.installed() : unit.wants_service();
        if (wants_it) names.push_back(unit.place.name);
      }
      if (names.empty()) continue;
      inventory.change(change, names);
      for (const std::string &name : names) tell(name + (change == box::Change::kInsert ? ": in" : ": normal"));
    }
  }

  // As after power-on. Whether a board's memory is mirrored is its set-up, and stays.
  void settings() {
    const box::Inventory inventory(place_);
    const box::Hardware hardware(place_);
    const auto at_first = box::after_power_on(inventory.model());
    box::TextDatabase kept(place_);
    for (const box::SettingValue &row : hardware.settings()) {
      const auto usual = at_first.find(row.key());
      const bool is_right = usual != at_first.end() ? usual->second == row.value : row.is_usual();
      if (is_right || row.setting == box::Setting::kMirror) continue;
      if (row.setting == box::Setting::kFlag) {
        inventory.set_flag(row.of, false);  // the records follow
      } else if (usual != at_first.end()) {
        kept.set(row.key(), usual->second);
      } else {
        kept.clear(row.key());
      }
      tell("Set back: " + row.key() + ", was " + row.value);
    }
  }

  box::Place place_;
  std::vector<std::string> &lines_;
};

}  // namespace

void heal(const box::Place &place, bool somebody_works, std::vector<std::string> &lines) {
  Healing(place, lines).go(somebody_works);
}

}  // namespace spbox
