// The trace point, as LTTng's macros take it: they read this file several times.
#undef LTTNG_UST_TRACEPOINT_PROVIDER
#define LTTNG_UST_TRACEPOINT_PROVIDER lmainte_bench
#undef LTTNG_UST_TRACEPOINT_INCLUDE
#define LTTNG_UST_TRACEPOINT_INCLUDE "bench/lttng_record.h"

#if !defined(LMAINTE_BENCH_LTTNG_RECORD_H) || defined(LTTNG_UST_TRACEPOINT_HEADER_MULTI_READ)
#define LMAINTE_BENCH_LTTNG_RECORD_H

#include <lttng/tracepoint.h>

LTTNG_UST_TRACEPOINT_EVENT(lmainte_bench, record, LTTNG_UST_TP_ARGS(uint32_t, code, const uint32_t *, words),
                           LTTNG_UST_TP_FIELDS(lttng_ust_field_integer_hex(uint32_t, code, code)
                                                   lttng_ust_field_array(uint32_t, words, words, 4)))

#endif

#include <lttng/tracepoint-event.h>
