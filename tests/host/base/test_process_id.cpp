#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>

#include "host/base/process_id.h"

namespace {

// Whether the process's id is what the kernel says.
bool is_right() {
  return base::process_id() == static_cast<pid_t>(syscall(SYS_getpid));
}

using Fork = pid_t (*)();

pid_t library_fork() {
  return fork();
}
// As a program makes a child that goes past the C library: nothing that is registered with it is called.
pid_t bare_fork() {
  return static_cast<pid_t>(syscall(SYS_clone, SIGCHLD, 0, 0, 0, 0));
}

bool holds_in_child(Fork make_child, const std::function<bool()> &what) {
  const pid_t child = make_child();
  if (child == 0) _exit(what() ? 0 : 1);
  int status = -1;
  return waitpid(child, &status, 0) == child && status == 0;
}

TEST(ProcessId, IsThatOfTheKernel) {
  EXPECT_TRUE(is_right());
  EXPECT_TRUE(is_right()) << "asked again";
}

class ProcessIdInChild : public testing::TestWithParam<Fork> {};

TEST_P(ProcessIdInChild, IsTheChildsOwnAndTheParentKeepsIts) {
  ASSERT_TRUE(is_right());
  EXPECT_TRUE(holds_in_child(GetParam(), is_right));
  EXPECT_TRUE(holds_in_child(GetParam(), [] { return holds_in_child(GetParam(), is_right); }))
      << "a grandchild whose parent never asked";
  EXPECT_TRUE(holds_in_child(GetParam(), [] {
    return is_right() && holds_in_child(GetParam(), is_right) && is_right();
  })) << "a grandchild whose parent asked before";
  EXPECT_TRUE(is_right());
}

INSTANTIATE_TEST_SUITE_P(HoweverItWasMade, ProcessIdInChild, testing::Values(library_fork, bare_fork));

TEST(ProcessId, StaysThroughAChildThatSharesTheMemory) {
  ASSERT_TRUE(is_right());
  const pid_t child = vfork();  // NOLINT(clang-analyzer-security.insecureAPI.vfork): commands may use it
  if (child == 0) _exit(0);
  int status = -1;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  EXPECT_TRUE(is_right());
}

}  // namespace
