// What is told of a play: on an output and, where one is wanted, in a file.
#pragma once

#include <filesystem>
#include <fstream>
#include <ostream>
#include <string_view>

namespace play {

class Transcript {
 public:
  explicit Transcript(std::ostream &out) : out_(out) {}

  // Throws std::system_error where the file cannot be written; so does the printing where the file is full.
  void keep_in(const std::filesystem::path &file);
  bool is_kept() const { return file_.is_open(); }

  void print(std::string_view text);  // on both
  void keep(std::string_view text);   // in the file alone

 private:
  std::ostream &out_;
  std::filesystem::path path_;
  std::ofstream file_;
};

}  // namespace play
