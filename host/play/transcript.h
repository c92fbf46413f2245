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

  // Throws script::Error where the file cannot be written. Where it is full later, the printing throws.
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
