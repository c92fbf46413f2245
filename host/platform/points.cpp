#include "host/platform/points.h"

#include "host/box/place.h"
#include "host/platform/calls.h"
#include "host/platform/path_in_box.h"

namespace platform {
namespace {

constinit box::PointCounter counter;
constinit std::atomic<bool> was_looked_for = false;

void look_for_points() {
  const PathInBox path(box::kPointsPath);
  if (path.is_whole()) counter.map(path.text());
  was_looked_for = true;
}

}  // namespace

box::Turn reach(box::PointKind kind, std::string_view name) noexcept {
  if (!was_looked_for) look_for_points();
  const box::Turn turn = counter.reach(kind, name);
  if (turn.way != box::Way::kUsual) call_deviates();
  return turn;
}

void stand_for_points_of(pid_t process, void (*deliver)(int signal)) noexcept {
  counter.stand_for(process, deliver);
}

}  // namespace platform
