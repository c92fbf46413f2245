#include "host/watch/marks.h"

#include <algorithm>

namespace watch {
namespace {

struct FlagRow {
  bool maintenance, detached, link_down;
  std::string_view meaning;
  Mark mark;
};

// The first row whose flags are all set counts.
constexpr std::array<FlagRow, 4> kFlags{{
    {true, true, false, "under maintenance and out of operation", {{U'&', '&'}, Paint::kCare}},
    {true, false, false, "under maintenance", {{U'm', 'm'}, Paint::kCare}},
    {false, true, false, "out of operation", {{U'o', 'o'}, Paint::kCare}},
    {false, false, true, "link down", {{U'l', 'l'}, Paint::kCare}},
}};

constexpr Mark kLedOn{{U'●', '*'}, Paint::kLight}, kLedBlinks{{U'○', '+'}, Paint::kLight};

}  // namespace

const StateRow &row_of(State state) {
  return *std::ranges::find(kStates, state, &StateRow::state);
}

Mark state_mark(const Unit &unit, bool carries_trouble) {
  return unit.state == State::kNormal && carries_trouble ? kCarriesTrouble : row_of(unit.state).mark;
}

Mark flag_mark(const Unit &unit) {
  for (const FlagRow &row : kFlags) {
    const bool fits = (!row.maintenance || unit.maintenance) && (!row.detached || unit.detached) &&
                      (!row.link_down || unit.link_down);
    if (fits) return row.mark;
  }
  return {};
}

Mark led_mark(const Unit &unit, bool lit) {
  if (unit.led == Led::kOff) return {};
  return unit.led == Led::kOn || lit ? kLedOn : kLedBlinks;
}

std::vector<LegendRow> legend() {
  std::vector<LegendRow> rows;
  for (const StateRow &row : kStates) rows.push_back({row.mark, row.word});
  rows.push_back({kCarriesTrouble, "carries one that is not normal"});
  for (const FlagRow &row : kFlags) rows.push_back({row.mark, row.meaning});
  rows.push_back({kLedOn, "LED on"});
  rows.push_back({kLedBlinks, "and this in turns: LED blinks"});
  return rows;
}

}  // namespace watch
