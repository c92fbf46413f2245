// A recording as a page, to step through: what its commands asked of whom and what came of it, what the operator saw as far as the
// recording knows it, the server as its records tell, and the trace and the log up to there.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "host/recording/as_rings.h"
#include "host/recording/recording.h"
#include "host/report/report.h"
#include "host/trace_book/history.h"

namespace spbox {

// `lines` are those of the recording's history that are asked for. Ends early where `is_over` says so. Throws.
report::Play as_play(const recording::Recording &recording, const recording::AsRings &rings,
                     const std::vector<trace_book::Told> &lines, const std::string &name,
                     const std::function<bool()> &is_over);

}  // namespace spbox
