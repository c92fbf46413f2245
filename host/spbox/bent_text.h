// What is bent, broken or deviated in a box, in words: each from the verb that shows it.
#pragma once

#include <string>

#include "host/box/breakage.h"
#include "host/box/daemon_bend.h"
#include "host/box/points.h"
#include "host/box/program_list.h"

namespace spbox {

std::string bend_text(const box::Bend &bend);              // "exits with 206", or "straight"
std::string way_text(const box::DaemonBend &bend);         // "answers after 5 s"
std::string broken_text(const box::BrokenRecord &broken);  // "Record gen_system_info (database 0) is missing"
std::string deviation_text(const box::Deviation &deviation);

}  // namespace spbox
