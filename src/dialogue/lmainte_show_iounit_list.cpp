#include "include/lmainte.h"

#include "src/dialogue/status_text.h"
#include "src/dialogue/unit_lines.h"
#include "src/frame/trace.h"

namespace {

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::plain_block(0x019);

constexpr uint32_t kBoatsOfAUnit = 2;

const char *status_of(int32_t status, int32_t condition) {
  return lmainte::flagged_status_text(status, condition, 0);
}

}  // namespace

int32_t lmainte_show_iounit_list(int32_t, uint32_t boards, uint32_t expansions, const SbData *sb,
                                 const IoxListData *iox, const ListLine *lines) {
  lmainte::Call call(trace, kBlock);
  if (!lmainte::is_given(call, 1, sb) || !lmainte::is_given(call, 2, iox) || !lmainte::is_given(call, 3, lines))
    return call.returns(LMAINTE_FAILED);
  const lmainte::TableEvents events = {.file = {.open = 4, .show = 6, .remove = 7}, .name = 5};
  return call.returns(lmainte::Table(call, events).show(lines, [&](lmainte::Table &table) {
    int number = 0;
    for (uint32_t i = 0; i < boards; ++i) {
      const IouData &iou = sb[i].iou;
      if (!lmainte::write_numbered(table, ++number, iou.unit_id, status_of(iou.status, iou.parts_status))) return false;
    }
    for (uint32_t i = 0; i < expansions * kBoatsOfAUnit; ++i) {
      const IoxBoatData &boat = iox[i / kBoatsOfAUnit].boat[i % kBoatsOfAUnit];
      if (!lmainte::write_numbered(table, ++number, boat.unit_id, status_of(boat.status, boat.mainte_status)))
        return false;
    }
    return true;
  }));
}
