#include "host/box/daemon_bend.h"

#include <algorithm>
#include <sstream>
#include <string>

namespace box {
namespace {

constexpr const char *kBendKey = "bend-daemon monitor";

}  // namespace

// "late 5", "silent"; nothing while it works well.
DaemonBend daemon_bend(const TextDatabase &box) {
  std::istringstream words(box.get(kBendKey).value_or(""));
  std::string name;
  DaemonBend bend;
  words >> name >> bend.seconds;
  const auto *const found =
      std::find_if(kDaemonWays.begin(), kDaemonWays.end(), [&](const DaemonWayName &row) { return row.name == name; });
  if (found != kDaemonWays.end()) bend.way = found->way;
  return bend;
}

void set_daemon_bend(TextDatabase &box, const DaemonBend &bend) {
  if (bend.way == DaemonWay::kWell) return box.clear(kBendKey);
  for (const DaemonWayName &row : kDaemonWays) {
    if (row.way == bend.way) box.set(kBendKey, std::string(row.name) + " " + std::to_string(bend.seconds));
  }
}

}  // namespace box
