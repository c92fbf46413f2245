#include "host/spbox/watch_hands.h"

#include <exception>
#include <vector>

#include "host/base/told.h"
#include "host/box/confinement.h"
#include "host/box/inhabitants.h"
#include "host/box/inventory.h"
#include "host/box/program_list.h"
#include "host/spbox/bent_text.h"
#include "host/spbox/healing.h"

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

}  // namespace

std::string let_hands(const box::Place &place, const watch::Hand &hand) {
  try {
    const bool somebody_works = !box::inhabitants(place).empty();
    return box::in_confinement(place, [&] {
      switch (hand.what) {
        case watch::Hand::What::kChange:
          return change_unit(place, hand);
        case watch::Hand::What::kBend:
          return bend_program(place, hand);
        case watch::Hand::What::kHeal:
          break;
      }
      std::vector<std::string> lines;
      heal(place, somebody_works, lines);
      return std::string("All that hands can put right is right again.");
    });
  } catch (const std::exception &error) {
    return base::told(error);
  }
}

}  // namespace spbox
