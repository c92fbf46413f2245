#include "include/lmainte.h"

#include "src/dialogue/status_text.h"
#include "src/dialogue/unit_lines.h"
#include "src/frame/trace.h"

namespace {

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::plain_block(0x023);

const char *status_of(const PsuData &psu) {
  return lmainte::flagged_status_text(psu.status, psu.mainte_status, psu.flags);
}

}  // namespace

int32_t lmainte_show_psu_status(int32_t, const PsuData *psu, const ListLine *lines) {
  const lmainte::Call call(trace, kBlock);
  return lmainte::show_status(call, psu, lines, status_of);
}
