// What the daemon knows: the answers to requests about the box.
#pragma once

#include <chrono>
#include <cstdint>
#include <span>
#include <utility>

#include "host/box/daemon_bend.h"
#include "host/box/database.h"
#include "host/box/place.h"

namespace monitor {

// What becomes of a request. A reply that has no bytes is none.
struct Answer {
  box::Bytes reply;
  std::chrono::seconds delay{0};
  bool hangs_up = false;
};

class Monitor {
 public:
  explicit Monitor(box::Place place) : place_(std::move(place)) {}

  // Answers as the box's bend tells it to. Never throws: what fails in the box is part of the answer.
  Answer answer(std::span<const std::uint8_t> asked);

 private:
  box::Place place_;
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
  std::uint32_t answered_ = 0;
};

}  // namespace monitor
