// Tells what a killed spbox has left in a box from what a command has left that ended by itself.
//
// Each `spbox run` leaves its name in a file of the box while its command runs. The command's root has the same name, where
// no command can change it. So behind a name without its spbox everything may go whose root has this name.
#pragma once

#include <filesystem>
#include <string>

#include "host/box/place.h"

namespace spbox {

// A link in the command's root. It leads nowhere: it says the name of the run.
inline constexpr const char *kRunInside = "/mgb/lib/run";

// Of this process: its id and its start, as ids come again.
std::string name_of_this_run();

// In a box while a command of this process runs there.
class RunMark {
 public:
  explicit RunMark(const box::Place &place);  // throws
  ~RunMark();
  RunMark(const RunMark &) = delete;
  RunMark &operator=(const RunMark &) = delete;

  // For what the run's root needs of its own. It goes with the mark, or with what a killed spbox has left.
  const std::filesystem::path &folder() const { return folder_; }

 private:
  std::filesystem::path file_, folder_;
};

// Ends all that those have left in the box that were killed.
void end_what_killed_runs_left(const box::Place &place);

}  // namespace spbox
