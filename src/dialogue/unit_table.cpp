#include "src/dialogue/unit_table.h"

#include "include/lmainte_platform.h"

namespace lmainte {

const ListLine *Table::write_lines(const ListLine *line, int32_t position) {
  for (; line->position == position; ++line) {
    char text[kLineSize] = {};
    format_line(text, *line);
    file_.write(text);
  }
  return line;
}

bool Table::find_name(const uint32_t *unit_id, NameForm form, UnitName &name) {
  name = {};
  const int32_t result = api_conv_unit_name_get(unit_id, static_cast<int32_t>(form), name.text_, 0, 0);
  name.text_[sizeof name.text_ - 1] = '\0';
  if (result != 0) call_.system_error(no_name_, result);
  return result == 0;
}

}  // namespace lmainte
