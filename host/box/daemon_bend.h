// How the daemon of a box is bent for a test.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "host/box/text_database.h"

namespace box {

enum class DaemonWay {
  kWell,
  kLate,    // answers after some seconds
  kSilent,  // hears and does not answer
  kDead,    // ends the connection instead of answering
  kGarbled  // answers with a message that is not as long as it says
};

// The ways as people write them.
struct DaemonWayName {
  DaemonWay way;
  std::string_view name;
};
inline constexpr std::array<DaemonWayName, 5> kDaemonWays{{{DaemonWay::kWell, "well"},
                                                           {DaemonWay::kLate, "late"},
                                                           {DaemonWay::kSilent, "silent"},
                                                           {DaemonWay::kDead, "dead"},
                                                           {DaemonWay::kGarbled, "garbled"}}};

struct DaemonBend {
  DaemonWay way = DaemonWay::kWell;
  std::uint32_t seconds = 0;  // of kLate
};

// Both throw where the box's own database fails.
DaemonBend daemon_bend(const TextDatabase &box);
void set_daemon_bend(TextDatabase &box, const DaemonBend &bend);

}  // namespace box
