#include "host/programs/control_programs.h"

#include <algorithm>
#include <iterator>

#include "host/box/program_list.h"

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

constexpr bool are_those_of_a_box() {
  return std::equal(std::begin(kControlPrograms), std::end(kControlPrograms), box::kPrograms.begin(),
                    box::kPrograms.end(),
                    [](const ControlProgram &acts, const box::Program &listed) { return acts.name == listed.name; });
}
static_assert(are_those_of_a_box(),
              "the programs that act and those of host/box/program_list.h differ in name or order");

}  // namespace

const ControlProgram *find_program(std::string_view name) {
  const auto *const found = std::find_if(std::begin(kControlPrograms), std::end(kControlPrograms),
                                         [&](const ControlProgram &program) { return program.name == name; });
  return found == std::end(kControlPrograms) ? nullptr : found;
}

}  // namespace programs
