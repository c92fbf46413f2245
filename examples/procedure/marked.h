// The units that are marked for replacement: they have a maintenance flag, and stand in the list that the library keeps.
#pragma once

#include <cstdint>
#include <string>

#include "../graceful.h"
#include "advice.h"
#include "lmainte.h"
#include "lmainte_platform.h"
#include "marks.h"
#include "results.h"
#include "telling.h"
#include "unit_kinds.h"

namespace procedure {

// The list, from the inventory as it is now. The library keeps one for the whole process.
class Marked {
 public:
  explicit Marked(const Server &server) : server_(server) {}
  ~Marked() { lmainte_free_swap_fru_list(); }
  Marked(const Marked &) = delete;
  Marked &operator=(const Marked &) = delete;

  // Reads the list. What a procedure that died has left is taken back, as nobody else will do it; the rest is named.
  Outcome begin(bool has_died) {
    if (!read()) return kFailed;
    if (has_died) {
      has_all_back_ = take_back_what_was_left();
      if (!read()) return kFailed;
    }
    for (const lmainte_swap_fru *entry = first(); entry != nullptr; entry = entry->next)
      tell("%s is marked for replacement.", record_of(*entry).name);
    return kDone;
  }

  // False where something that was left could not be taken back.
  bool has_all_back() const { return has_all_back_; }

 private:
  bool read() const {
    const int32_t count = lmainte_init_swap_fru_list(&server_.data());
    if (count < 0) failed("The units that are marked for replacement could not be read", count, kTryAgain);
    return count >= 0;
  }

  bool take_back_what_was_left() const {
    bool all = true;
    for (const lmainte_swap_fru *entry = first(); entry != nullptr; entry = entry->next) {
      const UnitRecord unit = record_of(*entry);
      const Kind *const kind = find_kind([&](const Kind &row) { return row.type == unit.type; });
      Marks marks(server_, unit);
      marks.take_over();
      const bool is_back = marks.take_back();
      if (is_back) tell("It left %s marked. The marks were taken back.", unit.name);
      all = all && is_back;
      if (kind != nullptr)
        advise(text_of("If %s is out of operation, put it back into operation with:", unit.name),
               procedure_command("add_unit", kind->word));
    }
    return all;
  }

  static const lmainte_swap_fru *first() {
    lmainte_swap_fru *head = nullptr;
    lmainte_get_swap_fru_list(&head);
    return head;
  }

  static UnitRecord record_of(const lmainte_swap_fru &entry) {
    UnitRecord unit = {static_cast<int32_t>(entry.unit_type),
                       static_cast<int32_t>(entry.unit_no),
                       0,
                       {entry.ident[0], entry.ident[1]},
                       {}};
    api_conv_unit_name_get(unit.ident, 0, unit.name, 0, 0);
    return unit;
  }

  const Server &server_;
  bool has_all_back_ = true;
};

}  // namespace procedure
