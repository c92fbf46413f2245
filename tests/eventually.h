// Waiting in a test for what another process does.
#pragma once

#include <chrono>
#include <thread>

// Whether it comes true within this time. Looks a hundred times a second.
template <typename Predicate>
bool eventually(const Predicate &is_true, std::chrono::milliseconds patience = std::chrono::seconds(10)) {
  const auto deadline = std::chrono::steady_clock::now() + patience;
  while (!is_true()) {
    if (std::chrono::steady_clock::now() >= deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return true;
}
