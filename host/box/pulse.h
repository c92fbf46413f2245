// What tells that something has changed in a box, without reading what it is: the number of the last save of its databases, the
// counts of its trace, and the times of its files.
#pragma once

#include <string>

#include "host/box/place.h"

namespace box {

class Pulse {
 public:
  struct Beat {
    bool server = false, trace = false, log = false, people = false;

    bool any() const { return server || trace || log || people; }
  };

  explicit Pulse(Place place) : place_(std::move(place)) {}

  // What has changed since the last time; all of it at the first.
  Beat feel();

 private:
  Place place_;
  std::string server_, trace_, log_, people_;
};

}  // namespace box
