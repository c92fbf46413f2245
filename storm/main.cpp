// storm: kills programs of a box at random, and looks at what must hold behind each of them.
#include <sys/wait.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <random>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "storm/lane.h"

namespace {

namespace fs = std::filesystem;
using storm::Clock;
using storm::Tally;

Tally *tally_to_stop = nullptr;

struct Options {
  unsigned minutes = 0, seconds = 60;
  unsigned lanes = std::max(2U, std::thread::hardware_concurrency());
  std::uint64_t seed = std::random_device{}();
};

// The folder stays where something was found.
[[noreturn]] void run_lane(const fs::path &folder, std::uint64_t seed, Clock::time_point end, Tally &tally) {
  try {
    fs::create_directory(folder);
    if (storm::Lane(folder, seed, tally).go(end)) fs::remove_all(folder);
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

void tell_all(const Tally &tally) {
  if (isatty(STDOUT_FILENO) == 1) std::puts("");
  std::printf("%-18s %10s %10s\n", "", "killed", "ended");
  for (std::size_t i = 0; i < storm::actors().size(); ++i) {
    std::printf("%-18s %10llu %10llu\n", storm::actors()[i].name, static_cast<unsigned long long>(tally.rows[i].killed),
                static_cast<unsigned long long>(tally.rows[i].ended));
  }
  std::printf("%llu killed in %llu rounds, %llu events saved, %llu findings\n",
              static_cast<unsigned long long>(tally.killed()), static_cast<unsigned long long>(tally.rounds),
              static_cast<unsigned long long>(tally.events), static_cast<unsigned long long>(tally.findings));
}

int storm_over(const Options &options) {
  Tally &tally = Tally::shared();
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
  const auto end = Clock::now() + (options.minutes > 0 ? std::chrono::seconds(60 * options.minutes)
                                                       : std::chrono::seconds(options.seconds));
  for (unsigned lane = 0; lane < options.lanes; ++lane) {
    const pid_t child = fork();
    if (child < 0) throw std::system_error(errno, std::generic_category(), "no process can be started");
    if (child == 0) run_lane(folder / std::to_string(lane), options.seed + lane, end, tally);
  }
  watch(options.lanes, tally);
  tell_all(tally);
  if (tally.findings == 0) fs::remove(folder);
  return tally.findings == 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char **argv) {
  try {
    Options options;
    CLI::App app("Kills programs of a box at random, and looks at what must hold behind each of them.");
    app.add_option("--minutes", options.minutes, "How long")->check(CLI::Range(1, 100'000));
    app.add_option("--seconds", options.seconds, "The same in seconds")->check(CLI::Range(1, 100'000));
    app.add_option("--boxes", options.lanes, "How many boxes at the same time")->check(CLI::Range(1, 64));
    app.add_option("--seed", options.seed, "What decides who works when, and who is killed when");
    CLI11_PARSE(app, argc, argv);
    return storm_over(options);
  } catch (const std::exception &error) {
    std::fprintf(stderr, "storm: %s\n", error.what());
    return 1;
  }
}
