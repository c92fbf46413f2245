#include "host/clock/hours.h"

#include <algorithm>
#include <ctime>

#include "host/clock/keeper.h"

namespace box_time {
namespace {

Keeper *g_keeper = nullptr;

int system_poll(std::span<pollfd> fds, std::optional<nanoseconds> until) {
  if (!until) return ppoll(fds.data(), fds.size(), nullptr, nullptr);
  const nanoseconds left = std::max(*until - wall(), nanoseconds(0));
  const timespec limit{left.count() / 1'000'000'000, left.count() % 1'000'000'000};
  return ppoll(fds.data(), fds.size(), &limit, nullptr);
}

}  // namespace

nanoseconds wall() {
  timespec time{};
  clock_gettime(CLOCK_MONOTONIC, &time);
  return std::chrono::seconds(time.tv_sec) + nanoseconds(time.tv_nsec);
}

void set_keeper(Keeper *keeper) {
  g_keeper = keeper;
}

nanoseconds now() {
  return g_keeper == nullptr ? wall() : g_keeper->now();
}

int poll(std::span<pollfd> fds, std::optional<nanoseconds> until) {
  return g_keeper == nullptr ? system_poll(fds, until) : g_keeper->poll(fds, until);
}

int poll_by_wall(std::span<pollfd> fds, nanoseconds until) {
  return g_keeper == nullptr ? system_poll(fds, until) : g_keeper->poll(fds, std::nullopt, until);
}

void keep(const std::filesystem::path &page) {
  if (g_keeper != nullptr) g_keeper->keep(page);
}

bool is_keeper() {
  return g_keeper != nullptr;
}

}  // namespace box_time
