// The file into which a command in a box is recorded: `spbox run --recording`.
#pragma once

#include <sys/types.h>

#include <filesystem>

namespace spbox {

// Makes the file, or takes one in which a recording has begun, so that it goes on.
class RecordingFile {
 public:
  // Throws BoxError.
  RecordingFile(const std::filesystem::path &file, bool without_contents);
  const std::filesystem::path &path() const { return path_; }
  void complain_if_nothing_came() const;  // when the command has ended

 private:
  std::filesystem::path path_;
  off_t size_ = 0;
};

}  // namespace spbox
