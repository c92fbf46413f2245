// Runs the benchmarks and prints, for each pair of a floor and the library, how many times the floor the library takes:
// the medians of many runs.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "bench/readers.h"

namespace {

class Ratios : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context &) override { return true; }

  void ReportRuns(const std::vector<Run> &runs) override {
    for (const Run &run : runs) {
      if (run.run_type != Run::RT_Aggregate || run.aggregate_name != "median") continue;
      const std::string name = run.run_name.function_name;
      const std::size_t slash = name.rfind('/');
      rows_[name.substr(0, slash)][name.substr(slash + 1)] = run.GetAdjustedRealTime();
    }
  }

  void Finalize() override {
    std::printf("%-44s %12s %12s %8s\n", "", "floor", "library", "ratio");
    for (const auto &[row, times] : rows_) {
      std::printf("%-44s", row.c_str());
      print_time(times, "floor");
      print_time(times, "library");
      // A filter may have left out one of the two.
      if (times.size() == 2) std::printf(" %8.2f", times.at("library") / times.at("floor"));
      std::printf("\n");
    }
  }

 private:
  using Times = std::map<std::string, double>;

  static void print_time(const Times &times, const std::string &half) {
    const auto time = times.find(half);
    if (time == times.end())
      std::printf(" %12s", "-");
    else
      std::printf(" %9.0f ns", time->second);
  }

  std::map<std::string, Times> rows_;
};

}  // namespace

// Many short runs, floor and library in turn: what else the machine does then falls on both. Options given come after
// these and win.
int main(int argc, char **argv) {
  std::string options[] = {"--benchmark_repetitions=15", "--benchmark_min_time=0.02",
                           "--benchmark_enable_random_interleaving=true"};
  std::vector<char *> arguments(argv, argv + argc);
  arguments.insert(arguments.begin() + 1, {options[0].data(), options[1].data(), options[2].data()});
  bench::add_readers();
  int count = static_cast<int>(arguments.size());
  benchmark::Initialize(&count, arguments.data());
  if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) return 1;
  Ratios ratios;
  benchmark::RunSpecifiedBenchmarks(&ratios);
}
