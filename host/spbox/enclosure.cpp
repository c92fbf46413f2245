#include "host/spbox/enclosure.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <exception>
#include <fstream>
#include <stdexcept>
#include <system_error>

#include "host/base/child.h"
#include "host/base/read_all.h"
#include "host/base/told.h"
#include "host/box/confinement.h"
#include "host/box/database.h"
#include "host/box/own_files.h"
#include "host/clock/page.h"
#include "host/include/lmainte_host.h"
#include "host/replay/score.h"
#include "host/spbox/occupancy.h"
#include "host/spbox/run_mark.h"
#include "host/spbox/standard_output.h"

namespace spbox {
namespace {

namespace fs = std::filesystem;

constexpr const char *kPreloadList = "/etc/ld.so.preload";
constexpr const char *kRecordingInside = "/mgb/lib/recording";  // where the platform looks for it

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
    if (!name.empty() && fs::exists("/tmp/" + name)) guests.insert(name);
  }
}

void add(std::vector<std::string> &arguments, std::initializer_list<std::string> more) {
  arguments.insert(arguments.end(), more);
}

// The workstation's /etc with one more file in it. A link there that says where from itself it leads says the same here.
void add_own_etc(std::vector<std::string> &arguments) {
  constexpr const char *kWorkstations = "/.etc";
  add(arguments, {"--ro-bind", "/etc", kWorkstations, "--tmpfs", "/etc"});
  for (const fs::directory_entry &entry : fs::directory_iterator("/etc")) {
    const fs::path name = entry.path().filename();
    if (entry.path() == kPreloadList) continue;
    add(arguments,
        {"--symlink", entry.is_symlink() ? fs::read_symlink(entry.path()) : kWorkstations / name, entry.path()});
  }
}

// The workstation's top folders, but for those that the box has of its own.
void add_workstation(const RootPlan &plan, std::vector<std::string> &arguments) {
  constexpr std::array<std::string_view, 5> kOwn{"mgb", "tmp", "dev", "proc", "run"};
  for (const fs::directory_entry &entry : fs::directory_iterator("/")) {
    const std::string name = entry.path().filename();
    bool own = false;
    for (const std::string_view other : kOwn) own = own || name == other;
    if (own) continue;
    if (name == "etc" && !plan.preloaded.empty()) {
      add_own_etc(arguments);
      continue;
    }
    if (entry.is_symlink()) {
      add(arguments, {"--symlink", fs::read_symlink(entry.path()), entry.path()});
    } else if (entry.is_directory()) {
      add(arguments, {"--ro-bind", entry.path(), entry.path()});
    }
  }
}

bool is_below(const fs::path &path, const fs::path &folder) {
  return path.string().starts_with(folder.string() + "/");
}

// Sockets of the workstation's services are in /run: who can talk to them can let them start something outside. What the
// command cannot do without is there all the same.
void add_run(const RootPlan &plan, std::vector<std::string> &arguments) {
  add(arguments, {"--tmpfs", "/run"});
  std::error_code error;
  std::set<fs::path> shown;
  for (const fs::path &path : {plan.program.parent_path(), plan.folder, plan.spbox.parent_path()}) shown.insert(path);
  if (plan.machine) shown.insert(plan.machine->emulator.parent_path());
  if (plan.network) shown.insert(fs::canonical("/etc/resolv.conf", error));
  for (const fs::path &path : shown) {
    const fs::path whole = fs::canonical(path, error);
    if (!error && is_below(whole, "/run")) add(arguments, {"--ro-bind", whole, whole});
  }
}

// The operator's terminal keeps its name; no other one can be reached.
void add_terminals(std::vector<std::string> &arguments) {
  constexpr const char *kFolder = "/dev/pts";
  if (!fs::is_directory(kFolder)) return;
  add(arguments, {"--tmpfs", kFolder});
  std::set<fs::path> own;
  for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    std::error_code error;
    const fs::path name = fs::read_symlink("/proc/self/fd/" + std::to_string(fd), error);
    if (is_below(name, kFolder) && fs::exists(name, error)) own.insert(name);
  }
  for (const fs::path &name : own) add(arguments, {"--dev-bind", name, name});
}

void add_devices(std::vector<std::string> &arguments) {
  add(arguments, {"--dev", "/dev"});
  add_terminals(arguments);
  // The box shares the process ids of the workstation.
  add(arguments, {"--ro-bind", "/proc", "/proc"});
}

// The files can be written, but nothing can be put in their places: spbox opens them outside, where a link leads elsewhere.
void add_databases(const fs::path &folder, std::vector<std::string> &arguments) {
  add(arguments, {"--ro-bind", folder, "/mgb/db"});
  for (const fs::directory_entry &entry : fs::recursive_directory_iterator(folder)) {
    if (!fs::is_regular_file(entry.symlink_status())) continue;
    add(arguments, {"--bind", entry.path(), "/mgb/db" / entry.path().lexically_relative(folder)});
  }
}

