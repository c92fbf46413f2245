// One trace record with two values, beside the bare process id and write.

#include <unistd.h>

#include "bench/rows.h"
#include "include/lmainte_platform.h"
#include "src/frame/trace.h"
#include "trace_events/frame.h"

namespace {

void floor() {
  const std::uint32_t words[4] = {static_cast<std::uint32_t>(getpid()), 1, 2, 3};
  mgb_trace_write(14, 256, 15, 0x110C0022, words, 24);
}

void library() {
  static lmainte::Trace trace;
  static constexpr lmainte::Block kBlock = lmainte::block_of<trace_events::Exec>();
  static const lmainte::Call call(trace, kBlock);
  call.point(trace_events::Exec::kProgram, 2, 3);
}

}  // namespace

bench::Row bench::trace_row() {
  return {"write one trace record", floor, library};
}
