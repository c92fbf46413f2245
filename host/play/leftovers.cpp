#include "host/play/leftovers.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <fstream>
#include <functional>
#include <sstream>

#include "host/base/descriptor.h"
#include "host/box/confinement.h"
#include "host/box/database.h"
#include "host/box/hardware.h"
#include "host/box/inhabitants.h"
#include "host/box/unit_name.h"

namespace play {
namespace {

namespace fs = std::filesystem;
using Sentences = std::vector<std::string>;

bool has_argument(pid_t process, const std::string &wanted) {
  const base::Descriptor file(open(("/proc/" + std::to_string(process) + "/cmdline").c_str(), O_RDONLY | O_CLOEXEC));
  std::string words(1, '\0');
  std::array<char, 4096> part{};
  for (ssize_t size = 0; file.get() >= 0 && (size = read(file.get(), part.data(), part.size())) > 0;) {
    words.append(part.data(), static_cast<std::size_t>(size));
  }
  return words.find('\0' + wanted + '\0') != std::string::npos;
}

// Empty where a command need not take the setting back.
std::string sentence(const box::SettingValue &row) {
  if (row.is_usual()) return "";
  switch (row.setting) {
    case box::Setting::kMaintenance:
      return "maintenance mode is on";
    case box::Setting::kFan:
      return "the fans " + (row.of.empty() ? "" : "of " + row.of + " ") + "run at speed \"" + row.value + "\"";
    case box::Setting::kLed:
      return "the LED of " + row.of + (row.is_blinking() ? " blinks" : " is on");
    case box::Setting::kFlag:
      return row.of + " is under maintenance";
    case box::Setting::kDetached:
      return row.of + " is detached";
    default:
      return "";
  }
}

void add(Sentences &sentences, const Sentences &more) {
  sentences.insert(sentences.end(), more.begin(), more.end());
}

std::string text_of(const terminal::Mode &mode) {
  return std::string("echo ") + (mode.echo ? "on" : "off") + ", lines " + (mode.lines ? "on" : "off") + ", interrupt " +
         (mode.interrupt ? "on" : "off");
}

Sentences left_at_terminal(const terminal::Terminal &terminal, const Before &before) {
  if (terminal.hung_up() || terminal.mode() == before.mode) return {};
  return {"the terminal has another mode than before: " + text_of(terminal.mode())};
}

Sentences processes_left(const box::Place &place, const terminal::Terminal &terminal, const Before &before) {
  std::set<pid_t> left = processes_of(place);
  for (const auto &process : terminal.processes()) left.insert(process.pid);
  Sentences sentences;
  for (const pid_t process : left) {
    const auto name = program_of(process);
    if (!name.empty() && !before.processes.contains(process)) sentences.push_back(name + " still runs");
  }
  return sentences;
}

Sentences files_left(const box::Place &place, const Before &before) {
  Sentences sentences;
  for (const auto &file : files_in_tmp(place)) {
    if (!before.files.contains(file)) sentences.push_back(sentence_of(file));
  }
  return sentences;
}

// The procedures clear their file and keep it: who waits for its lock has the same file.
constexpr const char *kOfProcedures = "mainte_procedure";

// Nobody can look into it, or there is nothing.
bool is_without_files(const fs::path &folder) {
  std::error_code closed;
  return fs::directory_iterator(folder, closed) == fs::directory_iterator();
}

// Of the files and folders that are wanted, the names; that of a folder ends with a slash.
template <typename Wanted>
std::set<fs::path> all_in_tmp(const box::Place &place, const Wanted &is_wanted) {
  std::set<fs::path> names;
  std::error_code gone;
  fs::recursive_directory_iterator entry(place.tmp(), fs::directory_options::skip_permission_denied, gone);
  for (; entry != fs::recursive_directory_iterator(); entry.increment(gone)) {
    const auto file = entry->symlink_status(gone);
    if (!is_wanted(entry->path(), file, fs::is_regular_file(file) ? entry->file_size(gone) : 0)) continue;
    const auto name = entry->path().lexically_relative(place.tmp());
    names.insert(fs::is_directory(file) ? name / "" : name);
  }
  return names;
}

// The command may have left anything there.
Sentences in_databases(const box::Place &place, const std::function<Sentences()> &look) {
  std::istringstream lines(box::in_confinement(place, [&] {
    std::string text;
    for (const std::string &sentence : look()) text += sentence + '\0';
    return text;
  }));
  Sentences sentences;
  for (std::string sentence; std::getline(lines, sentence, '\0');) sentences.push_back(sentence);
  return sentences;
}

}  // namespace

std::string program_of(pid_t process) {
  std::ifstream file("/proc/" + std::to_string(process) + "/comm");
  std::string name;
  std::getline(file, name);
  return name;
}

std::set<pid_t> processes_of(const box::Place &place) {
  const auto folder = fs::absolute(place.root()).string();
  const box::Inside inside(place);
  std::set<pid_t> found;
  for (const pid_t process : box::all_processes()) {
    if (process == getpid()) continue;
    if (has_argument(process, folder) || inside.has(process)) found.insert(process);
  }
  return found;
}

std::set<fs::path> files_in_tmp(const box::Place &place) {
  return all_in_tmp(place, [](const fs::path & /*path*/, fs::file_status file, std::uintmax_t size) {
    return !fs::is_directory(file) && (!fs::is_regular_file(file) || size > 0);
  });
}

std::set<fs::path> empty_in_tmp(const box::Place &place) {
  return all_in_tmp(place, [&](const fs::path &path, fs::file_status file, std::uintmax_t size) {
    if (fs::is_directory(file)) return is_without_files(path);
    return fs::is_regular_file(file) && size == 0 && path != place.tmp() / kOfProcedures;
  });
}

std::string sentence_of(const fs::path &file) {
  return "the file /tmp/" + file.string() + " is left";
}

Sentences left_in_hardware(const box::Place &place, const Sentences &detached) {
  Sentences sentences, missing;
  for (const auto &unit : detached) missing.push_back(box::location_of(unit));
  for (const box::SettingValue &row : box::Hardware(place).settings()) {
    const bool has_to_be = row.setting == box::Setting::kDetached && std::erase(missing, row.of) > 0;
    const auto text = has_to_be ? "" : sentence(row);
    if (!text.empty()) sentences.push_back(text);
  }
  for (const auto &unit : missing) sentences.push_back(unit + " is not detached");
  return sentences;
}

Sentences locked_databases(const box::Place &place) {
  Sentences sentences;
  for (std::uint32_t id = 0; id < box::kDatabaseCount; ++id) {
    box::Database database(place.database(id));
    if (!database.lock(std::chrono::milliseconds(0))) {
      sentences.push_back("database " + std::to_string(id) + " is locked");
    } else if (!database.unlock()) {
      sentences.push_back("database " + std::to_string(id) + " cannot be written");
    }
  }
  return sentences;
}

Sentences switched_in_hardware(const box::Place &place) {
  return in_databases(place, [&] { return left_in_hardware(place, {}); });
}

Before before_command(const box::Place &place, const terminal::Terminal &terminal, bool others_work) {
  Before before{terminal.mode(), files_in_tmp(place), processes_of(place)};
  if (others_work) before.hardware = switched_in_hardware(place);
  return before;
}

Sentences leftovers(const box::Place &place, const terminal::Terminal &terminal, const Before &before,
                    const Sentences &detached) {
  Sentences sentences = in_databases(place, [&] {
    Sentences all = left_in_hardware(place, detached);
    add(all, locked_databases(place));
    return all;
  });
  for (const std::string &sentence : before.hardware) std::erase(sentences, sentence);
  add(sentences, left_at_terminal(terminal, before));
  add(sentences, processes_left(place, terminal, before));
  add(sentences, files_left(place, before));
  return sentences;
}

}  // namespace play
