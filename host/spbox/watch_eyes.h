// What there is to see of a box, and what hands can do to it: each in a process that is confined to the box, so that a box that a
// command has forged can do nothing to the one who watches.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "host/box/place.h"
#include "host/watch/scene.h"

namespace spbox {

// What of a scene is read. The rest stays as it is.
struct Parts {
  bool server = true, trace = true, log = true;

  bool any() const { return server || trace || log; }
};

// Where the box cannot be read, the scene says why, and keeps what it has. Returns why a part of it could not be read; nothing where all
// was.
std::string look_at(const box::Place &place, Parts parts, std::size_t lines, watch::Scene &scene);

// The commands in the box with what each has started: "replace_unit psu > ctlled -u /PSU#0 -c on".
std::vector<std::string> at_work_in(const box::Place &place);

}  // namespace spbox
