#include "include/lmainte.h"

#include "src/dialogue/unit_lines.h"
#include "src/frame/trace.h"
#include "trace_events/dialogue.h"

namespace {

using trace_events::ShowDdcaStatus;

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::block_of<ShowDdcaStatus>();

constexpr lmainte::UnitsErrors kErrors = {
    .no_units = ShowDdcaStatus::kNoUnit,
    .no_lines = ShowDdcaStatus::kNoLines,
    .table =
        {
            .file =
                {
                    .no_file = ShowDdcaStatus::kNoFile,
                    .pager_failed = ShowDdcaStatus::kPagerFailed,
                    .not_removed = ShowDdcaStatus::kNotRemoved,
                },
            .no_name = ShowDdcaStatus::kNoName,
        },
};

}  // namespace

int32_t lmainte_show_ddca_status(int32_t, const BpUnitData *ddc, const ListLine *lines) {
  const lmainte::Call call(trace, kBlock);
  return lmainte::show_status(call, kErrors, ddc, lines);
}
