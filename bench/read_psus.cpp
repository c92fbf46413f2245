// lmainte_get_psu_data at the full size of the largest model, beside the client calls and trace records that it takes.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "bench/memory_platform.h"
#include "include/lmainte.h"

namespace {

constexpr std::int32_t kPsus = 60;

void read_all() {
  static PsuData psus[kPsus];
  if (lmainte_get_psu_data(-1, kPsus, LMAINTE_MODEL_QE3, psus) != LMAINTE_OK) std::abort();
  benchmark::DoNotOptimize(psus);
}

const bench::Requests &requests() {
  static const bench::Requests asked = [] {
    std::vector<std::uint8_t> current(3360);
    const std::uint32_t installed = LMAINTE_STATUS_INSTALLED;
    for (std::size_t i = 0; i < kPsus; ++i) std::memcpy(&current[i * 56 + 8], &installed, sizeof installed);
    bench::put(LMAINTE_DB_CURRENT, "current_psu_info", current);
    std::vector<std::uint8_t> fru(320);
    fru[79] = 18;
    for (int i = 0; i < kPsus; ++i) {
      char key[32];
      std::snprintf(key, sizeof key, "fru_psu_qe_info_%02d", i);
      bench::put(LMAINTE_DB_FRU, key, fru);
    }
    return bench::watch(read_all);
  }();
  return asked;
}

void floor(benchmark::State &state) {
  const bench::Requests &asked = requests();
  for (auto _ : state) bench::replay(asked);
}

void library(benchmark::State &state) {
  requests();
  for (auto _ : state) read_all();
}

BENCHMARK(floor)->Name("read 60 power supplies/floor");
BENCHMARK(library)->Name("read 60 power supplies/library");

}  // namespace
