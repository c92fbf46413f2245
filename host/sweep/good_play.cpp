#include "host/sweep/good_play.h"

#include <algorithm>
#include <utility>

#include "host/box/confinement.h"
#include "host/sweep/command_watch.h"
#include "host/sweep/house.h"
#include "host/sweep/steps.h"

namespace sweep {
namespace {

using play::Step;

class GoodPlay {
 public:
  GoodPlay(const std::vector<Step> &steps, const ReplayRules &rules)
      : steps_(steps), rules_(rules), house_(rules), stage_(house_.stage()), watch_(stage_, rules) {}

  Good play() {
    for (at_ = 0; at_ < steps_.size(); ++at_) {
      if (is_checkpoint()) {
        rules_.checkpoints.keep(found_.commands.size(), {house_.place(), house_.keeper().ahead()});
      }
      if (steps_[at_].row->traits.starts_command) begin_command();
      perform(steps_[at_]);
      if (!ends_command(steps_[at_])) continue;
      found_.commands.push_back(watch_.end(start_, {}));
      count_points();
    }
    check_command_has_ended();
    play::wait_for_technicians(stage_);
    found_.script = number_of_script(steps_);
    return std::move(found_);
  }

 private:
  void perform(const Step &step) {
    if (is_for_people(step)) return;
    const auto wrong = attempt([&] { house_.perform(stage_.with_taken(step)); });
    if (wrong) throw step.error(*wrong);
    if (step.row->traits.makes_box) box::order_points(house_.place());
  }

  void begin_command() {
    check_command_has_ended();
    watch_.begin();
    start_ = at_;
    ++begun_;
  }

  void check_command_has_ended() const {
    if (found_.commands.size() == begun_) return;
    throw steps_[start_].error("a sweep has to know how this command ends: write `exit` or `dies` behind it");
  }

  // Whether all that the steps until now have done is in the box, and a command begins.
  bool is_checkpoint() {
    if (!steps_[at_].row->traits.starts_command || found_.commands.empty()) return false;
    const bool is_quiet = stage_.technicians.at_work().empty() && play::processes_of(house_.place()).empty();
    if (!is_quiet || needs_what_was_said()) return false;
    const auto is_not_in_box = [](const Step &step) { return step.slot >= 0 || is_verb(step, {"resize"}); };
    return std::none_of(steps_.begin(), steps_.begin() + static_cast<std::ptrdiff_t>(at_), is_not_in_box);
  }

  bool needs_what_was_said() const {
    for (std::size_t i = at_; i < steps_.size(); ++i) {
      if (steps_[i].row->traits.names_verb) return false;
      if (steps_[i].row->traits.needs_said) return true;
    }
    return false;
  }

  void count_points() {
    const std::size_t command = found_.commands.size() - 1;
    const auto points = box::points_of(house_.place());
    if (!points) throw script::Error("the play forgets its points, or sets deviations of its own: it cannot be swept");
    if (points->lost > 0) throw script::Error("the play has more kinds of points than can be counted");
    if (points->order.size() == box::kLongestOrder) throw script::Error("the play has more points than can be ordered");
    for (const box::PointCount &count : points->counts) {
      std::uint32_t last = 0;
      for (const PointRange &known : found_.points) {
        if (known.kind == count.kind && known.name == count.name) last = known.last;
      }
      if (count.count > last) found_.points.push_back({count.kind, count.name, last + 1, count.count, command});
    }
    for (std::size_t i = found_.order.size(); i < points->order.size(); ++i) {
      const box::PointCount &at = points->counts.at(points->order[i]);
      found_.order.push_back({at.kind, at.name, command});
    }
  }

  const std::vector<Step> &steps_;
  const ReplayRules &rules_;
  House house_;
  play::Stage &stage_;
  CommandWatch watch_;
  std::size_t at_ = 0, start_ = 0, begun_ = 0;
  Good found_;
};

}  // namespace

Good play_well(const std::vector<Step> &steps, const ReplayRules &rules) {
  return GoodPlay(steps, rules).play();
}

}  // namespace sweep
