// A child process: the words of its command in the form that execve and its relatives take, and how it ended.
#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace base {

class ArgumentVector {
 public:
  explicit ArgumentVector(std::vector<std::string> words) : words_(std::move(words)) {
    pointers_.reserve(words_.size() + 1);
    for (auto &word : words_) pointers_.push_back(word.data());
    pointers_.push_back(nullptr);
  }
  ~ArgumentVector() = default;
  ArgumentVector(const ArgumentVector &) = delete;
  ArgumentVector &operator=(const ArgumentVector &) = delete;

  char *const *data() const { return pointers_.data(); }
  const char *program() const { return pointers_.front(); }

 private:
  std::vector<std::string> words_;
  std::vector<char *> pointers_;
};

// Ends a child that cannot become its program, and tells its parent why through a pipe that execve closes.
[[noreturn]] inline void cannot_become_program(int exec_error, int error) {
  if (write(exec_error, &error, sizeof error) < 0) _exit(126);
  _exit(127);
}

class NoProcess : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Throws what people are told where a fork for WHAT failed: a NoProcess.
[[noreturn]] inline void no_process_for(const std::string &what) {
  const std::string why = std::generic_category().message(errno);
  throw NoProcess("no process can be started for " + what + ": " + why +
                  ". End some, or raise their limit (ulimit -u).");
}

// Waits for a child's end, whatever signals come in between. Returns its wait status. Throws std::system_error.
inline int wait_status_of(pid_t child) {
  int status = 0;
  while (waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) throw std::system_error(errno, std::generic_category(), "waiting for a child process");
  }
  return status;
}

// The same in one number, as a shell tells it: the exit status, or 128 + n where signal n ended the child.
inline int exit_status_of(pid_t child) {
  const int status = wait_status_of(child);
  return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

}  // namespace base
