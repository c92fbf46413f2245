// Runs the benchmarks and prints, for each pair of a floor and the library, how many times the floor the library takes.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>

namespace {

class Ratios : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context &) override {
    std::printf("%-36s %12s %12s %8s\n", "", "floor", "library", "ratio");
    return true;
  }

  void ReportRuns(const std::vector<Run> &runs) override {
    for (const Run &run : runs) {
      if (run.run_type != Run::RT_Aggregate || run.aggregate_name != "median") continue;
      const std::string name = run.run_name.function_name;
      const std::size_t slash = name.rfind('/');
      times_[name.substr(0, slash)][name.substr(slash + 1)] = run.GetAdjustedRealTime();
      print(name.substr(0, slash));
    }
  }

 private:
  void print(const std::string &row) {
    std::map<std::string, double> &times = times_[row];
    if (times.size() < 2) return;
    std::printf("%-36s %9.0f ns %9.0f ns %8.2f\n", row.c_str(), times["floor"], times["library"],
                times["library"] / times["floor"]);
  }

  std::map<std::string, std::map<std::string, double>> times_;
};

}  // namespace

int main(int argc, char **argv) {
  std::string repeat = "--benchmark_repetitions=5";
  std::vector<char *> arguments(argv, argv + argc);
  arguments.push_back(repeat.data());
  int count = static_cast<int>(arguments.size());
  benchmark::Initialize(&count, arguments.data());
  Ratios ratios;
  benchmark::RunSpecifiedBenchmarks(&ratios);
}
