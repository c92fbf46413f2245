// Lists and status tables with one line for each record: what the plain kinds of unit have in common.
#pragma once

#include <cstdint>

#include "src/dialogue/unit_table.h"
#include "src/frame/trace.h"

namespace lmainte {

// Writes the line of a unit under its number in a list.
inline bool write_numbered(Table &table, int number, const uint32_t *unit_id, const char *status) {
  UnitName name;
  if (!table.find_name(unit_id, NameForm::kLocation, name)) return false;
  table.write_unit("%2d. %-16s%s\n", number, name.shown(), status);
  return true;
}

// Records an argument that is null as an error.
inline bool is_given(const Call &call, Point event, const void *argument) {
  if (argument == nullptr) call.error(event);
  return argument != nullptr;
}

// A list of every record, and a table of one; `status_of` chooses the word for a record's state.
template <class Unit, class StatusOf>
int32_t show_list(const Call &call, uint32_t count, const Unit *units, const ListLine *lines, StatusOf status_of) {
  if (!is_given(call, 1, units) || !is_given(call, 2, lines)) return LMAINTE_FAILED;
  const TableEvents events = {.file = {.open = 3, .show = 5, .remove = 6}, .name = 4};
  return Table(call, events).show(lines, [&](Table &table) {
    for (uint32_t i = 0; i < count; ++i)
      if (!write_numbered(table, static_cast<int>(i + 1), units[i].unit_id, status_of(units[i]))) return false;
    return true;
  });
}

template <class Unit, class StatusOf>
int32_t show_status(const Call &call, const Unit *unit, const ListLine *lines, StatusOf status_of) {
  if (!is_given(call, 1, unit) || !is_given(call, 2, lines)) return LMAINTE_FAILED;
  const TableEvents events = {.file = {.open = 3, .show = 5, .remove = 6}, .name = 4};
  return Table(call, events).show(lines, [&](Table &table) {
    UnitName name;
    if (!table.find_name(unit->unit_id, NameForm::kLocation, name)) return false;
    table.write_unit("%-14s%s\n", name.shown(), status_of(*unit));
    return true;
  });
}

}  // namespace lmainte
