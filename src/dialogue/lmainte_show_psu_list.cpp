#include "include/lmainte.h"

#include "src/dialogue/unit_lines.h"
#include "src/frame/trace.h"

namespace {

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::plain_block(0x013);

}  // namespace

int32_t lmainte_show_psu_list(int32_t, uint32_t count, const PsuData *psus, const ListLine *lines) {
  lmainte::Call call(trace, kBlock);
  return call.returns(lmainte::show_list(call, count, psus, lines));
}
