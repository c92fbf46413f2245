// Where the units of a server stand in the picture. A table has the rows of each model's chassis.
#pragma once

#include <string>
#include <vector>

#include "host/watch/scene.h"

namespace watch {

enum class Look {
  kTile,    // a text and three marks: state, flag, LED
  kMark,    // the mark of the state alone
  kDomains  // the domains of a board's parts
};

struct Spot {
  int row, column, width;
  Look look;
  std::size_t unit;  // of kDomains: the board's number
  std::string text;
};

struct Caption {
  int row, column;
  std::string text;
};

struct Plan {
  int rows = 0;
  std::vector<Spot> spots;
  std::vector<Caption> captions;
  std::vector<int> rules;  // rows with a line across
};

inline constexpr int kMarksWidth = 3;                                 // of a tile
inline constexpr int kLeastWidth = 78;                                // on which each chassis has room
Plan plan_of(const Server &server, int width, int rows);              // with as much in it as has room in so many rows
Plan plan_inside(const Server &server, std::size_t unit, int width);  // what this unit carries

}  // namespace watch
