// A box as a control program sees it.
#pragma once

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

#include "host/box/hardware.h"
#include "host/box/inventory.h"

namespace programs {

inline bool one_of(std::string_view word, std::initializer_list<std::string_view> words) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

struct Machine {
  Machine(const box::Place &where, box::Hardware &state)
      : place(where), inventory(where), model(inventory.model()), hardware(state) {}

  box::Place place;
  box::Inventory inventory;
  std::uint32_t model;
  box::Hardware &hardware;

  bool has_unit(std::string_view name) const;       // a location of the model
  bool has_expansion(std::string_view name) const;  // an I/O expansion unit or a part of one

  // The questions about units throw box::BoxError where a record that decides them cannot be read.
  // A location without a record of its own counts as installed, and has no type.
  box::Unit unit(std::string_view name) const;

  // True when a unit of the same type as this one, but not this one, works: installed, not faulted and not detached.
  bool another_works(std::string_view name) const;
  // True when the unit or one that sits on it is faulted.
  bool has_fault(std::string_view name) const;

  // A unit that was taken out of operation stays detached until it is tested or linked.
  bool is_detached(std::string_view name) const;
  void set_detached(std::string_view name, bool detached) const;
};

}  // namespace programs
