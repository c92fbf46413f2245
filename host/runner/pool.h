// Programs side by side, so many at a time: each a process of its own, so that none harms another.
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace runner {

struct Job {
  std::string name;
  std::vector<std::string> command;
};

struct JobEnding {
  int status = 0;            // as a shell tells it
  bool hung = false;         // It was ended because its time was over.
  bool interrupted = false;  // It was ended, or never begun, because all were.
  std::chrono::milliseconds time{0};
  std::string told;    // what it wrote to descriptor 3
  std::string output;  // its standard output and standard error; where it could not be started, why
};

// Called as it happens, by the number of the job.
struct Onlooker {
  std::function<void(std::size_t job)> begins;
  std::function<void(std::size_t job, const JobEnding &ending)> ends;
  std::function<void()> second_passes;
};

struct PoolRules {
  std::size_t width;                // so many at a time
  std::chrono::milliseconds limit;  // One that is not done then gets SIGTERM, and a while later SIGKILL.
  int alarm;                        // As soon as this descriptor becomes readable, all get it, and no other is begun.
  // A play that is ended gives its command three seconds, and removes its box.
  std::chrono::milliseconds to_clear_up{15'000};
  // None is begun any more after this moment; nothing: each is begun.
  std::optional<std::chrono::steady_clock::time_point> last_begin{};
};

// Returns when each job was told to have ended: whether one had to be killed, which did not clear up behind itself.
bool run_side_by_side(const std::vector<Job> &jobs, const PoolRules &rules, const Onlooker &onlooker);

}  // namespace runner
