#include "host/sweep/house.h"

#include <algorithm>
#include <cstdlib>

#include "host/include/lmainte_host.h"
#include "host/sweep/steps.h"

namespace sweep {
namespace {

// As long as it lives.
class ShortPatience {
 public:
  ShortPatience(play::Stage &stage, std::chrono::milliseconds longest) : stage_(stage), usual_(stage.patience) {
    stage_.patience = std::min(usual_, longest);
  }
  ~ShortPatience() { stage_.patience = usual_; }
  ShortPatience(const ShortPatience &) = delete;
  ShortPatience &operator=(const ShortPatience &) = delete;

 private:
  play::Stage &stage_;
  std::chrono::milliseconds usual_;
};

}  // namespace

House::House(const ReplayRules &rules)
    : keeper_(rules.speed),
      transcript_(out_),
      narrator_(transcript_, picture_),
      box_(rules.spbox, {}, rules.alarm, rules.options),
      stage_(box_, narrator_, rules.alarm) {
  // NOLINTNEXTLINE(concurrency-mt-unsafe): there is one thread
  setenv(LMAINTE_HOST_RUN, "", 1);
}

void House::perform(const play::Step &step) {
  if (!is_verb(step, {"in_order"})) return step.row->perform(stage_, step);
  const ShortPatience dying(stage_, kDyingTime);
  step.row->perform(stage_, step);
}

}  // namespace sweep
