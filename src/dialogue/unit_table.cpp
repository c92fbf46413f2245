#include "src/dialogue/unit_table.h"

#include "include/lmainte_platform.h"

namespace lmainte {

bool Table::begin(const ListLine *lines) {
  next_line_ = lines;
  if (!file_.open()) return false;
  write_lines(LMAINTE_LINE_HEAD);
  return true;
}

bool Table::end() {
  write_lines(LMAINTE_LINE_FOOT);
  return file_.show();
}

void Table::write_lines(int32_t position) {
  for (; next_line_->position == position; ++next_line_) {
    char text[kLineSize] = {};
    format_line(text, *next_line_);
    file_.write(text);
  }
}

bool Table::find_name(const uint32_t *unit_id, NameForm form, UnitName &name) {
  name = {};
  const int32_t result = api_conv_unit_name_get(unit_id, static_cast<int32_t>(form), name.text_, 0, 0);
  name.text_[sizeof name.text_ - 1] = '\0';
  if (result != 0) call_.system_error(no_name_, result);
  return result == 0;
}

}  // namespace lmainte
