// spbox, beside what it cannot do without: `spbox run` beside bubblewrap with the same mounts, the verbs that read or write a
// whole box beside a copy of the same bytes. A process of its own each, with real time and processor time.

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "bench/box_folder.h"
#include "bench/require.h"
#include "bench/table.h"
#include "host/base/child.h"
#include "host/spbox/enclosure.h"
#include "host/spbox/found_program.h"

namespace {

namespace fs = std::filesystem;
using Words = std::vector<std::string>;

struct ToolRow {
  std::string name;
  Words floor, call;
  fs::path made = {};  // by each of them; gone before each run
};

struct Cost {
  double real, processor;  // nanoseconds
};

double nanoseconds(const timeval &time) {
  return 1e9 * static_cast<double>(time.tv_sec) + 1e3 * static_cast<double>(time.tv_usec);
}

[[noreturn]] void become(const Words &words) {
  const int nothing = open("/dev/null", O_RDWR);
  for (const int fd : {STDIN_FILENO, STDOUT_FILENO}) dup2(nothing, fd);
  const base::ArgumentVector arguments(words);
  execvp(arguments.program(), arguments.data());
  _exit(127);
}

Cost cost_of(const Words &words) {
  const auto begin = std::chrono::steady_clock::now();
  const pid_t child = fork();
  if (child == 0) become(words);
  bench::require(child > 0, "start a program");
  int status = 0;
  rusage used{};
  bench::require(wait4(child, &status, 0, &used) == child && status == 0, words.front().c_str());
  const std::chrono::duration<double, std::nano> taken = std::chrono::steady_clock::now() - begin;
  return {taken.count(), nanoseconds(used.ru_utime) + nanoseconds(used.ru_stime)};
}

// The medians of both halves, run in turn.
struct Measured {
  Cost floor, call;
};

Measured measured(const ToolRow &row) {
  constexpr int kRuns = 15;
  std::vector<double> real[2], processor[2];
  for (int run = 0; run < kRuns; ++run) {
    for (const int half : {0, 1}) {
      if (!row.made.empty()) fs::remove_all(row.made);
      const Cost cost = cost_of(half == 0 ? row.floor : row.call);
      real[half].push_back(cost.real);
      processor[half].push_back(cost.processor);
    }
  }
  return {{bench::median(real[0]), bench::median(processor[0])}, {bench::median(real[1]), bench::median(processor[1])}};
}

Words root_of(const fs::path &box, const fs::path &spbox) {
  Words words = spbox::bwrap_arguments({.box = box::Place(box),
                                        .spbox = spbox,
                                        .control_program = spbox::find_part(spbox, "control_program"),
                                        .daemon = spbox::find_part(spbox, "monitor_daemon"),
                                        .program = "/bin/true",
                                        .folder = "/"});
  words.emplace_back("/bin/true");
  return words;
}

std::vector<ToolRow> tool_rows(const fs::path &folder) {
  const fs::path spbox = SPBOX, box = folder / "box", dump = folder / "dump", made = folder / "made";
  cost_of({spbox, "create", "--model", "qe3", box});
  cost_of({spbox, "dump", box, dump});
  return {
      {"spbox run (floor: bwrap)", root_of(box, spbox), {spbox, "run", box, "/bin/true"}},
      {"spbox create (floor: cp of the box)", {"cp", "-r", box, made}, {spbox, "create", "--model", "qe3", made}, made},
      {"spbox load (floor: cp of the box)", {"cp", "-r", box, made}, {spbox, "load", dump, made}, made},
      {"spbox dump (floor: cp of the dump)", {"cp", dump, made}, {spbox, "dump", box, made}, made},
      {"spbox units (floor: cp of the data file)", {"cp", box / "mgb/db/data.mdb", made}, {spbox, "units", box}, made},
  };
}

void print(const char *what, double Cost::*cost, const std::vector<ToolRow> &rows, const std::vector<Measured> &all) {
  bench::print_head(what);
  for (std::size_t i = 0; i < rows.size(); ++i) bench::print_row(rows[i].name, all[i].floor.*cost, all[i].call.*cost);
}

}  // namespace

// Options choose among rows of Google Benchmark, and there are none here.
int main(int argc, char **) try {
  if (argc > 1) return 0;
  const bench::BoxFolder folder;
  const std::vector<ToolRow> rows = tool_rows(folder.path());
  std::vector<Measured> all;
  for (const ToolRow &row : rows) all.push_back(measured(row));
  print("real time", &Cost::real, rows, all);
  print("processor time", &Cost::processor, rows, all);
  return 0;
} catch (const std::exception &error) {
  std::fprintf(stderr, "%s\n", error.what());
  return 1;
}
