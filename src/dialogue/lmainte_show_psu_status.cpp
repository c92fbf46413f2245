#include "include/lmainte.h"

#include "src/dialogue/unit_lines.h"
#include "src/frame/trace.h"
#include "trace_events/dialogue.h"

namespace {

using trace_events::ShowPsuStatus;

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::block_of<ShowPsuStatus>();

constexpr lmainte::UnitsErrors kErrors = {
    .no_units = ShowPsuStatus::kNoUnit,
    .no_lines = ShowPsuStatus::kNoLines,
    .table =
        {
            .file =
                {
                    .no_file = ShowPsuStatus::kNoFile,
                    .pager_failed = ShowPsuStatus::kPagerFailed,
                    .not_removed = ShowPsuStatus::kNotRemoved,
                },
            .no_name = ShowPsuStatus::kNoName,
        },
};

}  // namespace

int32_t lmainte_show_psu_status(int32_t, const PsuData *psu, const ListLine *lines) {
  const lmainte::Call call(trace, kBlock);
  return lmainte::show_status(call, kErrors, psu, lines);
}
