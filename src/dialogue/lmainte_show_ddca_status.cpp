#include "include/lmainte.h"

#include "src/dialogue/unit_lines.h"
#include "src/frame/trace.h"

namespace {

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::second_block(0x014);

}  // namespace

int32_t lmainte_show_ddca_status(int32_t, const BpUnitData *ddc, const ListLine *lines) {
  const lmainte::Call call(trace, kBlock);
  return lmainte::show_status(call, ddc, lines);
}
