#include "include/lmainte.h"

#include "src/dialogue/empty_list.h"
#include "src/frame/trace.h"

namespace {

lmainte::Trace trace;
// The block of both empty lists: nothing tells them apart, and a reader of the trace need not.
constexpr lmainte::Block kBlock = lmainte::plain_block(0x015);

}  // namespace

int32_t lmainte_show_ioxpsu_list(int32_t, const void *, const ListLine *lines) {
  const lmainte::Call call(trace, kBlock);
  lmainte::show_empty_list(call, lines);
  return LMAINTE_OK;
}
