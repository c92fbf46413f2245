#include "include/lmainte.h"

#include "src/dialogue/status_text.h"
#include "src/dialogue/unit_lines.h"
#include "src/frame/trace.h"

namespace {

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::plain_block(0x022);

const char *status_of(const FantrayData &tray) {
  return lmainte::flagged_status_text(tray.status, tray.mainte_status, tray.flags);
}

}  // namespace

int32_t lmainte_show_fantray_status(int32_t, const FantrayData *tray, const ListLine *lines) {
  const lmainte::Call call(trace, kBlock);
  return lmainte::show_status(call, tray, lines, status_of);
}
