#include "host/programs/control_programs.h"

#include <algorithm>
#include <iterator>

namespace programs {
namespace {

constexpr ControlProgram kControlPrograms[] = {
    {"ctlmainte", "c:", ctlmainte},
    {"ctlfan", "u:c:", ctlfan},
    {"judgectlfru", "u:c:", judgectlfru},
    {"testfru", "u:", testfru},
    {"detachfru", "u:", detachfru},
    {"ctlled", "u:c:", ctlled},
    {"waitmgbready", "", waitmgbready},
    {"setmainteflag", "u:c:", setmainteflag},
    {"setupfru", "m:x:", setupfru},
    {"ioadm", "u:c:", ioadm},
    {"clearpci", "u:c:", clearpci},
    {"vantamainte", "se", vantamainte},
    {"testsb", "qy:", testsb},
    {"deleteboard", "q:c:", deleteboard},
    {"chkfanspeed", "u:", chkfanspeed},
    {"linkboard", "u:c:", linkboard},
};
static_assert(std::size(kControlPrograms) == box::kPrograms.size());

}  // namespace

const ControlProgram *find_program(std::string_view name) {
  const auto *const found = std::find_if(std::begin(kControlPrograms), std::end(kControlPrograms),
                                         [&](const ControlProgram &program) { return program.name == name; });
  return found == std::end(kControlPrograms) ? nullptr : found;
}

}  // namespace programs
