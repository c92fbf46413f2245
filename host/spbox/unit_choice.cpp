#include "host/spbox/unit_choice.h"

#include <fnmatch.h>

#include <algorithm>
#include <set>

#include "host/base/listed.h"
#include "host/spbox/condition.h"

namespace spbox {
namespace {

using Names = std::vector<std::string>;

struct StateRow {
  const char *name;
  bool (*is)(const box::Unit &unit, const box::Hardware &hardware);
};
constexpr StateRow kStates[] = {
    {"normal",
     [](const box::Unit &unit, const box::Hardware & /*hardware*/) {
       return unit.unreadable.empty() && unit.installed() && !unit.wants_service();
     }},
    {"degraded", [](const box::Unit &unit, const box::Hardware & /*hardware*/) { return unit.degraded(); }},
    {"faulted", [](const box::Unit &unit, const box::Hardware & /*hardware*/) { return unit.faulted(); }},
    {"out", [](const box::Unit &unit,
               const box::Hardware & /*hardware*/) { return unit.unreadable.empty() && !unit.installed(); }},
    {"unreadable", [](const box::Unit &unit, const box::Hardware & /*hardware*/) { return !unit.unreadable.empty(); }},
    {"unusual", [](const box::Unit &unit, const box::Hardware &hardware) { return !is_usual(unit, hardware); }},
};

std::string in_small_letters(std::string text) {
  std::ranges::transform(text, text.begin(),
                         [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
  return text;
}

// "mem" of "/CMU#0/MEM#03A"
std::string kind_of_location(const std::string &name) {
  const std::string last = name.substr(name.rfind('/') + 1);
  return in_small_letters(last.substr(0, last.find('#')));
}

bool is_pattern(const std::string &name) {
  return name.find_first_of("*?[") != std::string::npos;
}

// Those that match a pattern, as if all of them had been named.
Names matching(const std::string &pattern, const box::Inventory &inventory) {
  Names names;
  const std::string whole = box::location_of(pattern);
  for (const box::UnitPlace &place : inventory.places()) {
    if (fnmatch(whole.c_str(), place.name.c_str(), FNM_PATHNAME) == 0) names.push_back(place.name);
  }
  if (names.empty()) throw box::BoxError("no unit matches " + pattern + ".");
  return names;
}

Names named(const Names &units, const box::Inventory &inventory) {
  Names names;
  for (const std::string &unit : units) {
    if (is_pattern(unit)) {
      std::ranges::copy(matching(unit, inventory), std::back_inserter(names));
    } else {
      names.push_back(unit);
    }
  }
  return inventory.with_carried(names);
}

void check_kind(const std::string &kind, const box::Inventory &inventory) {
  std::set<std::string> kinds;
  for (const box::UnitPlace &place : inventory.places()) kinds.insert(kind_of_location(place.name));
  if (kinds.contains(kind)) return;
  throw box::BoxError("a " + std::string(box::model_name(inventory.model())) + " has no units of the kind " + kind +
                      ". It has " + base::listed(Names(kinds.begin(), kinds.end()), " and ") + ".");
}

// A server without extended system boards is one domain.
std::set<std::uint32_t> boards_of_domain(std::uint32_t domain, std::uint32_t model, const std::vector<box::Xsb> &xsbs) {
  std::set<std::uint32_t> boards;
  for (const box::Xsb &xsb : xsbs) {
    const auto part = box::board_part_in(xsb.name);
    if (part && xsb.unreadable.empty() && xsb.active && xsb.domain == domain) boards.insert(part->board);
  }
  for (std::uint32_t board = 0; xsbs.empty() && domain == 0 && board < box::boards_of(model); ++board) {
    boards.insert(board);
  }
  return boards;
}

}  // namespace

std::vector<std::string> state_names() {
  Names names;
  for (const StateRow &row : kStates) names.emplace_back(row.name);
  return names;
}

std::vector<box::Unit> chosen_units(const UnitChoice &choice, const box::Inventory &inventory,
                                    const box::Hardware &hardware, const std::vector<box::Xsb> &xsbs) {
  std::vector<box::Unit> units =
      choice.units.empty() ? inventory.units() : inventory.units(named(choice.units, inventory));
  if (!choice.kind.empty()) {
    const std::string kind = in_small_letters(choice.kind);
    check_kind(kind, inventory);
    std::erase_if(units, [&](const box::Unit &unit) { return kind_of_location(unit.place.name) != kind; });
  }
  if (!choice.state.empty()) {
    const auto *const row =
        std::ranges::find_if(kStates, [&](const StateRow &known) { return known.name == choice.state; });
    std::erase_if(units, [&](const box::Unit &unit) { return !row->is(unit, hardware); });
  }
  if (choice.domain) {
    const auto boards = boards_of_domain(*choice.domain, inventory.model(), xsbs);
    std::erase_if(units, [&](const box::Unit &unit) {
      const auto board = box::board_of(unit.place.name);
      return !board || !boards.contains(*board);
    });
  }
  return units;
}

}  // namespace spbox