void add_box(const RootPlan &plan, std::vector<std::string> &arguments) {
  const fs::path mgb = plan.box.root() / "mgb";
  add(arguments, {"--bind", mgb, "/mgb", "--tmpfs", "/mgb/lib"});
  if (fs::is_directory(mgb / "db")) add_databases(mgb / "db", arguments);
  add(arguments, {"--ro-bind", plan.control_program, "/mgb/lib/control_program"});
  add(arguments, {"--ro-bind", plan.daemon, kDaemonInside});
  add(arguments, {"--symlink", name_of_this_run(), kRunInside});
  for (const auto &[library, inside] : plan.preloaded) add(arguments, {"--ro-bind", library, inside});
  if (plan.has_own_time) add(arguments, {"--bind", plan.box.clock(), BOX_TIME_PAGE});
  if (plan.machine) {
    const std::vector<std::string> more = machine_arguments(*plan.machine);
    arguments.insert(arguments.end(), more.begin(), more.end());
    add(arguments, {"--ro-bind", plan.platform_server, kPlatformServerInside});
  }
  if (!plan.score.empty()) add(arguments, {"--bind", plan.score, REPLAY_SCORE});
  if (!plan.recording.empty()) add(arguments, {"--bind", plan.recording, kRecordingInside});
  add(arguments, {"--ro-bind", plan.spbox, kSpboxInside, "--remount-ro", "/mgb/lib"});
  add(arguments, {"--bind", plan.box.tmp(), "/tmp"});
  for (const std::string &name : plan.guests) add(arguments, {"--ro-bind", "/tmp/" + name, "/tmp/" + name});
}

bool seen_inside(const fs::path &folder) {
  const std::string text = folder.string() + "/";
  return !text.starts_with("/dev/") && !text.starts_with("/mgb/");
}

}  // namespace

std::set<std::string> guests_in_tmp(const RootPlan &plan) {
  std::set<std::string> guests;
  for (const fs::path &path : {plan.program, plan.folder, plan.spbox}) add_guests(path, guests);
  if (plan.machine) add_guests(plan.machine->emulator, guests);
  return guests;
}

std::vector<std::string> bwrap_arguments(const RootPlan &plan) {
  std::vector<std::string> arguments{"bwrap"};
  add_workstation(plan, arguments);
  add_run(plan, arguments);
  add_devices(arguments);
  add_box(plan, arguments);
  if (!plan.pager) add(arguments, {"--ro-bind", "/dev/null", fs::canonical("/bin/busybox")});
  // Root, too, could mount the workstation's folders anew and write there, had it the right to.
  add(arguments, {"--remount-ro", "/", "--cap-drop", "ALL", "--die-with-parent", "--unsetenv", LMAINTE_HOST_ROOT});
  add(arguments, {"--unshare-ipc"});
  if (!plan.network) add(arguments, {"--unshare-net"});
  add(arguments, {"--chdir", seen_inside(plan.folder) ? plan.folder.string() : "/"});
  return arguments;
}

// What the workstation preloads itself comes first. A list that cannot be read preloads nothing there, either.
std::string preload_list(const std::vector<Preloaded> &preloaded) {
  std::string text = base::text_if_readable(kPreloadList);
  if (!text.empty() && !text.ends_with('\n')) text += '\n';
  for (const Preloaded &each : preloaded) text += std::string(each.inside) + "\n";
  return text;
}

std::vector<std::string> preload_arguments(int fd) {
  return {"--file", std::to_string(fd), kPreloadList, "--remount-ro", "/etc"};
}

void complete_databases(const box::Place &place) {
  try {
    box::in_confinement(place, [&] {
      const box::Database database(place.hardware());
      return std::string();
    });
  } catch (const base::NoProcess &) {
    throw;
  } catch (const std::exception &error) {  // they stay as they are, and fail inside as they do here
    const std::string why = base::told(error);
    complain(why + (why.ends_with('.') ? "" : ".") + " The command runs without them.");
  }
}

MountPoints::MountPoints(const box::Place &place) : tmp_(place.tmp()), list_(occupancy_file(place)) {
  sweep();
  fd_ = base::Descriptor(enter(place));
}

MountPoints::~MountPoints() {
  fd_.reset();
  sweep();
}

// The lock is had only when no other command is in the box.
void MountPoints::sweep() const {
  const base::Descriptor list(open(list_.c_str(), O_RDWR | box::kOwnFile));
  if (list.get() < 0 || !box::is_file(list.get()) || flock(list.get(), LOCK_EX | LOCK_NB) != 0) return;
  if (!remove_all()) return;
  [[maybe_unused]] const int kept_for_the_next_run = ftruncate(list.get(), 0);
}

// A command that is in the box already may be faster, and put a link there.
void MountPoints::make(const std::string &name, bool folder) {
  constexpr int kNewFile = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
  const fs::path path = tmp_ / name;
  std::error_code error;
  const fs::file_status there = fs::symlink_status(path, error);
  if (fs::is_directory(there) != folder && (fs::is_directory(there) || fs::is_regular_file(there))) {
    const char *in_box = folder ? "file in the box, and a folder" : "folder in the box, and a file";
    throw std::runtime_error("/tmp/" + name + " is a " + in_box +
                             " of the workstation, which the command needs there.");
  }
  if (fs::exists(there)) return;
  const std::string line = name + "\n";
  if (write(fd_.get(), line.data(), line.size()) != static_cast<ssize_t>(line.size())) {
    throw std::system_error(errno, std::generic_category(), list_.string());
  }
  if (folder) {
    fs::create_directory(path);
  } else if (const base::Descriptor file(open(path.c_str(), kNewFile, 0666)); file.get() < 0) {
    throw std::system_error(errno, std::generic_category(), path.string());
  }
}

// Only what is still empty goes: a mount point is never anything else.
bool MountPoints::remove_all() const {
  std::ifstream lines(list_);
  bool are_gone = lines.is_open();
  for (std::string name; std::getline(lines, name);) {
    std::error_code error;
    const fs::path path = tmp_ / name;
    if (path.parent_path() != tmp_ || name == "..") continue;  // not of a box's own making
    if (fs::is_empty(path, error) && !error) fs::remove(path, error);
    are_gone = are_gone && (!error || error == std::errc::no_such_file_or_directory);
  }
  return are_gone && !lines.bad();
}

}  // namespace spbox
