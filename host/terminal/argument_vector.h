// The words of a command in the form that execve and its relatives take.
#pragma once

#include <string>
#include <vector>

namespace terminal {

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

}  // namespace terminal
