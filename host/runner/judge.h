// What the end of a process says of the play that it was.
#pragma once

#include "host/runner/pool.h"
#include "host/runner/result.h"

namespace runner {

// `limit` is how long it could have taken.
Result judge(const JobEnding &ending, std::chrono::milliseconds limit);

}  // namespace runner
