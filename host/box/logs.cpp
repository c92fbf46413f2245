#include "host/box/logs.h"

#include <exception>
#include <utility>

#include "host/box/call_ring.h"
#include "host/box/event_log.h"
#include "host/box/trace_ring.h"

namespace box {

std::vector<std::string> damaged_logs(const Place &place) {
  std::vector<std::string> sentences;
  for (const auto &[check, file] :
       {std::pair(&TraceRing::check, place.trace()), std::pair(&CallRing::check, place.calls()),
        std::pair(&EventLog::check, place.events())}) {
    try {
      check(file);
    } catch (const std::exception &error) {
      sentences.emplace_back(error.what());
    }
  }
  return sentences;
}

}  // namespace box
