// Which processes have begun since a look.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>

#include "host/clock/births.h"
#include "host/clock/process_files.h"

namespace {

// One that waits until it is killed.
class Child {
 public:
  Child() : id_(fork()) {
    while (id_ == 0) pause();
  }
  ~Child() {
    kill(id_, SIGKILL);
    waitpid(id_, nullptr, 0);
  }
  Child(const Child &) = delete;
  Child &operator=(const Child &) = delete;
  pid_t id() const { return id_; }

 private:
  pid_t id_;
};

// Where the system's numbers begin anew just then, and where it does not tell its last one, nobody is named: any may be new.
bool may_be_new(const std::optional<std::vector<pid_t>> &born, pid_t process) {
  return !born || std::ranges::find(*born, process) != born->end();
}

TEST(Births, AreToldUntilTheyAreKnown) {
  box_time::Births births;
  EXPECT_EQ(births.look(), std::nullopt) << "of nobody is it known when it began";
  births.settle();
  const Child child;
  EXPECT_TRUE(may_be_new(births.look(), child.id()));
  EXPECT_TRUE(may_be_new(births.look(), child.id())) << "still nobody has said that it is known";
  births.settle();
  const auto later = births.look();
  EXPECT_TRUE(!later || !may_be_new(later, child.id()));
}

TEST(Births, AreThoseOfProcessesAndOfThreads) {
  const Child child;
  EXPECT_TRUE(box_time::is_there(child.id()) && box_time::is_process(child.id()));
  EXPECT_TRUE(box_time::is_process(getpid()));
  std::vector<pid_t> all = box_time::processes();
  EXPECT_NE(std::ranges::find(all, child.id()), all.end());
  pid_t gone = 0;
  {
    const Child other;
    gone = other.id();
  }
  EXPECT_FALSE(box_time::is_process(gone));
}

}  // namespace
