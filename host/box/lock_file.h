// The locks of a box: bytes of a file, taken by processes and taken back by the kernel from the dead.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <filesystem>

namespace box {

// A record lock belongs to the process: a child of fork does not inherit it. When a process closes a second descriptor of the
// file, all its locks are gone.
class LockFile {
 public:
  LockFile() = default;
  ~LockFile();
  LockFile(const LockFile &) = delete;
  LockFile &operator=(const LockFile &) = delete;

  // Opens the file, and makes it where there is none. A link is refused. Where it may not be written, it is opened to be read,
  // and only shared locks can be had. False on failure, errno set.
  bool open(const std::filesystem::path &file);
  // Why it may not be written: a number of errno, or 0.
  int why_only_read() const { return why_only_read_; }

  // Takes a byte, trying again at ever longer pauses. Returns 0, or EAGAIN when another process still has it when the patience is
  // over, or the errno of another failure.
  enum class Way { kAlone, kShared };
  int take(off_t byte, Way way, std::chrono::milliseconds patience, std::chrono::milliseconds longest_pause) const;
  void give_back(off_t byte) const;

  // Waits while another process has a byte alone, no longer than the patience allows.
  void wait_until_free(off_t byte, std::chrono::milliseconds patience, std::chrono::milliseconds longest_pause) const;

 private:
  int fd_ = -1;
  int why_only_read_ = 0;
};

}  // namespace box
