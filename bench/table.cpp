#include "bench/table.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <string>

namespace {

constexpr const char *kShown = "shown";

double fastest(const std::vector<double> &times) {
  return *std::ranges::min_element(times);
}

double middle(const std::vector<double> &times) {
  return bench::median(times);
}

class Ratios : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context &) override { return true; }

  void ReportRuns(const std::vector<Run> &runs) override {
    for (const Run &run : runs) {
      if (run.run_type != Run::RT_Aggregate || run.aggregate_name != kShown) continue;
      const std::string name = run.run_name.function_name;
      const std::size_t slash = name.rfind('/');
      rows_[name.substr(0, slash)][name.substr(slash + 1)] = run.GetAdjustedCPUTime();
    }
  }

  void Finalize() override {
    bench::print_head("processor time");
    for (const auto &[row, times] : rows_) {
      std::printf("%-44s", row.c_str());
      print_time(times, "floor");
      print_time(times, "call");
      // A filter may have left out one of the two.
      if (times.size() == 2) std::printf(" %8.2f", times.at("call") / times.at("floor"));
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

// The row outlives the benchmark.
void enter(const bench::Row &row, const char *half, std::function<void()> bench::Row::*call) {
  const auto run = [&row, call](benchmark::State &state) {
    row.prepare();
    for (auto _ : state) (row.*call)();
  };
  benchmark::RegisterBenchmark((row.name + half).c_str(), run)
      ->ComputeStatistics(kShown, row.starts_a_child ? middle : fastest);
}

}  // namespace

// Floor and call run in turn: what else the machine does then falls on both. Options given come after these and win.
int bench::measure(const std::vector<Row> &rows, int argc, char **argv) {
  std::string options[] = {"--benchmark_repetitions=60", "--benchmark_min_time=0.005",
                           "--benchmark_enable_random_interleaving=true"};
  std::vector<char *> arguments(argv, argv + argc);
  arguments.insert(arguments.begin() + 1, {options[0].data(), options[1].data(), options[2].data()});
  for (const Row &row : rows) {
    enter(row, "/floor", &Row::floor);
    enter(row, "/call", &Row::call);
  }
  int count = static_cast<int>(arguments.size());
  benchmark::Initialize(&count, arguments.data());
  if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) return 1;
  Ratios ratios;
  benchmark::RunSpecifiedBenchmarks(&ratios);
  return 0;
}

void bench::print_head(const char *what) {
  std::printf("\n%-44s %12s %12s %8s\n", what, "floor", "call", "ratio");
}

void bench::print_row(const std::string &row, double floor, double call) {
  const bool is_long = call >= 1e7;
  const double unit = is_long ? 1e3 : 1;
  const char *const name = is_long ? "us" : "ns";
  std::printf("%-44s %9.0f %s %9.0f %s %8.2f\n", row.c_str(), floor / unit, name, call / unit, name, call / floor);
}

double bench::median(std::vector<double> times) {
  std::ranges::sort(times);
  return times[times.size() / 2];
}
