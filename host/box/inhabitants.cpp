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

bool is_same_folder(const fs::path &one, const fs::path &other) {
  struct stat first {
  }, second{};
  return stat(one.c_str(), &first) == 0 && stat(other.c_str(), &second) == 0 && first.st_dev == second.st_dev &&
         first.st_ino == second.st_ino;
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

bool is_inside(pid_t process, const Place &place) {
  return is_same_folder(folder_of(process) / "root/mgb/db", place.root() / "mgb/db");
}

std::set<pid_t> inhabitants(const Place &place) {
  std::set<pid_t> found;
  for (const pid_t process : all_processes()) {
    if (is_inside(process, place)) found.insert(process);
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
