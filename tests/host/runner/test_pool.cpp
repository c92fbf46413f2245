#include <gtest/gtest.h>

#include <algorithm>

#include "host/base/pipe.h"
#include "host/runner/pool.h"

namespace {

using namespace std::chrono_literals;
using runner::Job;
using runner::JobEnding;

// Runs jobs that are lines of a shell.
class PoolTest : public testing::Test {
 protected:
  std::vector<JobEnding> run(const std::vector<std::string> &lines, std::size_t width,
                             std::chrono::milliseconds limit = 60s) {
    std::vector<Job> jobs;
    for (const auto &line : lines) jobs.push_back({line, {"sh", "-c", line}});
    return run_jobs(jobs, width, limit);
  }

  std::vector<JobEnding> run_jobs(const std::vector<Job> &jobs, std::size_t width, std::chrono::milliseconds limit) {
    std::vector<JobEnding> endings(jobs.size());
    std::size_t at_work = 0;
    has_killed_ = run_side_by_side(jobs, {width, limit, alarm_.out.get(), 200ms},
                                   {[&](std::size_t job) {
                                      most_at_work_ = std::max(most_at_work_, ++at_work);
                                      if (on_begin_) on_begin_(job);
                                    },
                                    [&](std::size_t job, const JobEnding &ending) {
                                      if (!ending.interrupted || ending.time > 0ms) --at_work;
                                      endings[job] = ending;
                                    },
                                    [] {}});
    return endings;
  }

  void ring() const { EXPECT_EQ(write(alarm_.in.get(), "", 1), 1); }

  base::Pipe alarm_;
  std::function<void(std::size_t)> on_begin_;
  std::size_t most_at_work_ = 0;
  bool has_killed_ = false;
};

TEST_F(PoolTest, TellsHowEachEndsAndWhatItSaid) {
  const auto endings =
      run({"echo out; echo err >&2; printf told >&3; exit 3", "kill -SEGV $$", "true", "exec /nowhere"}, 2);
  EXPECT_EQ(endings[0].status, 3);
  EXPECT_EQ(endings[0].output, "out\nerr\n");
  EXPECT_EQ(endings[0].told, "told");
  EXPECT_EQ(endings[1].status, 128 + SIGSEGV);
  EXPECT_EQ(endings[2].status, 0);
  EXPECT_EQ(endings[3].status, 127);
  EXPECT_EQ(most_at_work_, 2U);
  EXPECT_FALSE(has_killed_);
}

// More than a pipe holds.
TEST_F(PoolTest, TakesAllThatIsTold) {
  const auto endings = run({"head -c 300000 /dev/zero >&3"}, 1);
  EXPECT_EQ(endings[0].told.size(), 300'000U);
}

TEST_F(PoolTest, GoesOnWhereAProgramIsNotThere) {
  const auto endings = run_jobs({{"missing", {"/nowhere/program"}}, {"true", {"true"}}}, 1, 60s);
  EXPECT_EQ(endings[0].status, 126);
  EXPECT_NE(endings[0].output.find("/nowhere/program"), std::string::npos) << endings[0].output;
  EXPECT_EQ(endings[1].status, 0);
}

TEST_F(PoolTest, EndsWhatHangsAndNothingElse) {
  const auto endings = run({"exec sleep 60", "sleep 0.4; echo done"}, 2, 300ms);
  EXPECT_TRUE(endings[0].hung);
  EXPECT_EQ(endings[0].status, 128 + SIGTERM);
  EXPECT_TRUE(endings[1].hung);
  const auto others = run({"exec sleep 60", "echo done"}, 2, 1s);
  EXPECT_TRUE(others[0].hung);
  EXPECT_FALSE(others[1].hung);
  EXPECT_EQ(others[1].output, "done\n");
}

TEST_F(PoolTest, KillsWhatDoesNotEnd) {
  const auto endings = run({"trap '' TERM; exec sleep 60"}, 1, 1s);
  EXPECT_TRUE(endings[0].hung);
  EXPECT_EQ(endings[0].status, 128 + SIGKILL);
  EXPECT_TRUE(has_killed_);
}

TEST_F(PoolTest, EndsAllAndBeginsNoneWhenItIsInterrupted) {
  on_begin_ = [this](std::size_t job) {
    if (job == 1) ring();
  };
  const auto endings = run({"exec sleep 60", "exec sleep 60", "echo never"}, 2);
  for (const auto &ending : endings) EXPECT_TRUE(ending.interrupted);
  EXPECT_EQ(endings[0].status, 128 + SIGTERM);
  EXPECT_EQ(endings[2].output, "");
  EXPECT_FALSE(has_killed_);
}

}  // namespace
