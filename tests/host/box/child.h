// A child process of a test: does its work, says how far it is, and is waited for.
#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <functional>
#include <stdexcept>

class Child {
 public:
  // What a child does: it may say that it is ready by writing a byte, and its result is its exit status.
  using Work = std::function<int(const std::function<void()> &say_ready)>;

  explicit Child(const Work &work) {
    int ends[2];
    if (pipe(ends) != 0) throw std::runtime_error("no pipe");
    std::fflush(nullptr);  // what the test has not written yet is not the child's to write
    pid_ = fork();
    if (pid_ < 0) throw std::runtime_error("no child");
    if (pid_ == 0) {
      close(ends[0]);
      int status = 125;
      try {
        status = work([&] {
          const char ready = 'r';
          if (write(ends[1], &ready, 1) != 1) _exit(124);
        });
      } catch (...) {
      }
      _exit(status);
    }
    close(ends[1]);
    ready_ = ends[0];
  }
  ~Child() {
    if (pid_ > 0) die();
    close(ready_);
  }
  Child(const Child &) = delete;
  Child &operator=(const Child &) = delete;

  pid_t pid() const { return pid_; }

  // Waits until the child says that it is ready. False when it ended without a word.
  bool is_ready() const {
    char byte = 0;
    return read(ready_, &byte, 1) == 1;
  }

  // Waits for the end of the child. Its exit status, or minus the signal that killed it.
  int end() {
    int status = 0;
    if (waitpid(pid_, &status, 0) != pid_) return -1000;
    pid_ = 0;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  }
  int die() {
    kill(pid_, SIGKILL);
    return end();
  }

 private:
  pid_t pid_ = 0;
  int ready_ = -1;
};

// For a child that has nothing to say.
inline int in_child(const std::function<int()> &work) {
  return Child([&](const auto &) { return work(); }).end();
}
