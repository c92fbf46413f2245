// Lists and status tables with one line for each record: what the plain kinds of unit have in common.
#pragma once

#include <cstdint>

#include "src/dialogue/status_text.h"
#include "src/dialogue/unit_table.h"
#include "src/frame/trace.h"

namespace lmainte {

// Writes the line of a unit under its number in a list.
inline bool write_numbered(Table &table, int32_t number, const uint32_t *unit_id, const char *state) {
  UnitName name;
  if (!table.find_name(unit_id, NameForm::kLocation, name)) return false;
  table.write_unit(kListLine, number, name.shown(), state);
  return true;
}

// Writes the line of a unit in a status table.
inline bool write_status(Table &table, const StatusFormat &format, NameForm form, const uint32_t *unit_id,
                         const char *state) {
  UnitName name;
  if (!table.find_name(unit_id, form, name)) return false;
  table.write_unit(format, name.shown(), state);
  return true;
}

// The errors of a list or a status table of one kind of unit.
struct UnitsErrors {
  Error no_units, no_lines;
  TableErrors table;
};

// A list of every record, and a status table of one.
template <class Unit>
int32_t show_list(const Call &call, const UnitsErrors &errors, uint32_t count, const Unit *units,
                  const ListLine *lines) {
  if (!is_given(call, errors.no_units, units)) return LMAINTE_FAILED;
  if (!is_given(call, errors.no_lines, lines)) return LMAINTE_FAILED;
  return Table(call, errors.table).show(lines, [&](Table &table) {
    int32_t number = 0;
    for (uint32_t i = 0; i < count; ++i)
      if (!write_numbered(table, ++number, units[i].unit_id, state_text(units[i]))) return false;
    return true;
  });
}

template <class Unit>
int32_t show_status(const Call &call, const UnitsErrors &errors, const Unit *unit, const ListLine *lines) {
  if (!is_given(call, errors.no_units, unit)) return LMAINTE_FAILED;
  if (!is_given(call, errors.no_lines, lines)) return LMAINTE_FAILED;
  return Table(call, errors.table).show(lines, [&](Table &table) {
    return write_status(table, kStatusLine, NameForm::kLocation, unit->unit_id, state_text(*unit));
  });
}

}  // namespace lmainte
