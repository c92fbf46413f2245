#include "include/lmainte.h"

#include "src/dialogue/unit_lines.h"
#include "src/frame/trace.h"
#include "trace_events/dialogue.h"

namespace {

using trace_events::ShowIounitList;

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::block_of<ShowIounitList>();

constexpr lmainte::TableErrors kErrors = {
    .file =
        {
            .no_file = ShowIounitList::kNoFile,
            .pager_failed = ShowIounitList::kPagerFailed,
            .not_removed = ShowIounitList::kNotRemoved,
        },
    .no_name = ShowIounitList::kNoName,
};

bool write_iou(lmainte::Table &table, int32_t number, const IouData &iou) {
  const auto condition = static_cast<uint32_t>(iou.parts_status);
  return lmainte::write_numbered(table, number, iou.unit_id, lmainte::state_text(iou.status, condition));
}

bool write_boat(lmainte::Table &table, int32_t number, const IoxBoatData &boat) {
  const auto condition = static_cast<uint32_t>(boat.mainte_status);
  return lmainte::write_numbered(table, number, boat.unit_id, lmainte::state_text(boat.status, condition));
}

}  // namespace

int32_t lmainte_show_iounit_list(int32_t, uint32_t boards, uint32_t expansions, const SbData *sb,
                                 const IoxListData *iox, const ListLine *lines) {
  lmainte::Call call(trace, kBlock);
  if (!lmainte::is_given(call, ShowIounitList::kNoBoards, sb)) return call.returns(LMAINTE_FAILED);
  if (!lmainte::is_given(call, ShowIounitList::kNoExpansions, iox)) return call.returns(LMAINTE_FAILED);
  if (!lmainte::is_given(call, ShowIounitList::kNoLines, lines)) return call.returns(LMAINTE_FAILED);
  return call.returns(lmainte::Table(call, kErrors).show(lines, [&](lmainte::Table &table) {
    int32_t number = 0;
    for (uint32_t i = 0; i < boards; ++i)
      if (!write_iou(table, ++number, sb[i].iou)) return false;
    for (uint32_t i = 0; i < expansions; ++i)
      for (const IoxBoatData &boat : iox[i].boat)
        if (!write_boat(table, ++number, boat)) return false;
    return true;
  }));
}
