// The picture of a scene on a sheet: the chassis, and beside or below it what happens in the box.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/watch/canvas.h"
#include "host/watch/scene.h"

namespace watch {

inline constexpr int kLeastRows = 24, kLeastColumns = 80;

// A list from which one line is chosen.
struct Menu {
  std::string title;
  std::vector<std::string> lines;
  std::size_t chosen = 0;
};

// A key as the picture shows it.
struct KeyHint {
  int key;
  std::string name, what;
};

// How the one who watches looks at it.
struct View {
  std::string box = {};
  bool is_lit = false;                     // a LED that blinks shines now
  std::optional<std::size_t> chosen = {};  // a unit
  std::optional<std::size_t> inside = {};  // the unit that is looked into
  std::optional<Menu> menu = {};
  std::vector<KeyHint> keys = {};  // none: nobody can press any
  std::string message = {};        // a question, or what came of the last key
};

// What a click there means.
struct Region {
  int row, column, width;
  std::optional<std::size_t> unit;
  std::optional<std::size_t> menu_line;
  std::optional<int> key;
};

struct Picture {
  Canvas canvas;
  std::vector<Region> regions;
};

// As much as has room. The sheet is kLeastRows and kLeastColumns at least.
Picture draw(const Scene &scene, const View &view, int rows, int columns, Letters letters);

}  // namespace watch
