// The good play, once: its points are counted, and the box is kept as each command found it.
#pragma once

#include <vector>

#include "host/play/step.h"
#include "host/sweep/good.h"
#include "host/sweep/replay_rules.h"

namespace sweep {

// Throws play::Failure or script::Error where it does not come to its end, or cannot be swept.
Good play_well(const std::vector<play::Step> &steps, const ReplayRules &rules);

}  // namespace sweep
