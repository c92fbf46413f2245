// PCI slots, as entries of ten words in a record.
#pragma once

#include "tests/unit/dialogue/show_test.h"

namespace doubles {

struct Slot {
  std::string name;
  uint32_t status, number, power;
};

class SlotsTest : public ShowTest {
 protected:
  static constexpr uint32_t kOn = 0x40000000;

  // Of the ten words six have a meaning.
  void put_slot(uint32_t *words, const Slot &slot) {
    std::fill(words, words + 10, 0xB5B5B5B5);
    uint32_t unit_id[2];
    locate(unit_id, slot.name);
    words[2] = unit_id[0];
    words[3] = unit_id[1];
    words[4] = slot.status;
    words[6] = slot.number;
    words[7] = slot.power;
  }

  static std::vector<ListLine> lines() {
    return {head("PCI slots\n"), head("No. Slot                 Number    Power\n"), foot("Which one?\n"), end_mark()};
  }
};

}  // namespace doubles
