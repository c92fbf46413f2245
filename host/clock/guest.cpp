#include "host/clock/guest.h"

#include <unistd.h>

#include <algorithm>
#include <thread>

#include "host/clock/hours.h"

namespace box_time {
namespace {

constexpr box_time_waiter kNobody{.thread = 0, .process = 0, .turn = 0, .deadline = BOX_TIME_NEVER};
constexpr nanoseconds kSoonest = std::chrono::microseconds(50);  // who does not wait is at work, and the time stands
constexpr nanoseconds kLookAgain = std::chrono::microseconds(500);

}  // namespace

bool is_kept(const std::filesystem::path &page) {
  const auto table = Table::open(page);
  return table && table->is_taken(kKeepersByte);
}

Guest::Guest(const std::filesystem::path &page) : table_(Table::open(page)) {
  if (!table_ || !table_->is_taken(kKeepersByte)) return;
  for (int row = 0; row < BOX_TIME_GUESTS; ++row) {
    if (!table_->take(kFirstGuestsByte + row)) continue;
    table_->write_waiter(row, kNobody);
    table_->write_guest(row, getpid());
    row_ = row;
    return;
  }
}

Guest::~Guest() {
  if (row_ < 0) return;
  table_->write_waiter(row_, kNobody);
  table_->write_guest(row_, 0);
}

nanoseconds Guest::now() const {
  if (row_ < 0) return wall();
  const box_time_page page = table_->read();
  const nanoseconds silence = wall() - nanoseconds(page.looked);
  const bool is_silent = page.keeper == 0 || silence > nanoseconds(BOX_TIME_SILENCE);
  const bool passes_on_wall = is_silent && (page.keeper == 0 || !table_->is_taken(kKeepersByte));
  return nanoseconds(page.passed) + (passes_on_wall ? silence : nanoseconds(0));
}

void Guest::sleep(nanoseconds length) const {
  if (row_ < 0) {
    std::this_thread::sleep_for(length);
    return;
  }
  static std::uint64_t turns = 0;
  const box_time_page page = table_->read();
  const auto between = nanoseconds(BOX_TIME_BETWEEN_WAITS);
  const nanoseconds deadline = now() + length + (page.turns - page.moved) * between + between / 2;
  const auto self = static_cast<std::uint32_t>(getpid());
  table_->write_waiter(row_, {.thread = self, .process = self, .turn = ++turns, .deadline = deadline.count()});
  while (now() < deadline) std::this_thread::sleep_for(std::clamp(length, kSoonest, kLookAgain));
  table_->write_waiter(row_, kNobody);
}

}  // namespace box_time
