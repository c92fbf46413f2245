// Waiting in a test for what another process does.
#pragma once

#include <chrono>

#include "host/clock/hours.h"

// Whether it comes true within this time: the box's where the test keeps it. Looks a hundred times a second.
template <typename Predicate>
bool eventually(const Predicate &is_true, std::chrono::milliseconds patience = std::chrono::seconds(10)) {
  const auto deadline = box_time::now() + patience;
  while (!is_true()) {
    if (box_time::now() >= deadline) return false;
    box_time::poll({}, box_time::now() + std::chrono::milliseconds(10));
  }
  return true;
}
