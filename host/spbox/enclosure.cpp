#include "host/spbox/enclosure.h"

#include <sys/file.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <fstream>
#include <system_error>

#include "host/spbox/occupancy.h"

namespace spbox {
namespace {

namespace fs = std::filesystem;

// The name below /tmp that leads to a path, empty when the path is elsewhere.
std::string name_in_tmp(const fs::path &path) {
  auto part = path.begin();
  if (part == path.end() || *part != "/" || ++part == path.end() || *part != "tmp" || ++part == path.end()) return "";
  return part->string();
}

void add_guests(const fs::path &path, std::set<std::string> &guests) {
  std::error_code error;
  for (const fs::path &spelling : {path.lexically_normal(), fs::weakly_canonical(path, error)}) {
    const std::string name = name_in_tmp(spelling);
    if (!name.empty() && fs::exists("/tmp/" + name, error)) guests.insert(name);
  }
}

void add(std::vector<std::string> &arguments, std::initializer_list<std::string> more) {
  arguments.insert(arguments.end(), more);
}

// The workstation's top folders, but for those that the box has of its own.
void add_workstation(std::vector<std::string> &arguments) {
  constexpr std::array<std::string_view, 4> kOwn{"mgb", "tmp", "dev", "proc"};
  for (const fs::directory_entry &entry : fs::directory_iterator("/")) {
    const std::string name = entry.path().filename();
    bool own = false;
    for (const std::string_view other : kOwn) own = own || name == other;
    if (own) continue;
    if (entry.is_symlink()) {
      add(arguments, {"--symlink", fs::read_symlink(entry.path()), entry.path()});
    } else if (entry.is_directory()) {
      add(arguments, {"--ro-bind", entry.path(), entry.path()});
    }
  }
}

void add_devices(std::vector<std::string> &arguments) {
  add(arguments, {"--dev", "/dev"});
  // The operator's terminal keeps its name.
  if (fs::is_directory("/dev/pts")) add(arguments, {"--dev-bind", "/dev/pts", "/dev/pts"});
  // LMDB tells processes apart by their ids: the box shares them with the workstation.
  add(arguments, {"--ro-bind", "/proc", "/proc"});
}

void add_box(const Visit &visit, std::vector<std::string> &arguments) {
  add(arguments, {"--bind", visit.box.root() / "mgb", "/mgb", "--tmpfs", "/mgb/lib"});
  add(arguments, {"--ro-bind", visit.control_program, "/mgb/lib/control_program"});
  add(arguments, {"--ro-bind", visit.spbox, kSpboxInside, "--remount-ro", "/mgb/lib"});
  add(arguments, {"--bind", visit.box.tmp(), "/tmp"});
  for (const std::string &name : guests_in_tmp(visit)) add(arguments, {"--ro-bind", "/tmp/" + name, "/tmp/" + name});
}

bool seen_inside(const fs::path &folder) {
  const std::string text = folder.string() + "/";
  return !text.starts_with("/dev/") && !text.starts_with("/mgb/");
}

}  // namespace

std::set<std::string> guests_in_tmp(const Visit &visit) {
  std::set<std::string> guests;
  for (const fs::path &path : {visit.program, visit.folder, visit.spbox}) add_guests(path, guests);
  return guests;
}

std::vector<std::string> bwrap_arguments(const Visit &visit) {
  std::vector<std::string> arguments{"bwrap"};
  add_workstation(arguments);
  add_devices(arguments);
  add_box(visit, arguments);
  if (!visit.pager) add(arguments, {"--ro-bind", "/dev/null", fs::canonical("/bin/busybox")});
  // Root, too, could mount the workstation's folders anew and write there, had it the right to.
  add(arguments, {"--remount-ro", "/", "--cap-drop", "ALL", "--die-with-parent", "--unsetenv", "SPBOX_ROOT"});
  add(arguments, {"--chdir", seen_inside(visit.folder) ? visit.folder.string() : "/"});
  return arguments;
}

MountPoints::MountPoints(const box::Place &place)
    : tmp_(place.tmp()), list_(occupancy_file(place)), fd_(enter(place)) {}

MountPoints::~MountPoints() {
  // The lock is had only when no other command is in the box.
  if (flock(fd_, LOCK_EX | LOCK_NB) == 0) remove_all();
  close(fd_);
}

void MountPoints::make(const std::string &name, bool folder) {
  const fs::path path = tmp_ / name;
  std::error_code error;
  if (fs::exists(fs::symlink_status(path, error))) return;
  const std::string line = name + "\n";
  if (write(fd_, line.data(), line.size()) != static_cast<ssize_t>(line.size())) {
    throw std::system_error(errno, std::generic_category(), list_.string());
  }
  if (folder) {
    fs::create_directory(path);
  } else if (!std::ofstream(path)) {
    throw std::system_error(errno, std::generic_category(), path.string());
  }
}

// Only what is still empty goes: a mount point is never anything else.
void MountPoints::remove_all() const {
  std::ifstream lines(list_);
  for (std::string name; std::getline(lines, name);) {
    std::error_code error;
    const fs::path path = tmp_ / name;
    if (fs::is_empty(path, error) && !error) fs::remove(path, error);
  }
  [[maybe_unused]] const int kept_for_the_next_run = ftruncate(fd_, 0);
}

}  // namespace spbox
