// How a unit is marked in the picture: a letter for its state, one for what was set for it, and one for its LED. Each says
// without a colour what it means.
#pragma once

#include <array>
#include <string_view>

#include "host/watch/canvas.h"
#include "host/watch/scene.h"

namespace watch {

struct Mark {
  Glyph glyph{U' ', ' '};
  Paint paint = Paint::kPlain;
};

struct StateRow {
  State state;
  std::string_view word;
  Mark mark;
};
inline constexpr std::array<StateRow, 5> kStates{{
    {State::kNormal, "Normal", {{U'·', '.'}, Paint::kGood}},
    {State::kDegraded, "Degraded", {{U'D', 'D'}, Paint::kDegraded}},
    {State::kFaulted, "Faulted", {{U'F', 'F'}, Paint::kFaulted}},
    {State::kOut, "Not installed", {{U'–', '-'}, Paint::kOut}},
    {State::kUnreadable, "Unreadable", {{U'?', '?'}, Paint::kUnreadable}},
}};
const StateRow &row_of(State state);

// Of a unit that is in order itself, but carries one that is not.
inline constexpr Mark kCarriesTrouble{{U'!', '!'}, Paint::kFaulted};

Mark state_mark(const Unit &unit, bool carries_trouble);
Mark flag_mark(const Unit &unit);
Mark led_mark(const Unit &unit, bool lit);  // lit: a LED that blinks shines now

// What the marks mean, in one line for each letter.
struct LegendRow {
  Mark mark;
  std::string_view meaning;
};
std::vector<LegendRow> legend();

}  // namespace watch
