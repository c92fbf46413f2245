#include "bench/lttng.h"

#ifdef BENCH_HAS_LTTNG

#define LTTNG_UST_TRACEPOINT_CREATE_PROBES
#define LTTNG_UST_TRACEPOINT_DEFINE
#include "bench/lttng_record.h"

bool bench::lttng_records() {
  return lttng_ust_tracepoint_enabled(lmainte_bench, record) != 0;
}

void bench::append_to_lttng(std::uint32_t code, const std::uint32_t (&words)[4]) {
  lttng_ust_tracepoint(lmainte_bench, record, code, words);
}

#else

bool bench::lttng_records() {
  return false;
}

void bench::append_to_lttng(std::uint32_t, const std::uint32_t (&)[4]) {}

#endif
