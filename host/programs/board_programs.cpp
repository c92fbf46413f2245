// Programs that concern a system board: a CPU/memory unit and the I/O unit of the same number.
#include <algorithm>

#include "host/base/number.h"
#include "host/box/partitions.h"
#include "host/programs/boards.h"
#include "host/programs/control_programs.h"

namespace programs {
namespace {

// The two units of a board. The models with one board have no number for it.
std::vector<std::string> units_of(const Machine &machine, std::uint32_t board) {
  std::vector<std::string> names;
  for (const box::UnitPlace &at : machine.inventory.places()) {
    if (!at.carried && box::board_of(at.name) == board) names.push_back(at.name);
  }
  return names;
}

bool is_installed(const Machine &machine, std::uint32_t board) {
  return std::ranges::all_of(units_of(machine, board),
                             [&](const std::string &name) { return machine.unit(name).installed(); });
}

bool has_fault(const Machine &machine, std::uint32_t board) {
  return std::ranges::any_of(units_of(machine, board),
                             [&](const std::string &name) { return machine.has_fault(name); });
}

// A board runs again when both its units are there, linked, and not detached.
bool can_start(const Machine &machine, std::uint32_t board) {
  return std::ranges::all_of(units_of(machine, board), [&](const std::string &name) {
    return machine.unit(name).installed() && !machine.hardware.is_linked_down(name) && !machine.is_detached(name);
  });
}

int link_up(Machine &machine, const std::string &name, std::uint32_t board) {
  if (machine.has_fault(name)) return kNotLinked;
  BoardChange boards(machine.place, machine.model);
  machine.hardware.set_linked(name, true);
  machine.set_detached(name, false);
  if (can_start(machine, board)) boards.start(board);
  boards.save();
  return kDone;
}

int link_down(Machine &machine, const std::string &name, std::uint32_t board) {
  if (Boards(machine.place, machine.model).is_active(board)) return kRefused;
  machine.hardware.set_linked(name, false);
  return kDone;
}

int refusal_to_delete(Boards &boards, const box::BoardPart &part) {
  if (!boards.can_be_divided() || part.board >= boards.count()) return kNoBoard;
  if (part.part >= boards.parts(part.board)) return kNoPart;
  return boards.is_active(part.board, part.part) ? kPartActive : kDone;
}

}  // namespace

int setupfru(const Arguments &arguments, Machine &machine) {
  const std::string mirror = arguments.value('m');
  const std::string division = arguments.value('x');
  if (!one_of(mirror, {"y", "n"}) || !one_of(division, {"1", "4"}) || (mirror == "y" && division == "4")) return kUsage;
  if (arguments.words.size() != 2 || arguments.words[0] != "sb") return kUsage;
  const auto board = base::number_in<std::uint32_t>(arguments.words[1]);
  if (!board || *board >= box::boards_of(machine.model)) return kNoDivision;
  if (!is_installed(machine, *board)) return kBoardMissing;
  BoardChange boards(machine.place, machine.model);
  if (!boards.can_be_divided()) return kNoDivision;
  if (boards.is_active(*board)) return kBoardActive;
  boards.divide(*board, division == "1" ? 1 : 4);
  machine.hardware.set_mirrored(*board, mirror == "y");
  boards.save();
  return kDone;
}

// All of the extended system boards are given up or, where one cannot be, none.
int deleteboard(const Arguments &arguments, Machine &machine) {
  if (arguments.value('q') != "y" || arguments.value('c') != "unassign" || arguments.words.empty()) return kUsage;
  std::vector<box::BoardPart> parts;
  for (const std::string &word : arguments.words) {
    const auto part = box::board_part_in(word);
    if (!part) return kUsage;
    parts.push_back(*part);
  }
  BoardChange boards(machine.place, machine.model);
  for (const box::BoardPart &part : parts) {
    if (const int status = refusal_to_delete(boards, part); status != kDone) return status;
  }
  for (const box::BoardPart &part : parts) boards.assign_to_none(part.board, part.part);
  boards.save();
  return kDone;
}

// A board on which a domain runs cannot be tested.
int testsb(const Arguments &arguments, Machine &machine) {
  if (!arguments.words.empty() || !arguments.only("qy")) return kUsage;
  const auto board = base::number_in<std::uint32_t>(arguments.value('y'));
  if (!board || *board >= box::boards_of(machine.model)) return kTestFailed;
  if (!is_installed(machine, *board) || Boards(machine.place, machine.model).is_active(*board)) return kRefused;
  return has_fault(machine, *board) ? kTestFailed : kDone;
}

int linkboard(const Arguments &arguments, Machine &machine) {
  const std::string name = arguments.value('u');
  const std::string direction = arguments.value('c');
  if (!arguments.words.empty() || name.empty() || !one_of(direction, {"up", "down"})) return kUsage;
  const auto board = box::board_of(name);
  if (!board || !machine.has_unit(name) || machine.unit(name).place.carried) return kNotLinked;
  if (!machine.unit(name).installed()) return kRefused;
  return direction == "up" ? link_up(machine, name, *board) : link_down(machine, name, *board);
}

}  // namespace programs
