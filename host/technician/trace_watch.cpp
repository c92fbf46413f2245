#include "host/technician/trace_watch.h"

#include <utility>

#include "host/box/trace_ring.h"

namespace technician {

TraceWatch::TraceWatch(box::Place place) : place_(std::move(place)) {
  const auto entries = box::TraceRing::read(place_.trace());
  if (!entries.empty()) next_ = entries.back().number + 1;
}

// A record that another process still writes is a gap among the others, and is looked at once it is whole. So what nobody
// has looked at begins with the first gap.
bool TraceWatch::has_come(const TraceCondition &condition) {
  bool is_behind_gap = false;
  std::uint64_t expected = next_;
  for (const box::TraceEntry &entry : box::TraceRing::read(place_.trace())) {
    if (entry.number < expected) continue;
    is_behind_gap |= entry.number != expected;
    expected = entry.number + 1;
    const bool is_met = condition.is_met_by(entry.event);
    if (is_met || !is_behind_gap) next_ = expected;
    if (is_met) return true;
  }
  return false;
}

}  // namespace technician
