// The files into which commands write what they do: the trace, their calls, and the log.
#pragma once

#include <string>
#include <vector>

#include "host/box/place.h"

namespace box {

// What is damaged so that nothing more can be written there: a sentence for each file.
std::vector<std::string> damaged_logs(const Place &place);

}  // namespace box
