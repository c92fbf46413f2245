#include "host/programs/control_programs.h"

#include <algorithm>
#include <charconv>
#include <initializer_list>

#include "include/lmainte.h"

namespace programs {
namespace {

bool one_of(std::string_view word, std::initializer_list<std::string_view> words) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

bool starts(std::string_view unit, std::initializer_list<std::string_view> kinds) {
  return std::any_of(kinds.begin(), kinds.end(), [&](std::string_view kind) { return unit.starts_with(kind); });
}

// The state of a unit as the configuration database has it; locations without a record count as installed.
std::uint32_t status_of(const Machine &machine, std::string_view name) {
  for (const box::Unit &unit : box::Inventory(machine.place).units()) {
    if (unit.place.name == name) return unit.status;
  }
  return LMAINTE_STATUS_INSTALLED;
}

bool board_exists(const Machine &machine, std::string_view number) {
  std::uint32_t board = 0;
  const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), board);
  return error == std::errc() && end == number.data() + number.size() && board < box::boards_of(machine.model);
}

int ctlmainte(const Arguments &arguments, Machine &machine) {
  const std::string mode = arguments.value('c');
  if (!arguments.words.empty() || !one_of(mode, {"lock", "unlock"})) return kUsage;
  const bool locked = machine.hardware.get("maintenance") == "lock";
  if (mode == "lock" && locked) return kRefused;
  if (mode == "unlock" && !locked) return kNotInMode;
  machine.hardware.set("maintenance", mode);
  return kDone;
}

int ctlfan(const Arguments &arguments, Machine &machine) {
  const std::string speed = arguments.value('c');
  if (!arguments.words.empty() || !one_of(speed, {"low", "high", "full"})) return kUsage;
  if (!arguments.has('u')) {
    if (speed == "full") return kUsage;  // full speed is for the trays around one unit
    machine.hardware.set("fan", speed);
    return kDone;
  }
  const std::string unit = arguments.value('u');
  if (!machine.has_unit(unit)) return kFanFailed;
  machine.hardware.set("fan " + unit, speed);
  return kDone;
}

int ctlled(const Arguments &arguments, Machine &machine) {
  const std::string unit = arguments.value('u');
  const std::string mode = arguments.value('c');
  if (!arguments.words.empty() || unit.empty() || !one_of(mode, {"on", "off", "blink", "sync"})) return kUsage;
  if (!machine.has_unit(unit)) return kLedFailed;
  if (mode != "sync") {
    machine.hardware.set("led " + unit, mode);
    return kDone;
  }
  const std::uint32_t status = status_of(machine, unit);
  const bool wants_service = (status & (LMAINTE_STATUS_FAULTED | LMAINTE_STATUS_DEGRADED)) != 0;
  machine.hardware.set("led " + unit, wants_service ? "on" : "off");
  return kDone;
}

int setmainteflag(const Arguments &arguments, Machine &machine) {
  const std::string unit = arguments.value('u');
  const std::string mode = arguments.value('c');
  if (!arguments.words.empty() || unit.empty() || !one_of(mode, {"start", "end"})) return kUsage;
  if (!machine.has_unit(unit)) return kFlagRefused;
  const bool started = machine.hardware.flag(unit) == "start";
  if (mode == "start" && started) return kRefused;
  if (mode == "end" && !started) return kFlagRefused;
  if (started) {
    machine.hardware.clear("flag " + unit);
  } else {
    machine.hardware.set("flag " + unit, "start");
  }
  return kDone;
}

int vantamainte(const Arguments &arguments, Machine &machine) {
  if (!arguments.words.empty() || arguments.options.size() != 1) return kUsage;
  machine.hardware.set("report", arguments.has('s') ? "start" : "end");
  return kDone;
}

int ioadm(const Arguments &arguments, Machine &machine) {
  const bool power =
      arguments.options.empty() && arguments.words.size() == 2 && one_of(arguments.words[0], {"poweron", "poweroff"});
  const bool led =
      arguments.words.empty() && arguments.only("uc") && one_of(arguments.value('c'), {"on", "off", "blink"});
  if (!power && !led) return kUsage;
  const std::string unit = power ? arguments.words[1] : arguments.value('u');
  if (!machine.has_expansion(unit)) return kRefused;
  if (power) {
    machine.hardware.set("power " + unit, arguments.words[0] == "poweron" ? "on" : "off");
  } else {
    machine.hardware.set("led " + unit, arguments.value('c'));
  }
  return kDone;
}

