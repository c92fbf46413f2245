#include "host/spbox/watch_hands.h"

#include <exception>
#include <vector>

#include "host/base/told.h"
#include "host/box/breakage.h"
#include "host/box/confinement.h"
#include "host/box/daemon_bend.h"
#include "host/box/inventory.h"
#include "host/box/points.h"
#include "host/box/program_list.h"
#include "host/spbox/bent_text.h"

namespace spbox {
namespace {

std::string change_unit(const box::Place &place, const watch::Hand &hand) {
  const box::Unit unit = box::Inventory(place).change(hand.change, {hand.unit}).front();
  return unit.place.name + ": " + std::string(technician::row_of(hand.change).verb) + ", now " +
         std::string(box::state_word(unit)) + ".";
}

std::string bend_program(const box::Place &place, const watch::Hand &hand) {
  const std::string name(box::kPrograms.at(hand.program).name);
  const box::Bend &bend = watch::bends()[hand.way].bend;
  box::TextDatabase kept(place);
  box::set_bend(kept, name, bend);
  return "Program " + name + ": " + bend_text(bend) + ".";
}

void straighten(const box::Place &place) {
  box::TextDatabase kept(place);
  kept.lock();
  for (const std::string &name : box::program_names()) {
    if (!box::bend_of(kept, name).straight()) box::set_bend(kept, name, {});
  }
  if (box::daemon_bend(kept).way != box::DaemonWay::kWell) box::set_daemon_bend(kept, {});
  kept.unlock();
}

// Records first: a unit whose record is broken can only be healed then. A unit that is put in brings those that it carries.
std::string heal(const box::Place &place) {
  std::vector<box::RecordName> records;
  for (const box::BrokenRecord &broken : box::broken_records(place)) records.push_back(broken.record);
  box::mend_records(place, records);
  straighten(place);
  box::forget_points(place);
  const box::Inventory inventory(place);
  for (const box::Change change : {box::Change::kInsert, box::Change::kRepair}) {
    std::vector<std::string> names;
    for (const box::Unit &unit : inventory.units()) {
      if (!unit.unreadable.empty()) continue;
      const bool wants_it = change == box::Change::kInsert ? !unit.installed() : unit.wants_service();
      if (wants_it) names.push_back(unit.place.name);
    }
    if (!names.empty()) inventory.change(change, names);
  }
  return "All that hands can put right is right again.";
}

}  // namespace

std::string let_hands(const box::Place &place, const watch::Hand &hand) {
  try {
    return box::in_confinement(place, [&] {
      switch (hand.what) {
        case watch::Hand::What::kChange:
          return change_unit(place, hand);
        case watch::Hand::What::kBend:
          return bend_program(place, hand);
        case watch::Hand::What::kHeal:
          break;
      }
      return heal(place);
    });
  } catch (const std::exception &error) {
    return base::told(error);
  }
}

}  // namespace spbox
