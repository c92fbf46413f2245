// The calls of the library. With --counts, each half of a row runs in a way that callgrind can count: scripts/counts.sh starts
// it so.

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <string_view>

#include "bench/rows.h"
#include "bench/table.h"

// Callgrind counts what runs in this function, which it finds by its name, and writes the count down when it returns.
extern "C" void bench_counted(const std::function<void()> &call, int times);
extern "C" [[gnu::noinline]] void bench_counted(const std::function<void()> &call, int times) {
  for (int i = 0; i < times; ++i) call();
}

namespace {

std::vector<bench::Row> all_rows() {
  std::vector<bench::Row> rows = bench::reader_rows();
  for (const auto row : {bench::list_row, bench::program_row, bench::trace_row}) rows.push_back(row());
  std::ranges::move(bench::swap_list_rows(), std::back_inserter(rows));
  return rows;
}

void count(const std::string &name, const std::function<void()> &call) {
  constexpr int kToWarmUp = 3;
  constexpr int kTimes = 10;
  for (int i = 0; i < kToWarmUp; ++i) call();
  std::printf("%d %s\n", kTimes, name.c_str());
  std::fflush(stdout);  // before a call forks
  bench_counted(call, kTimes);
}

void count_all() {
  count("nothing", [] {});
  for (const bench::Row &row : all_rows()) {
    row.prepare();
    count(row.name + "/floor", row.floor);
    count(row.name + "/call", row.call);
  }
}

}  // namespace

int main(int argc, char **argv) {
  if (argc == 2 && std::string_view(argv[1]) == "--counts") {
    count_all();
    return 0;
  }
  return bench::measure(all_rows(), argc, argv);
}
