// The control programs of a box: their names, how they are bent for a test, and their last runs.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/box/text_database.h"
#include "include/lmainte.h"

namespace box {

// Where every control program is, seen by a command in the box; the program's own paths are links to it.
inline constexpr std::string_view kControlProgram = "/mgb/lib/control_program";

struct Program {
  std::uint32_t number;  // by which the library runs it
  std::string_view name;
  std::string_view path;
};

// In the order of their numbers.
inline constexpr std::array<Program, 16> kPrograms{{
    {LMAINTE_CMD_CTLMAINTE, "ctlmainte", "/mgb/bin/ctlmainte"},
    {LMAINTE_CMD_CTLFAN, "ctlfan", "/mgb/bin/ctlfan"},
    {LMAINTE_CMD_JUDGECTLFRU, "judgectlfru", "/mgb/bin/judgectlfru"},
    {LMAINTE_CMD_TESTFRU, "testfru", "/mgb/bin/testfru"},
    {LMAINTE_CMD_DETACHFRU, "detachfru", "/mgb/bin/detachfru"},
    {LMAINTE_CMD_CTLLED, "ctlled", "/mgb/bin/ctlled"},
    {LMAINTE_CMD_WAITMGBREADY, "waitmgbready", "/mgb/bin/waitmgbready"},
    {LMAINTE_CMD_SETMAINTEFLAG, "setmainteflag", "/mgb/bin/setmainteflag"},
    {LMAINTE_CMD_SETUPFRU, "setupfru", "/mgb/cli/usr/bin/setupfru"},
    {LMAINTE_CMD_IOADM, "ioadm", "/mgb/cli/usr/bin/ioadm"},
    {LMAINTE_CMD_CLEARPCI, "clearpci", "/mgb/bin/clearpci"},
    {LMAINTE_CMD_VANTAMAINTE, "vantamainte", "/mgb/bin/vantamainte"},
    {LMAINTE_CMD_TESTSB, "testsb", "/mgb/cli/usr/bin/testsb"},
    {LMAINTE_CMD_DELETEBOARD, "deleteboard", "/mgb/cli/usr/bin/deleteboard"},
    {LMAINTE_CMD_CHKFANSPEED, "chkfanspeed", "/mgb/bin/chkfanspeed"},
    {LMAINTE_CMD_LINKBOARD, "linkboard", "/mgb/bin/linkboard"},
}};

std::vector<std::string> program_names();

// With which a control program can end.
inline constexpr int kLowestExit = 0, kHighestExit = 255;

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

// Whether the box's own database keeps a last run under this key.
bool is_last_run(std::string_view key);

}  // namespace box
