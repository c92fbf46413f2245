#include "storm/crew.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <ctime>
#include <map>
#include <optional>
#include <random>
#include <stdexcept>
#include <system_error>

#include "host/base/child.h"
#include "host/box/box_error.h"
#include "host/box/database.h"
#include "storm/shared.h"

namespace storm {
namespace {

using std::chrono::nanoseconds;

constexpr unsigned kKilledInARound = 300, kAtOnce = 3;

Tally::Row &row_of(Tally &tally, std::size_t duty) {
  return tally.rows[actors().size() + duty];
}

std::size_t any_duty(Random &random) {
  std::vector<unsigned> weights;
  for (const Duty &duty : duties()) weights.push_back(duty.weight);
  return std::discrete_distribution<std::size_t>(weights.begin(), weights.end())(random);
}

void die_with_parent(pid_t parent) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent) _exit(0);
}

// The kernel kills this process then, wherever it is.
void die_in(nanoseconds time) {
  sigevent kills{};
  kills.sigev_notify = SIGEV_SIGNAL;
  kills.sigev_signo = SIGKILL;
  timer_t timer{};
  const itimerspec once{{}, {0, static_cast<long>(time.count()) + 1}};
  if (timer_create(CLOCK_MONOTONIC, &kills, &timer) != 0 || timer_settime(timer, 0, &once, nullptr) != 0)
    throw std::system_error(errno, std::generic_category(), "setting the moment of death");
}

// Whether it can go on.
bool do_once(const Duty &duty, Hand &hand) {
  try {
    return duty.once(hand);
  } catch (const box::BoxError &) {
    return true;  // the box says why not
  }
}

}  // namespace

Crew::Crew(const box::Place &place, const std::vector<std::string> &units, Tally &tally)
    : place_(place), units_(units), tally_(tally), told_(shared<Told>()) {}

Crew::~Crew() {
  if (leader_ < 0) return;
  kill(leader_, SIGKILL);
  waitpid(leader_, nullptr, 0);
}

void Crew::start(std::uint64_t seed) {
  const pid_t lane = getpid();
  leader_ = fork();
  if (leader_ < 0) throw std::system_error(errno, std::generic_category(), "no leader can be started");
  if (leader_ > 0) return;
  die_with_parent(lane);
  lead(seed);
}

void Crew::lead(std::uint64_t seed) {
  Random random(seed);
  std::map<pid_t, std::size_t> at_work;
  for (unsigned started = 0; started < kKilledInARound || !at_work.empty();) {
    const bool is_enough = tally_.stop || told_.events > Told::kMostEvents / 2;
    if (is_enough) started = kKilledInARound;
    if (started < kKilledInARound && at_work.size() < kAtOnce) {
      const std::size_t duty = any_duty(random);
      const std::uint64_t seed_of_worker = random();
      const pid_t leader = getpid(), worker = fork();
      if (worker == 0) work(duty, seed_of_worker, leader);
      if (worker > 0) at_work[worker] = duty;
      ++started;
      continue;
    }
    int status = 0;
    const pid_t ended = waitpid(-1, &status, 0);
    const auto found = at_work.find(ended);
    if (found == at_work.end()) continue;
    take_end(found->second, status);
    at_work.erase(found);
  }
  _exit(0);
}

void Crew::take_end(std::size_t number, int status) {
  if (WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) {
    ++row_of(tally_, number).killed;
    if (saves_events(duties()[number])) ++told_.savers;
  } else if (status != 0) {
    find(number, "ends with the wait status " + std::to_string(status));
  }
}

void Crew::find(std::size_t duty, const std::string &what) {
  ++told_.findings;
  tally_.find(std::string("a worker that ") + duties()[duty].name + ": " + what + "\n      in the box " +
              place_.root().string());
}

// Half of the workers keep the databases open between two steps, the others open them for each.
void Crew::work(std::size_t number, std::uint64_t seed, pid_t leader) {
  die_with_parent(leader);
  const Duty &duty = duties()[number];
  Hand hand{place_, units_, told_, Random(seed)};
  try {
    die_in(nanoseconds(
        std::uniform_int_distribution<nanoseconds::rep>(0, nanoseconds(duty.longest).count())(hand.random)));
    std::optional<box::Database> kept_open;
    if (hand.random() % 2 == 0) kept_open.emplace(place_.hardware());
    bool goes_on = true;
    while (goes_on) {
      goes_on = do_once(duty, hand);
      ++row_of(tally_, number).ended;
    }
    _exit(0);
  } catch (const std::exception &error) {
    find(number, error.what());
  }
  _exit(0);
}

bool Crew::finish(std::set<std::uint32_t> &events, std::size_t &savers) {
  if (leader_ < 0) return true;
  const int status = base::wait_status_of(leader_);
  leader_ = -1;
  if (status != 0)
    throw std::runtime_error("the leader of the workers ends with the wait status " + std::to_string(status));
  const std::uint32_t count = std::min(told_.events.exchange(0), Told::kMostEvents);
  for (std::uint32_t i = 0; i < count; ++i) {
    if (const std::uint32_t head = told_.heads.at(i).exchange(0); head != 0) events.insert(head);
  }
  tally_.events += count;
  savers += told_.savers.exchange(0);
  return told_.findings == 0;
}

}  // namespace storm
