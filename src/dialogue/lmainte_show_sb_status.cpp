#include "include/lmainte.h"

#include "src/dialogue/unit_lines.h"
#include "src/frame/trace.h"
#include "trace_events/dialogue.h"

namespace {

using lmainte::Table;
using trace_events::ShowSbStatus;

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::block_of<ShowSbStatus>();

constexpr lmainte::TableErrors kErrors = {
    .file =
        {
            .no_file = ShowSbStatus::kNoFile,
            .pager_failed = ShowSbStatus::kPagerFailed,
            .not_removed = ShowSbStatus::kNotRemoved,
        },
    .no_name = ShowSbStatus::kNoName,
};

bool write_line(Table &table, const lmainte::StatusFormat &format, const uint32_t *unit_id, uint32_t status) {
  return lmainte::write_status(table, format, lmainte::NameForm::kStatusTable, unit_id,
                               lmainte::state_text(status, ""));
}

// Modules that are not installed get no line.
template <size_t Count>
bool write_parts(Table &table, const UnitData (&parts)[Count]) {
  for (const UnitData &part : parts) {
    const uint32_t status = lmainte::whole_status(part);
    if (lmainte::is_installed(status) && !write_line(table, lmainte::kPartLine, part.unit_id, status)) return false;
  }
  return true;
}

bool write_cmu(Table &table, const CmuData &cmu) {
  return write_line(table, lmainte::kStatusLine, cmu.unit_id, lmainte::whole_status(cmu)) &&
         write_parts(table, cmu.cpum) && write_parts(table, cmu.dimm);
}

bool write_iou(Table &table, const IouData &iou) {
  return write_line(table, lmainte::kStatusLine, iou.unit_id, lmainte::whole_status(iou));
}

}  // namespace

int32_t lmainte_show_sb_status(int32_t, uint32_t kind, const SbData *board, const ListLine *lines) {
  const lmainte::Call call(trace, kBlock);
  if (kind > LMAINTE_BOARD_BOTH) {
    call.error(ShowSbStatus::kNoKind, kind);
    return LMAINTE_FAILED;
  }
  if (!lmainte::is_given(call, ShowSbStatus::kNoUnit, board)) return LMAINTE_FAILED;
  if (!lmainte::is_given(call, ShowSbStatus::kNoLines, lines)) return LMAINTE_FAILED;
  return Table(call, kErrors).show(lines, [&](Table &table) {
    if (kind != LMAINTE_BOARD_IOU && !write_cmu(table, board->cmu)) return false;
    return kind == LMAINTE_BOARD_CMU || write_iou(table, board->iou);
  });
}
