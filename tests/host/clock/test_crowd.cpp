// Who belongs to a box: all whom its keeper has started, and whom these have started; and guests from outside.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <future>
#include <thread>

#include "host/base/pipe.h"
#include "host/clock/crowd.h"
#include "host/clock/hours.h"
#include "host/clock/offspring.h"
#include "tests/eventually.h"

namespace {

using Family = std::array<pid_t, 2>;  // a child, and a child of its own

[[noreturn]] void wait_for_ever() {
  for (;;) pause();
}

// Both wait until they are killed.
Family start_family() {
  base::Pipe told;
  Family family{};
  family[0] = fork();
  if (family[0] == 0) {
    const pid_t child = fork();
    if (child == 0) wait_for_ever();
    [[maybe_unused]] const ssize_t written = write(told.in.get(), &child, sizeof child);
    wait_for_ever();
  }
  EXPECT_EQ(read(told.out.get(), &family[1], sizeof family[1]), static_cast<ssize_t>(sizeof family[1]));
  return family;
}

void end_family(const Family &family) {
  for (const pid_t process : family) kill(process, SIGKILL);
  waitpid(family[0], nullptr, 0);
}

bool has_all(const box_time::Crowd &crowd, const Family &family) {
  return std::ranges::all_of(family, [&](pid_t process) { return crowd.has(process); });
}

bool is_quiet(box_time::Crowd &crowd, const box_time_page &page) {
  crowd.look_again();
  return eventually([&] { return crowd.look(page, box_time::wall()).is_quiet; });
}

TEST(Offspring, IsThatOfEachThread) {
  std::promise<void> end;
  std::promise<pid_t> begun;
  std::thread other([&] {
    const pid_t child = fork();
    if (child == 0) wait_for_ever();
    begun.set_value(child);
    end.get_future().wait();
  });
  const pid_t of_other_thread = begun.get_future().get();
  const Family family = start_family();
  const box_time::Watched self(getpid());
  ASSERT_TRUE(box_time::lists_children()) << "the kernel of a workstation does";
  for (const bool is_listed : {true, false}) {
    SCOPED_TRACE(is_listed ? "as the kernel lists them" : "by the parents of all");
    std::vector<pid_t> found;
    EXPECT_TRUE(eventually([&] {
      found = box_time::Offspring(is_listed).of(self);
      return found.size() == 2;
    }));
    std::ranges::sort(found);
    EXPECT_EQ(found, (std::vector{std::min(of_other_thread, family[0]), std::max(of_other_thread, family[0])}));
  }
  end.set_value();
  other.join();
  end_family(family);
  kill(of_other_thread, SIGKILL);
  waitpid(of_other_thread, nullptr, 0);
  EXPECT_TRUE(box_time::Offspring().of(self).empty());
}

TEST(Crowd, HasAllWhomTheKeeperAndTheyHaveStarted) {
  const box_time_page page{};
  box_time::Crowd crowd;
  const Family first = start_family();
  EXPECT_TRUE(is_quiet(crowd, page));
  EXPECT_TRUE(has_all(crowd, first));
  const Family second = start_family();
  EXPECT_TRUE(is_quiet(crowd, page));
  EXPECT_TRUE(has_all(crowd, second));
  end_family(first);
  EXPECT_TRUE(is_quiet(crowd, page));
  EXPECT_FALSE(crowd.has(first[0]));
  EXPECT_FALSE(crowd.has(getpid()) || crowd.has(getppid()));
  end_family(second);
}

// Somebody else has started it: its parent is dead.
TEST(Crowd, HasGuestsAndWhomTheyHaveStarted) {
  base::Pipe told;
  const pid_t parent = fork();
  if (parent == 0) {
    const Family family = start_family();
    [[maybe_unused]] const ssize_t written = write(told.in.get(), &family, sizeof family);
    _exit(0);
  }
  Family family{};
  EXPECT_EQ(read(told.out.get(), &family, sizeof family), static_cast<ssize_t>(sizeof family));
  waitpid(parent, nullptr, 0);
  box_time_page page{};
  box_time::Crowd crowd;
  EXPECT_TRUE(is_quiet(crowd, page));
  EXPECT_FALSE(crowd.has(family[0]) || crowd.has(family[1]));
  page.guests[0] = static_cast<std::uint32_t>(family[0]);
  EXPECT_TRUE(is_quiet(crowd, page));
  EXPECT_TRUE(has_all(crowd, family));
  for (const pid_t process : family) kill(process, SIGKILL);
}

}  // namespace
