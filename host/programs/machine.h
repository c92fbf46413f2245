// A box as a control program sees it.
#pragma once

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

#include "host/box/inventory.h"
#include "host/box/programs.h"

namespace programs {

inline bool one_of(std::string_view word, std::initializer_list<std::string_view> words) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

// What the configuration database says of a unit. A location without a record of its own counts as installed.
struct UnitState {
  std::uint32_t status;
  std::int32_t type;    // 0 without a record
  std::string carrier;  // the unit on which it sits, empty where it sits on none

  bool installed() const;
  bool faulted() const;
  bool wants_service() const;  // faulted or degraded
};

struct Machine {
  Machine(const box::Place &where, box::Hardware &state)
      : place(where), inventory(where), model(inventory.model()), hardware(state) {}

  box::Place place;
  box::Inventory inventory;
  std::uint32_t model;
  box::Hardware &hardware;

  bool has_unit(std::string_view name) const;       // a location of the model
  bool has_expansion(std::string_view name) const;  // an I/O expansion unit or a part of one

  // The questions about units throw box::InventoryError where a record that decides them cannot be read.
  UnitState unit(std::string_view name) const;

  // True when a unit of the same type as this one, but not this one, works: installed, not faulted and not detached.
  bool another_works(std::string_view name) const;
  // True when the unit or one that sits on it is faulted.
  bool has_fault(std::string_view name) const;

  // A unit that was taken out of operation stays detached until it is tested or linked.
  bool is_detached(std::string_view name) const;
  void set_detached(std::string_view name, bool detached) const;
};

}  // namespace programs
