// The control programs of a box: their names, how they are bent for a test, and their last runs.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "host/box/text_database.h"

namespace box {

// Where every control program is, seen by a command in the box; the program's own paths are links to it.
inline constexpr std::string_view kControlProgram = "/mgb/lib/control_program";

struct Program {
  std::string_view name;
  std::string_view path;
};

// In the order of their numbers (LMAINTE_CMD_...).
inline constexpr std::array<Program, 16> kPrograms{{
    {"ctlmainte", "/mgb/bin/ctlmainte"},
    {"ctlfan", "/mgb/bin/ctlfan"},
    {"judgectlfru", "/mgb/bin/judgectlfru"},
    {"testfru", "/mgb/bin/testfru"},
    {"detachfru", "/mgb/bin/detachfru"},
    {"ctlled", "/mgb/bin/ctlled"},
    {"waitmgbready", "/mgb/bin/waitmgbready"},
    {"setmainteflag", "/mgb/bin/setmainteflag"},
    {"setupfru", "/mgb/cli/usr/bin/setupfru"},
    {"ioadm", "/mgb/cli/usr/bin/ioadm"},
    {"clearpci", "/mgb/bin/clearpci"},
    {"vantamainte", "/mgb/bin/vantamainte"},
    {"testsb", "/mgb/cli/usr/bin/testsb"},
    {"deleteboard", "/mgb/cli/usr/bin/deleteboard"},
    {"chkfanspeed", "/mgb/bin/chkfanspeed"},
    {"linkboard", "/mgb/bin/linkboard"},
}};

// How a control program is bent, in the order in which it acts.
struct Bend {
  bool ignore_term = false;
  std::uint32_t delay = 0;    // seconds before the program does anything
  bool hang = false;          // does nothing for ever; with an exit status, until SIGTERM
  std::optional<int> die{};   // dies by this signal instead of acting
  std::optional<int> exit{};  // ends with this exit status instead of acting

  bool straight() const { return !ignore_term && delay == 0 && !hang && !die && !exit; }
};

// The last run of a control program.
struct Run {
  std::int64_t time_ns = 0;
  std::int32_t pid = 0;
  std::optional<int> status;  // none: it has not ended, or it was killed
  std::string arguments;
};

// All four throw where the box's own database fails.
Bend bend_of(const TextDatabase &box, std::string_view program);
void set_bend(TextDatabase &box, std::string_view program, const Bend &bend);
std::optional<Run> last_run(const TextDatabase &box, std::string_view program);
void set_last_run(TextDatabase &box, std::string_view program, const Run &run);

}  // namespace box
