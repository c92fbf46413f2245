// A folder for one test, gone after it.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <system_error>

class Scratch {
 public:
  Scratch() {
    std::string name = (std::filesystem::temp_directory_path() / "box.XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("cannot make " + name);
    path_ = name;
  }
  ~Scratch() {
    std::error_code error;
    std::filesystem::remove_all(path_, error);
  }
  Scratch(const Scratch &) = delete;
  Scratch &operator=(const Scratch &) = delete;

  const std::filesystem::path &path() const { return path_; }
  std::filesystem::path operator/(const char *name) const { return path_ / name; }

 private:
  std::filesystem::path path_;
};
