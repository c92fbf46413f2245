#include "include/lmainte.h"

#include "src/dialogue/list_file.h"
#include "src/frame/trace.h"

namespace {

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::second_block(0x017);

constexpr size_t kMenuLineSize = 1024;

}  // namespace

int32_t lmainte_show_menu(const ListLine *lines) {
  const lmainte::Call call(trace, kBlock);
  if (lines == nullptr) {
    call.error(1);
    return LMAINTE_FAILED;
  }
  const lmainte::ListFileEvents events = {.open = 2, .show = 3, .remove = 4};
  lmainte::ListFile file(call, events);
  if (!file.open()) return LMAINTE_FAILED;
  for (const ListLine *line = lines; line->position != LMAINTE_LINE_END; ++line) {
    char text[kMenuLineSize] = {};
    lmainte::format_line(text, *line);
    file.write(text);
  }
  return file.show() ? LMAINTE_OK : LMAINTE_FAILED;
}
