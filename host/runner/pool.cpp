#include "host/runner/pool.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <list>
#include <system_error>

#include "host/base/told.h"
#include "host/terminal/background_program.h"

namespace runner {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr milliseconds kSecond{1000};

milliseconds since(Clock::time_point begin) {
  return std::chrono::duration_cast<milliseconds>(Clock::now() - begin);
}

struct Worker {
  std::size_t job;
  Clock::time_point begin, deadline;
  terminal::BackgroundProgram program;
  bool is_told_to_end = false, has_closed = false;
  JobEnding ending;

  void tell_to_end(milliseconds to_clear_up) {
    if (is_told_to_end) return;
    is_told_to_end = true;
    deadline = Clock::now() + to_clear_up;
    kill(program.pid(), SIGTERM);
  }

  // What it tells has to be taken from it: it waits otherwise.
  void listen() {
    std::array<char, 4096> bytes{};
    while (!has_closed) {
      const auto length = read(program.told(), bytes.data(), bytes.size());
      if (length < 0) return;
      ending.told.append(bytes.data(), static_cast<std::size_t>(length));
      has_closed = length == 0;
    }
  }
};

class Pool {
 public:
  Pool(const std::vector<Job> &jobs, const PoolRules &rules, const Onlooker &onlooker)
      : jobs_(jobs), rules_(rules), onlooker_(onlooker) {}

  bool has_killed() const { return has_killed_; }

  void run() {
    while (next_ < jobs_.size() || !workers_.empty()) {
      while (next_ < jobs_.size() && (was_interrupted_ || workers_.size() < rules_.width)) begin(next_++);
      if (workers_.empty()) continue;
      wait();
      for (auto worker = workers_.begin(); worker != workers_.end();) {
        worker->listen();
        worker = is_over(*worker) ? workers_.erase(worker) : std::next(worker);
      }
    }
  }

 private:
  void begin(std::size_t job) {
    JobEnding ending;
    ending.interrupted = was_interrupted_ || (rules_.last_begin && Clock::now() > *rules_.last_begin);
    if (ending.interrupted) return onlooker_.ends(job, ending);
    onlooker_.begins(job);
    try {
      const auto now = Clock::now();
      workers_.push_back(
          {job, now, now + rules_.limit, terminal::BackgroundProgram(jobs_[job].command), false, false, {}});
      const int told = workers_.back().program.told();
      fcntl(told, F_SETFL, fcntl(told, F_GETFL) | O_NONBLOCK);
    } catch (const std::exception &wrong) {
      constexpr int kCannotBeStarted = 126;
      ending.status = kCannotBeStarted;
      ending.output = base::told(wrong) + "\n";
      onlooker_.ends(job, ending);
    }
  }

  // Until something happens, or a second is over.
  void wait() {
    std::vector<pollfd> watched{{was_interrupted_ ? -1 : rules_.alarm, POLLIN, 0}};
    auto until = next_second_;
    for (const Worker &worker : workers_) {
      watched.push_back({worker.program.end(), POLLIN, 0});
      watched.push_back({worker.has_closed ? -1 : worker.program.told(), POLLIN, 0});
      until = std::min(until, worker.deadline);
    }
    const auto left = std::chrono::ceil<milliseconds>(until - Clock::now()).count();
    poll(watched.data(), watched.size(), static_cast<int>(std::max<milliseconds::rep>(left, 0)));
    if (watched[0].revents != 0) interrupt();
    if (Clock::now() < next_second_) return;
    next_second_ = Clock::now() + kSecond;
    onlooker_.second_passes();
  }

  void interrupt() {
    was_interrupted_ = true;
    for (Worker &worker : workers_) {
      worker.ending.interrupted = !worker.is_told_to_end;
      worker.tell_to_end(rules_.to_clear_up);
    }
  }

  bool is_over(Worker &worker) {
    auto status = worker.program.wait(milliseconds{0});
    if (!status && Clock::now() >= worker.deadline) {
      if (!worker.is_told_to_end) {
        worker.ending.hung = true;
        worker.tell_to_end(rules_.to_clear_up);
        return false;
      }
      worker.program.kill();
      has_killed_ = true;
      status = worker.program.wait();
    }
    if (!status) return false;
    worker.listen();
    worker.ending.status = *status;
    worker.ending.time = since(worker.begin);
    worker.ending.output = worker.program.output();
    onlooker_.ends(worker.job, worker.ending);
    return true;
  }

  const std::vector<Job> &jobs_;
  const PoolRules &rules_;
  const Onlooker &onlooker_;
  std::size_t next_ = 0;
  std::list<Worker> workers_;
  bool was_interrupted_ = false, has_killed_ = false;
  Clock::time_point next_second_ = Clock::now() + kSecond;
};

}  // namespace

bool run_side_by_side(const std::vector<Job> &jobs, const PoolRules &rules, const Onlooker &onlooker) {
  Pool pool(jobs, rules, onlooker);
  pool.run();
  return pool.has_killed();
}

}  // namespace runner
