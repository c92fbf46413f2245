// What a technician does to units: the verbs of the command line and the steps of a script.
#pragma once

#include <algorithm>
#include <array>
#include <string_view>

#include "host/box/inventory.h"

namespace technician {

struct ChangeRow {
  box::Change change;
  std::string_view verb, step, help;
};

inline constexpr std::array<ChangeRow, 5> kChanges{{
    {box::Change::kPull, "pull", "pull UNIT...", "Take units out, with what sits on them"},
    {box::Change::kInsert, "insert", "insert UNIT...", "Put healthy units in, with what sits on them"},
    {box::Change::kFault, "fault", "fault UNIT...", "Let units be faulted"},
    {box::Change::kDegrade, "degrade", "degrade UNIT...", "Let units be degraded"},
    {box::Change::kRepair, "repair", "repair UNIT...", "Make faulted or degraded units normal"},
}};

constexpr const ChangeRow &row_of(box::Change change) {
  return *std::find_if(kChanges.begin(), kChanges.end(), [&](const ChangeRow &row) { return row.change == change; });
}

}  // namespace technician
