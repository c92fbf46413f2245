// The root of a command in a box: the workstation read only, with the box's own /mgb and /tmp, made by bubblewrap.
#pragma once

#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "host/base/descriptor.h"
#include "host/box/place.h"
#include "host/spbox/machine.h"

namespace spbox {

// A library that all programs in a root preload.
struct Preloaded {
  std::filesystem::path library;
  const char *inside;
};

// What a root is made for.
struct RootPlan {
  box::Place box;
  std::filesystem::path spbox;                 // this program
  std::filesystem::path control_program;       // mounted where the control programs' names lead
  std::filesystem::path daemon;                // mounted beside it
  std::filesystem::path program;               // the command's program, as far as it is found
  std::filesystem::path folder;                // the working folder
  bool pager = true;                           // false: the pager cannot be run
  bool network = false;                        // true: the workstation's
  std::set<std::string> guests = {};           // what is mounted below /tmp
  bool has_own_time = false;                   // the box's, which its page tells
  std::vector<Preloaded> preloaded = {};       // of spbox's own
  std::optional<Machine> machine = {};         // of the command, where that is not the workstation
  std::filesystem::path platform_server = {};  // which the machine's programs ask
  std::filesystem::path recording = {};        // what the command asks of its platform is written there; empty: nowhere
  std::filesystem::path score = {};            // by which a preloaded library answers the command; empty: none does
};

// The workstation's own things in /tmp that the command must see: what holds the program, the working folder or spbox. They are
// looked for once. What bwrap is told to mount and has no mount point, it makes one for, and nobody removes that. Throws.
std::set<std::string> guests_in_tmp(const RootPlan &plan);

// The arguments of bwrap that make the root.
std::vector<std::string> bwrap_arguments(const RootPlan &plan);

// The file that has all programs in a root preload libraries: its text, and the arguments of bwrap that put there what it reads from
// a descriptor.
std::string preload_list(const std::vector<Preloaded> &preloaded);
std::vector<std::string> preload_arguments(int fd);

// Makes the lock files of databases that have none, in a box that was copied without them: nobody makes them in the root.
void complete_databases(const box::Place &place);

// Where spbox itself, the daemon and the platform of another machine's programs can be started inside the root.
inline constexpr const char *kSpboxInside = "/mgb/lib/spbox";
inline constexpr const char *kDaemonInside = "/mgb/lib/monitor_daemon";
inline constexpr const char *kPlatformServerInside = "/mgb/lib/platform_server";

// The empty files and folders in the box's tmp folder on which the workstation's things are mounted. Those that had to
// be made are removed by the last command that leaves the box or, where that one was killed, by the next one that enters it.
// As long as they are there, a command is in the box.
class MountPoints {
 public:
  explicit MountPoints(const box::Place &place);  // throws
  ~MountPoints();
  MountPoints(const MountPoints &) = delete;
  MountPoints &operator=(const MountPoints &) = delete;

  void make(const std::string &name, bool folder);  // throws

 private:
  void sweep() const;
  bool remove_all() const;  // false when some stay

  std::filesystem::path tmp_;
  std::filesystem::path list_;
  base::Descriptor fd_;
};

}  // namespace spbox
