#include "host/box/inhabitants.h"

#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "host/base/number.h"

namespace box {
namespace {

namespace fs = std::filesystem;

fs::path folder_of(pid_t process) {
  return fs::path("/proc") / std::to_string(process);
}

// What no other folder has.
std::optional<std::array<std::uint64_t, 2>> identity_of(const fs::path &folder) {
  struct stat status {};
  if (stat(folder.c_str(), &status) != 0) return std::nullopt;
  return {{status.st_dev, status.st_ino}};
}

}  // namespace

std::optional<ProcessState> state_of(pid_t process) {
  std::ifstream file(folder_of(process) / "stat");
  std::string text;
  std::getline(file, text);               // nothing where the process ends between the opening and the reading
  const auto name_end = text.rfind(')');  // a name may have brackets and blanks of its own
  if (name_end == std::string::npos) return std::nullopt;
  constexpr int kBetweenParentAndStart = 17;
  std::istringstream words(text.substr(name_end + 1));
  char state = 0;
  ProcessState found{};
  words >> state >> found.parent;
  std::string skipped;
  for (int i = 0; i < kBetweenParentAndStart; ++i) words >> skipped;
  if (!(words >> found.start) || state == 'Z' || state == 'X') return std::nullopt;
  return found;
}

Inside::Inside(const Place &place) : databases_(identity_of(place.root() / "mgb/db")) {}

bool Inside::has(pid_t process) const {
  return databases_ && identity_of(folder_of(process) / "root/mgb/db") == databases_;
}

bool is_inside(pid_t process, const Place &place) {
  return Inside(place).has(process);
}

std::set<pid_t> inhabitants(const Place &place) {
  const Inside inside(place);
  std::set<pid_t> found;
  for (const pid_t process : all_processes()) {
    if (inside.has(process)) found.insert(process);
  }
  return found;
}

std::set<pid_t> all_processes() {
  std::set<pid_t> found;
  for (const auto &entry : fs::directory_iterator("/proc")) {
    const auto process = base::number_in<pid_t>(entry.path().filename().native());
    if (process) found.insert(*process);
  }
  return found;
}

}  // namespace box
