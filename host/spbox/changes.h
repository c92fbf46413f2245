// What a technician does to units: the verbs of the command line and of his script.
#pragma once

#include <array>
#include <string_view>

#include "host/box/inventory.h"

namespace spbox {

struct ChangeRow {
  box::Change change;
  std::string_view verb, help;
};

inline constexpr std::array<ChangeRow, 5> kChanges{{
    {box::Change::kPull, "pull", "Take units out, with what sits on them"},
    {box::Change::kInsert, "insert", "Put healthy units in, with what sits on them"},
    {box::Change::kFault, "fault", "Let units be faulted"},
    {box::Change::kDegrade, "degrade", "Let units be degraded"},
    {box::Change::kRepair, "repair", "Make faulted or degraded units normal"},
}};

}  // namespace spbox
