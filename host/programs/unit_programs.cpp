// Programs that concern one unit.
#include "host/box/model.h"
#include "host/box/partitions.h"
#include "host/programs/boards.h"
#include "host/programs/control_programs.h"
#include "include/lmainte.h"

namespace programs {
namespace {

// The unit of a line that has nothing but "-u UNIT" and perhaps a mode; empty where the line makes no sense.
std::string unit_of(const Arguments &arguments, std::initializer_list<std::string_view> modes) {
  const bool has_mode = modes.size() == 0 || one_of(arguments.value('c'), modes);
  return arguments.words.empty() && has_mode ? arguments.value('u') : "";
}

// These share a load, and the last one that works is not to be taken.
constexpr bool shares_a_load(std::int32_t type) {
  return type == LMAINTE_TYPE_PSU || type == LMAINTE_TYPE_FANTRAY || type == LMAINTE_TYPE_DDC ||
         type == LMAINTE_TYPE_EMGBU || type == LMAINTE_TYPE_BP;
}

// A slot's card can be changed while the board runs.
bool is_part_of_a_board(const box::Unit &unit) {
  return unit.place.type() != LMAINTE_TYPE_PCI;
}

bool can_be_spared(const Machine &machine, const std::string &name, const box::Unit &unit) {
  if (const auto board = box::board_of(name); board && is_part_of_a_board(unit)) {
    Boards boards(machine.place, machine.model);
    // What sits on a board is not to be had while a domain runs there; the board itself is, if the domain has another.
    return unit.place.carried ? !boards.is_active(*board) : boards.can_be_spared(*board);
  }
  return !shares_a_load(unit.place.type()) || unit.faulted() || machine.another_works(name);
}

int judge_addition(const Machine &machine, const std::string &name, const box::Unit &unit) {
  if (unit.place.carried && !machine.unit(unit.place.carrier()).installed()) return kRefused;
  // The only board of a server: with it the server is off.
  if (box::board_of(name) && !unit.place.carried && !box::is_high_end(machine.model)) return kRefused;
  const bool in_operation = unit.installed() && !unit.faulted() && !machine.is_detached(name);
  return in_operation ? kRefused : kDone;
}

int judge_removal(const Machine &machine, const std::string &name, const box::Unit &unit) {
  if (!unit.installed()) return kRefused;
  return can_be_spared(machine, name, unit) ? kDone : kIndispensable;
}

}  // namespace

int judgectlfru(const Arguments &arguments, Machine &machine) {
  const std::string name = unit_of(arguments, {"add", "del"});
  if (name.empty()) return kUsage;
  if (!machine.has_unit(name)) return kNoJudgement;
  const box::Unit unit = machine.unit(name);
  return arguments.value('c') == "add" ? judge_addition(machine, name, unit) : judge_removal(machine, name, unit);
}

// A unit that passes is in operation again. A system board is when it is linked.
int testfru(const Arguments &arguments, Machine &machine) {
  const std::string name = unit_of(arguments, {});
  if (name.empty()) return kUsage;
  if (!machine.has_unit(name)) return kTestFailed;
  const box::Unit unit = machine.unit(name);
  if (!unit.installed()) return kRefused;
  if (machine.has_fault(name)) return kTestFailed;
  if (!box::board_of(name) || unit.place.carried) machine.set_detached(name, false);
  return kDone;
}

int detachfru(const Arguments &arguments, Machine &machine) {
  const std::string name = unit_of(arguments, {});
  if (name.empty()) return kUsage;
  if (!machine.has_unit(name)) return kNotDetached;
  const box::Unit unit = machine.unit(name);
  if (!unit.installed()) return kRefused;
  if (machine.is_detached(name)) return kDone;
  if (const auto board = box::board_of(name); board && !unit.place.carried) {
    BoardChange boards(machine.place, machine.model);
    if (!boards.can_be_spared(*board)) return kRefused;
    boards.stop(*board);
    machine.set_detached(name, true);
    boards.save();
    return kDone;
  }
  if (!can_be_spared(machine, name, unit)) return kRefused;
  machine.set_detached(name, true);
  return kDone;
}

int ctlled(const Arguments &arguments, Machine &machine) {
  const std::string name = unit_of(arguments, {"on", "off", "blink", "sync"});
  if (name.empty()) return kUsage;
  if (!machine.has_unit(name)) return kLedFailed;
  std::string light = arguments.value('c');
  if (light == "sync") light = machine.unit(name).wants_service() ? "on" : "off";
  machine.hardware.set_led(name, light);
  return kDone;
}

int setmainteflag(const Arguments &arguments, Machine &machine) {
  const std::string name = unit_of(arguments, {"start", "end"});
  if (name.empty()) return kUsage;
  if (!machine.has_unit(name)) return kFlagRefused;
  const bool start = arguments.value('c') == "start";
  const bool started = machine.inventory.set_flag(name, start);  // of two that start, one comes second
  if (start) return started ? kRefused : kDone;
  return started ? kDone : kFlagRefused;
}

// The line comes from whoever keeps the slot's record: anything but a unit is taken as it is.
int clearpci(const Arguments &arguments, Machine &machine) {
  std::vector<std::string> names = arguments.words;
  if (arguments.has('u')) names.push_back(arguments.value('u'));
  if (names.empty()) return kUsage;
  std::erase_if(names, [](const std::string &name) { return !name.starts_with('/'); });
  std::vector<std::string> slots;
  for (const std::string &name : names) {
    if (machine.has_expansion(name)) continue;
    if (!machine.has_unit(name)) return kNotCleared;
    const box::Unit slot = machine.unit(name);
    if (!slot.installed()) return kRefused;
    if (slot.wants_service()) slots.push_back(name);
  }
  if (!slots.empty()) machine.inventory.change(box::Change::kRepair, slots);
  return kDone;
}

int chkfanspeed(const Arguments &arguments, Machine &machine) {
  const std::string name = unit_of(arguments, {});
  if (name.empty()) return kUsage;
  if (!machine.has_unit(name)) return kNoFanSpeed;
  const box::Unit tray = machine.unit(name);
  if (tray.place.type() != LMAINTE_TYPE_FANTRAY) return kNoFanSpeed;
  if (!tray.installed()) return kRefused;
  return machine.has_fault(name) ? kNoFanSpeed : kDone;
}

}  // namespace programs
