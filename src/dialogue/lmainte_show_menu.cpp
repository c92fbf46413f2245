#include "include/lmainte.h"

#include "src/dialogue/list_file.h"
#include "src/frame/trace.h"
#include "trace_events/dialogue.h"

namespace {

using trace_events::ShowMenu;

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::block_of<ShowMenu>();

constexpr lmainte::ListFileErrors kErrors = {
    .no_file = ShowMenu::kNoFile,
    .pager_failed = ShowMenu::kPagerFailed,
    .not_removed = ShowMenu::kNotRemoved,
};

constexpr size_t kMenuLineSize = 1024;

}  // namespace

int32_t lmainte_show_menu(const ListLine *lines) {
  const lmainte::Call call(trace, kBlock);
  if (lines == nullptr) {
    call.error(ShowMenu::kNoLines);
    return LMAINTE_FAILED;
  }
  lmainte::ListFile file(call, kErrors);
  if (!file.open()) return LMAINTE_FAILED;
  for (const ListLine *line = lines; line->position != LMAINTE_LINE_END; ++line) {
    char text[kMenuLineSize] = {};
    lmainte::format_line(text, *line);
    file.write(text);
  }
  return file.show() ? LMAINTE_OK : LMAINTE_FAILED;
}
