// One trace record with two values, beside the bare process id and write.

#include <benchmark/benchmark.h>
#include <unistd.h>

#include "include/lmainte_platform.h"
#include "src/frame/trace.h"
#include "trace_events/frame.h"

namespace {

void floor(benchmark::State &state) {
  for (auto _ : state) {
    const std::uint32_t words[4] = {static_cast<std::uint32_t>(getpid()), 1, 2, 3};
    mgb_trace_write(14, 256, 15, 0x110C0022, words, 24);
  }
}

void library(benchmark::State &state) {
  static lmainte::Trace trace;
  static constexpr lmainte::Block kBlock = lmainte::block_of<trace_events::Exec>();
  const lmainte::Call call(trace, kBlock);
  for (auto _ : state) call.point(trace_events::Exec::kProgram, 2, 3);
}

BENCHMARK(floor)->Name("write one trace record/floor");
BENCHMARK(library)->Name("write one trace record/library");

}  // namespace