int waitmgbready(const Arguments &arguments, Machine & /*machine*/) {
  return arguments.words.empty() ? kDone : kUsage;  // the service processor of a box is always ready
}

int on_unit(const Arguments &arguments, const Machine &machine, int no_such_unit) {
  if (!arguments.words.empty() || arguments.value('u').empty()) return kUsage;
  return machine.has_unit(arguments.value('u')) ? kDone : no_such_unit;
}

int judgectlfru(const Arguments &arguments, Machine &machine) {
  if (!one_of(arguments.value('c'), {"add", "del"})) return kUsage;
  return on_unit(arguments, machine, kNoJudgement);
}

int testfru(const Arguments &arguments, Machine &machine) {
  return on_unit(arguments, machine, kTestFailed);
}

int detachfru(const Arguments &arguments, Machine &machine) {
  return on_unit(arguments, machine, kNotDetached);
}

int chkfanspeed(const Arguments &arguments, Machine &machine) {
  const int status = on_unit(arguments, machine, kNoFanSpeed);
  return status == kDone && !starts(arguments.value('u'), {"/FAN_A", "/FAN_B"}) ? kNoFanSpeed : status;
}

int linkboard(const Arguments &arguments, Machine &machine) {
  if (!one_of(arguments.value('c'), {"up", "down"})) return kUsage;
  const int status = on_unit(arguments, machine, kNotLinked);
  return status == kDone && !starts(arguments.value('u'), {"/CMU#", "/IOU#", "/MBU_"}) ? kNotLinked : status;
}

int testsb(const Arguments &arguments, Machine &machine) {
  if (!arguments.words.empty() || !arguments.only("qy")) return kUsage;
  return board_exists(machine, arguments.value('y')) ? kDone : kTestFailed;
}

int setupfru(const Arguments &arguments, Machine &machine) {
  const std::string mirror = arguments.value('m');
  const std::string division = arguments.value('x');
  if (!one_of(mirror, {"y", "n"}) || !one_of(division, {"1", "4"}) || (mirror == "y" && division == "4")) return kUsage;
  if (arguments.words.size() != 2 || arguments.words[0] != "sb") return kUsage;
  return board_exists(machine, arguments.words[1]) ? kDone : kBadDivision;
}

// Extended system boards are written "03-2".
int deleteboard(const Arguments &arguments, Machine &machine) {
  if (arguments.value('q') != "y" || arguments.value('c') != "unassign" || arguments.words.empty()) return kUsage;
  for (const std::string_view word : arguments.words) {
    const std::size_t dash = word.find('-');
    if (dash < 2 || dash == std::string_view::npos || !one_of(word.substr(dash), {"-0", "-1", "-2", "-3"}))
      return kUsage;
    if (!board_exists(machine, word.substr(0, dash))) return kBadBoard;
  }
  return kDone;
}

// The line comes from whoever keeps the slot's record: anything but a unit is taken as it is.
int clearpci(const Arguments &arguments, Machine &machine) {
  std::vector<std::string> units = arguments.words;
  if (arguments.has('u')) units.push_back(arguments.value('u'));
  if (units.empty()) return kUsage;
  for (const std::string &unit : units) {
    if (unit.starts_with('/') && !machine.has_unit(unit) && !machine.has_expansion(unit)) return kNotCleared;
  }
  return kDone;
}

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

bool Machine::has_unit(std::string_view name) const {
  return box::unit_id(model, name).has_value();
}

bool Machine::has_expansion(std::string_view name) const {
  if (!name.starts_with("/IOX@")) return false;
  return hardware.get("power " + std::string(name.substr(0, name.find('/', 1)))).has_value();
}

const ControlProgram *find_program(std::string_view name) {
  const auto *const found = std::find_if(std::begin(kControlPrograms), std::end(kControlPrograms),
                                         [&](const ControlProgram &program) { return program.name == name; });
  return found == std::end(kControlPrograms) ? nullptr : found;
}

}  // namespace programs
