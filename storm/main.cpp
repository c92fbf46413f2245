// storm: kills programs of a box at random, and looks at what must hold behind each of them.
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <limits>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <thread>

#include "host/base/number.h"
#include "storm/lane.h"
#include "storm/shared.h"

namespace {

namespace fs = std::filesystem;
using storm::Clock;
using storm::Tally;

Tally *tally_to_stop = nullptr;

constexpr unsigned kMostLanes = 64;

struct Options {
  std::chrono::seconds time = std::chrono::minutes(1);
  unsigned lanes = std::max(2U, std::thread::hardware_concurrency());
  std::uint64_t seed = std::random_device{}();
  std::uint64_t most_killed = std::numeric_limits<std::uint64_t>::max();
  fs::path total{};  // where it is kept how many were killed in all storms
};

// The folder stays where something was found.
[[noreturn]] void run_lane(const fs::path &folder, unsigned lane, const Options &options, Clock::time_point end,
                           Tally &tally) {
  try {
    fs::create_directory(folder);
    if (storm::Lane(folder, options.seed + lane, tally).go(end, options.most_killed)) fs::remove_all(folder);
  } catch (const std::exception &error) {
    tally.find(std::string("a lane cannot go on: ") + error.what());
  }
  _exit(0);
}

void tell_progress(const Tally &tally) {
  std::printf("\r%llu killed, %llu events saved, %llu findings ", static_cast<unsigned long long>(tally.killed()),
              static_cast<unsigned long long>(tally.events), static_cast<unsigned long long>(tally.findings));
  std::fflush(stdout);
}

// Until all lanes have ended.
void watch(unsigned lanes, Tally &tally) {
  while (lanes > 0) {
    int status = 0;
    if (waitpid(-1, &status, WNOHANG) > 0) {
      if (status != 0) tally.find("a lane crashed");
      --lanes;
      continue;
    }
    if (isatty(STDOUT_FILENO) == 1) tell_progress(tally);
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
  }
}

void tell_row(const char *name, const Tally::Row &row) {
  std::printf("%-18s %10llu %10llu\n", name, static_cast<unsigned long long>(row.killed),
              static_cast<unsigned long long>(row.ended));
}

void tell_all(const Tally &tally) {
  if (isatty(STDOUT_FILENO) == 1) std::puts("");
  const Tally::Row *row = tally.rows;
  std::printf("%-18s %10s %10s\n", "program", "killed", "ended");
  for (const storm::Actor &actor : storm::actors()) tell_row(actor.name, *row++);
  std::printf("%-18s %10s %10s\n", "worker", "killed", "works done");
  for (const storm::Duty &duty : storm::duties()) tell_row(duty.name, *row++);
  std::printf("%llu killed in %llu rounds, %llu events saved, %llu findings\n",
              static_cast<unsigned long long>(tally.killed()), static_cast<unsigned long long>(tally.rounds),
              static_cast<unsigned long long>(tally.events), static_cast<unsigned long long>(tally.findings));
}

void add_to_total(const fs::path &file, std::uint64_t killed) {
  std::uint64_t total = 0;
  std::ifstream(file) >> total;
  total += killed;
  std::ofstream(file) << total << "\n";
  std::printf("%llu killed in all storms of this tree\n", static_cast<unsigned long long>(total));
}

int storm_over(const Options &options) {
  auto &tally = storm::shared<Tally>();
  tally_to_stop = &tally;
  std::signal(SIGINT, [](int) { tally_to_stop->stop = true; });
  std::signal(SIGTERM, [](int) { tally_to_stop->stop = true; });
  const char *const path = std::getenv("PATH");  // NOLINT(concurrency-mt-unsafe): one thread
  setenv("PATH", (std::string(PROCEDURES ":") + (path == nullptr ? "" : path)).c_str(),
         1);  // NOLINT(concurrency-mt-unsafe)

  std::string pattern = fs::temp_directory_path() / "spbox-storm.XXXXXX";
  if (mkdtemp(pattern.data()) == nullptr) throw std::system_error(errno, std::generic_category(), pattern);
  const fs::path folder(pattern);
  std::printf("seed %llu, %u boxes in %s\n", static_cast<unsigned long long>(options.seed), options.lanes,
              folder.c_str());
  std::fflush(stdout);
  const auto end = Clock::now() + options.time;
  for (unsigned lane = 0; lane < options.lanes; ++lane) {
    const pid_t child = fork();
    if (child < 0) throw std::system_error(errno, std::generic_category(), "no process can be started");
    if (child == 0) run_lane(folder / std::to_string(lane), lane, options, end, tally);
  }
  watch(options.lanes, tally);
  tell_all(tally);
  if (!options.total.empty()) add_to_total(options.total, tally.killed());
  if (tally.findings == 0) fs::remove(folder);
  return tally.findings == 0 ? 0 : 1;
}

// Each option has a number behind it, but the one for a file.
Options read_options(int argc, char **argv) {
  Options options;
  for (int i = 1; i < argc; i += 2) {
    const std::string_view name = argv[i];
    if (name == "--total" && i + 1 < argc) {
      options.total = argv[i + 1];
      continue;
    }
    const auto number = i + 1 < argc ? base::number_in<std::uint64_t>(argv[i + 1]) : std::nullopt;
    if (!number) throw std::runtime_error(std::string(name) + " takes a number");
    if (name == "--minutes" && *number > 0)
      options.time = std::chrono::minutes(*number);
    else if (name == "--seconds" && *number > 0)
      options.time = std::chrono::seconds(*number);
    else if (name == "--boxes" && *number > 0 && *number <= kMostLanes)
      options.lanes = static_cast<unsigned>(*number);
    else if (name == "--kills" && *number > 0)
      options.most_killed = *number;
    else if (name == "--seed")
      options.seed = *number;
    else
      throw std::runtime_error("what is " + std::string(name) + " " + argv[i + 1] + "?");
  }
  return options;
}

}  // namespace

int main(int argc, char **argv) {
  try {
    return storm_over(read_options(argc, argv));
  } catch (const std::exception &error) {
    std::fprintf(stderr, "storm: %s\n", error.what());
    return 1;
  }
}
