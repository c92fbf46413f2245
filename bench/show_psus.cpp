// lmainte_show_psu_list with sixty lines, beside a list file written in one go and a pager that ends at once.

#include <benchmark/benchmark.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "bench/memory_platform.h"
#include "include/lmainte.h"

extern "C" int __wrap_execve(const char *, char *const *, char *const *);
extern "C" int __wrap_execve(const char *, char *const *, char *const *) {
  _exit(0);
}

namespace {

constexpr std::uint32_t kPsus = 60;

void show_all() {
  static const PsuData psus[kPsus] = {};
  static const ListLine lines[] = {{LMAINTE_LINE_END, nullptr, 0, {}}};
  if (lmainte_show_psu_list(0, kPsus, psus, lines) != LMAINTE_OK) std::abort();
}

void floor(benchmark::State &state) {
  static const bench::Requests requests = bench::watch(show_all);
  std::string text;
  for (std::uint32_t i = 0; i < kPsus; ++i) text += " 1. PSU#40          Not installed\n";
  const std::string path = "/tmp/mainte_fru_list." + std::to_string(getpid());
  for (auto _ : state) {
    FILE *file = std::fopen(path.c_str(), "w");
    std::fputs(text.c_str(), file);
    std::fclose(file);
    const pid_t child = fork();
    if (child == 0) _exit(0);
    waitpid(child, nullptr, 0);
    std::remove(path.c_str());
    bench::replay(requests);
  }
}

void library(benchmark::State &state) {
  for (auto _ : state) show_all();
}

BENCHMARK(floor)->Name("show 60 power supplies/floor")->UseRealTime();
BENCHMARK(library)->Name("show 60 power supplies/library")->UseRealTime();

}  // namespace
