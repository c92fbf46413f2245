#include "host/sweep/sequel.h"

#include <algorithm>
#include <vector>

namespace sweep {
namespace {

// How many of the points that are ordered were reached when this one was. Points that were counted before their order was kept are
// not among them.
std::size_t ordered_until(const box::Deviation &point, const box::Points &points) {
  const auto is_of_point = [&](std::uint32_t at) {
    return points.counts[at].kind == point.kind && points.counts[at].name == point.name;
  };
  auto behind = static_cast<std::uint32_t>(std::ranges::count_if(points.order, is_of_point));
  std::uint32_t number = 0;
  for (const box::PointCount &count : points.counts) {
    if (count.kind == point.kind && count.name == point.name) number = count.count - behind;
  }
  for (std::size_t i = 0; i < points.order.size(); ++i) {
    if (is_of_point(points.order[i]) && ++number == point.number) return i + 1;
  }
  return points.order.size();
}

}  // namespace

void Sequel::note_step(std::size_t step) {
  if (first_step_ > last_step_) first_step_ = step;
  last_step_ = step;
}

Good Sequel::found(const Good &good, const Deviation &deviation, const box::Points &points) const {
  Good sequel;
  sequel.script = good.script;
  sequel.commands = good.commands;
  sequel.first_step = first_step_;
  sequel.last_step = last_step_;
  if (points.lost > 0 || points.order.size() == box::kLongestOrder) return sequel;  // Their numbers are not known.
  const std::size_t before = deviation.point ? ordered_until(*deviation.point, points) : points_before_;
  std::vector<std::uint32_t> behind(points.counts.size());
  for (std::size_t i = before; i < points.order.size(); ++i) {
    const box::PointCount &at = points.counts.at(points.order[i]);
    ++behind.at(points.order[i]);
    sequel.order.push_back({at.kind, at.name, deviation.command});
  }
  for (std::size_t i = 0; i < behind.size(); ++i) {
    const box::PointCount &at = points.counts[i];
    if (behind[i] > 0) {
      sequel.points.push_back({at.kind, at.name, at.count - behind[i] + 1, at.count, deviation.command});
    }
  }
  return sequel;
}

}  // namespace sweep
