// The frame of all lists and status tables: the caller's head lines, the unit lines, the caller's foot lines.
//
// What differs is the unit lines. They are written by a callable that takes the Table and returns false where a unit
// has no name: the foot lines are skipped then, and nothing is shown.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <type_traits>

#include "include/lmainte.h"
#include "src/dialogue/catalogue.h"
#include "src/dialogue/line_formats.h"
#include "src/dialogue/list_file.h"
#include "src/frame/trace.h"

namespace lmainte {

// A unit's location name without its leading slash, as lists and tables show it.
class UnitName {
 public:
  const char *shown() const { return text_[0] == '/' ? text_ + 1 : text_; }
  const char *whole() const { return text_; }

 private:
  friend class Table;
  char text_[128] = {};
};

// Which of its names a unit is shown by.
enum class NameForm : int32_t { kLocation = 0, kStatusTable = 1 };

// The errors of a table: those of its list file, and that of a unit that has no name.
struct TableErrors {
  ListFileErrors file;
  Error no_name;
};

class Table {
 public:
  Table(const Call &call, const TableErrors &errors)
      : call_(call), no_name_(errors.no_name), file_(call, errors.file) {}

  template <class WriteUnits>
  int32_t show(const ListLine *lines, WriteUnits write_units) {
    return begin(lines) && write_units(*this) && end() ? LMAINTE_OK : LMAINTE_FAILED;
  }

  // Writes one unit line, as the message catalogue words it.
  template <class... Columns>
  void write_unit(const LineFormat<Columns...> &format, std::type_identity_t<Columns>... columns) {
    char text[kLineSize] = {};
    // NOLINTNEXTLINE(clang-diagnostic-format-nonliteral): the format is looked up in the message catalogue
    snprintf(text, sizeof text, translated(format.text), columns...);
    file_.write(text);
  }

  bool find_name(const uint32_t *unit_id, NameForm form, UnitName &name);

 private:
  static constexpr size_t kLineSize = 128;

  // The file with the caller's head lines; and with the foot lines, shown. One copy of each serves all lists.
  bool begin(const ListLine *lines);
  bool end();

  // Writes the lines of this position that come next.
  void write_lines(int32_t position);

  const Call &call_;
  const Error no_name_;
  ListFile file_;
  const ListLine *next_line_ = nullptr;
};

}  // namespace lmainte
