// What a command shows, logs and leaves, from its start on.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "host/play/stage.h"
#include "host/sweep/good.h"
#include "host/sweep/replay_rules.h"

namespace sweep {

class CommandWatch {
 public:
  CommandWatch(play::Stage &stage, const ReplayRules &rules) : stage_(stage), rules_(rules) {}

  // Just before it starts.
  void begin();
  // The same, for one behind a command that was killed: what that one logged and left counts as its own.
  void begin_again();

  // The operator types, or somebody changes a unit: what was said before may not be so any more.
  void note_typing();
  void note_change();
  void note_lines(std::size_t lines) { typed_at_ = lines; }  // that the screen had when the operator typed last

  // How it ended. What it should leave is not waited for; what only dies with it is, for a moment.
  CommandEnd end(std::size_t start, const std::vector<std::string> &expected);

  // Of the lines that it has shown, those that were there when the operator typed, or somebody changed a unit, last; and of the
  // entries that it has logged, those that were there when somebody changed a unit last.
  std::size_t typed_at() const { return typed_at_ - std::min(typed_at_, shown_before_); }
  std::size_t logged_at() const { return logged_at_ - std::min(logged_at_, log_before_); }

 private:
  std::vector<std::string> logged();
  std::vector<std::string> left(const std::vector<std::string> &expected);
  std::vector<std::string> leftovers(const play::Before &before) const;

  play::Stage &stage_;
  const ReplayRules &rules_;
  std::vector<std::string> hardware_before_, log_;
  std::set<std::filesystem::path> empty_before_;  // files and folders
  std::size_t log_before_ = 0, logged_at_ = 0, shown_before_ = 0, typed_at_ = 0;
  std::uintmax_t log_size_ = 0;
};

bool is_part_of(const std::vector<std::string> &some, const std::vector<std::string> &all);

}  // namespace sweep
