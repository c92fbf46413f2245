// Where a play stands and, where it failed, why: for the program that started it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace play {

struct SeenScreen {
  std::string caption;
  std::vector<std::string> rows;
};

// All as people are shown it, without control characters.
struct Account {
  std::string place;   // of the step that is played, or that failed: "walk.play:4"; empty before the first one
  std::string step;    // as it is written
  std::string reason;  // why it failed; empty where it did not
  std::vector<std::string> left;  // what is not in order, where that is the reason
  std::vector<SeenScreen> screens;
  std::string text;  // all of it, as `spbox play` tells it
};

// Gives an account as it grows, through a descriptor.
class AccountWriter {
 public:
  explicit AccountWriter(int fd = -1) : fd_(fd) {}  // -1: nobody wants one

  void begins(const std::string &place, const std::string &step) const;
  void ends(const Account &account) const;

 private:
  int fd_;
};

// Of what was written until now.
Account read_account(std::string_view bytes);

}  // namespace play
