// The units that are marked for replacement: they have a maintenance flag, and stand in the list that the library keeps.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <iterator>

#include "../in_order.h"
#include "lmainte.h"
#include "lmainte_platform.h"
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
      take_back_what_was_left();
      if (!read()) return kFailed;
    }
    for (const lmainte_swap_fru *entry = first(); entry != nullptr; entry = entry->next)
      std::printf("%s is marked for replacement.\n", record_of(*entry).name);
    return kDone;
  }

 private:
  bool read() const {
    const int32_t count = lmainte_init_swap_fru_list(&server_.data());
    if (count < 0) failed("The units that are marked for replacement could not be read", count, kTryAgain);
    return count >= 0;
  }

  void take_back_what_was_left() const {
    const in_order::Undisturbed undisturbed;
    for (const lmainte_swap_fru *entry = first(); entry != nullptr; entry = entry->next) {
      UnitRecord unit = record_of(*entry);
      if (entry->unit_type == LMAINTE_TYPE_FANTRAY)
        lmainte_control_fan(LMAINTE_FAN_LOW, server_.time(LMAINTE_CMD_CTLFAN), nullptr);
      const int32_t led = lmainte_control_led(LMAINTE_LED_OFF, server_.time(LMAINTE_CMD_CTLLED), &unit);
      const int32_t flag = lmainte_set_mainteflag(LMAINTE_FLAG_END, server_.time(LMAINTE_CMD_SETMAINTEFLAG), &unit);
      const bool good = led == LMAINTE_OK && flag == LMAINTE_OK;
      std::printf("It left %s marked, perhaps out of operation. %s.\n", unit.name,
                  good ? "The marks are taken back" : "Its marks could not be taken back: the trace says why");
      if (const Kind *kind = kind_of(entry->unit_type); kind != nullptr)
        std::printf("If it is out of operation, put it into operation with: add_unit %s\n", kind->word.data());
    }
  }

  static const lmainte_swap_fru *first() {
    lmainte_swap_fru *head = nullptr;
    lmainte_get_swap_fru_list(&head);
    return head;
  }

  static const Kind *kind_of(uint32_t type) {
    const Kind *const end = std::end(kKinds);
    const Kind *const kind =
        std::find_if(std::begin(kKinds), end, [&](const Kind &row) { return row.type == static_cast<int32_t>(type); });
    return kind == end ? nullptr : kind;
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
};

}  // namespace procedure
