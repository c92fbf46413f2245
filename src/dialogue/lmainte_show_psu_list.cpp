#include "include/lmainte.h"

#include "src/dialogue/status_text.h"
#include "src/dialogue/unit_lines.h"
#include "src/frame/trace.h"

namespace {

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::plain_block(0x013);

const char *status_of(const PsuData &psu) {
  return lmainte::flagged_status_text(psu.status, psu.mainte_status, psu.flags);
}

}  // namespace

int32_t lmainte_show_psu_list(int32_t, uint32_t count, const PsuData *psus, const ListLine *lines) {
  lmainte::Call call(trace, kBlock);
  return call.returns(lmainte::show_list(call, count, psus, lines, status_of));
}
