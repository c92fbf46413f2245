#include "host/spbox/run_mark.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <set>
#include <system_error>

#include "host/base/descriptor.h"
#include "host/base/number.h"
#include "host/box/inhabitants.h"
#include "host/box/own_files.h"
#include "host/spbox/ending.h"

namespace spbox {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kPrefix = "run.";

fs::path folder_of(const box::Place &place) {
  return place.root() / "mgb/lib";
}

fs::path folder_of_run(const box::Place &place, const std::string &name) {
  return folder_of(place) / ("for_run." + name);
}

std::string name_of(pid_t process) {
  const auto state = box::state_of(process);
  return state ? std::to_string(process) + "." + std::to_string(state->start) : "";
}

// None where this is no name of a run.
std::optional<pid_t> process_of(std::string_view name) {
  return base::number_in<pid_t>(name.substr(0, name.find('.')));
}

bool is_of_run(pid_t process, const box::Place &place, const std::string &name) {
  std::error_code error;
  const fs::path link = "/proc/" + std::to_string(process) + "/root" + kRunInside;
  return fs::read_symlink(link, error) == name && box::is_inside(process, place);
}

// Those that start others as fast as they are ended are given up in the end.
void end_all_of_run(const box::Place &place, const std::string &name) {
  constexpr int kRounds = 100;
  for (int round = 0; round < kRounds; ++round) {
    bool is_any_left = false;
    for (const pid_t process : box::all_processes()) {
      if (!is_of_run(process, place, name) || !box::state_of(process)) continue;
      is_any_left = true;
      end_process(process, [&] { return is_of_run(process, place, name); });
    }
    if (!is_any_left) return;
  }
}

}  // namespace

std::string name_of_this_run() {
  return name_of(getpid());
}

RunMark::RunMark(const box::Place &place)
    : file_(folder_of(place) / (std::string(kPrefix) + name_of_this_run())),
      folder_(folder_of_run(place, name_of_this_run())) {
  const base::Descriptor file(open(file_.c_str(), O_WRONLY | O_CREAT | box::kOwnFile, 0644));
  if (file.get() < 0) throw std::system_error(errno, std::generic_category(), file_.string() + " cannot be written");
}

RunMark::~RunMark() {
  std::error_code ignored;
  fs::remove_all(folder_, ignored);
  fs::remove(file_, ignored);
}

void end_what_killed_runs_left(const box::Place &place) {
  std::error_code error;
  std::set<fs::path> marks;
  for (const fs::directory_entry &entry : fs::directory_iterator(folder_of(place), error)) {
    if (entry.path().filename().string().starts_with(kPrefix)) marks.insert(entry.path());
  }
  for (const fs::path &mark : marks) {
    const std::string name = mark.filename().string().substr(kPrefix.size());
    const auto process = process_of(name);
    if (!process || name_of(*process) == name) continue;
    end_all_of_run(place, name);
    fs::remove_all(folder_of_run(place, name), error);
    fs::remove(mark, error);
  }
}

}  // namespace spbox
