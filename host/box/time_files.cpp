#include "host/box/time_files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <string>
#include <system_error>
#include <vector>

#include "host/base/descriptor.h"
#include "host/box/advice.h"
#include "host/box/box_error.h"
#include "host/box/model.h"
#include "host/box/own_files.h"

namespace box {
namespace {

// The library reads so many words of each file. The second half of the control times begins in the middle.
constexpr std::size_t kCommandWords = 32, kControlWords = 64, kSecondHalf = kControlWords / 2;
constexpr std::uint32_t kFirstTime = 60, kSecondTime = 120, kFamilyStep = 10;
constexpr std::array<std::string_view, 3> kFamilies{"qa", "qb", "qe"};

using Words = std::vector<std::uint32_t>;

// The family is the model's name without its number.
std::string family_of(std::uint32_t model) {
  return std::string(model_name(model).substr(0, 2));
}

std::string command_file(const std::string &family) {
  return "cmdtime_" + family;
}

std::string control_file(const std::string &family) {
  return "controltime_" + family;
}

// The folder of the files, where a command in the box may have put anything.
class Folder {
 public:
  explicit Folder(const Place &place) : place_(place), folder_(open_own_folder(place, "mgb/cli/etc")) {}

  void write(const std::string &name, const Words &words) const {
    std::string bytes;
    for (const std::uint32_t word : words) {
      for (int shift = 24; shift >= 0; shift -= 8) bytes.push_back(static_cast<char>(word >> shift & 0xFFu));
    }
    const base::Descriptor out(openat(folder_.get(), name.c_str(), O_WRONLY | O_CREAT | O_TRUNC | kOwnFile, kMode));
    const int error = out.get() < 0 ? errno : base::write_all(out.get(), bytes);
    if (error != 0) fail(name, "written", error);
  }

  // By a new file that takes the old one's place: whoever reads meanwhile gets whole times. One of a writer that died is written anew.
  void replace(const std::string &name, const Words &words) const {
    const std::string fresh = name + ".new";
    try {
      write(fresh, words);
      if (renameat(folder_.get(), fresh.c_str(), folder_.get(), name.c_str()) != 0) fail(name, "written", errno);
    } catch (...) {
      unlinkat(folder_.get(), fresh.c_str(), 0);
      throw;
    }
  }

  void remove(const std::string &name) const {
    if (unlinkat(folder_.get(), name.c_str(), 0) != 0 && errno != ENOENT) fail(name, "removed", errno);
  }

  // So many words; none where there is no file.
  std::optional<Words> read(const std::string &name, std::size_t count) const {
    const base::Descriptor in(openat(folder_.get(), name.c_str(), O_RDONLY | kOwnFile));
    if (in.get() < 0 && errno == ENOENT) return std::nullopt;
    std::vector<std::uint8_t> bytes(count * 4);
    const ssize_t size = in.get() < 0 ? -1 : is_file(in.get()) ? ::read(in.get(), bytes.data(), bytes.size()) : 0;
    if (size < 0) fail(name, "read", errno);
    if (static_cast<std::size_t>(size) != bytes.size()) {
      throw BoxError(path_of(name) + " has " + std::to_string(size) + " bytes, should have " +
                     std::to_string(bytes.size()) + ". " + advice({"times", place_.root(), "--reset"}) +
                     " makes it anew.");
    }
    Words words(count);
    for (std::size_t i = 0; i < bytes.size(); ++i) words[i / 4] = words[i / 4] << 8U | bytes[i];
    return words;
  }

 private:
  static constexpr mode_t kMode = S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH;

  std::string path_of(const std::string &name) const { return (place_.etc() / name).string(); }

  [[noreturn]] void fail(const std::string &name, const char *what, int error) const {
    throw BoxError(path_of(name) + " could not be " + what + ": " + std::generic_category().message(error) + ".");
  }

  Place place_;
  base::Descriptor folder_;
};

Words words_of(const CommandTimes &times) {
  Words words(times.begin(), times.end());
  words.resize(kCommandWords);
  return words;
}

Words words_of(const ControlTimes &times) {
  Words words(kControlWords);
  for (std::size_t i = 0; i < kControlTimes; ++i) {
    words[i] = times[0].at(i);
    words[kSecondHalf + i] = times[1].at(i);
  }
  return words;
}

// Each family has its own, so that a command that reads another one's is noticed.
ControlTimes usual_in_family(std::uint32_t family) {
  ControlTimes times{};
  for (std::uint32_t i = 0; i < kControlTimes; ++i) {
    times[0].at(i) = kFirstTime + i + family * kFamilyStep;
    times[1].at(i) = kSecondTime + i + family * kFamilyStep;
  }
  return times;
}

}  // namespace

CommandTimes usual_command_times() {
  return {30, 30, 60, 300, 120, 10, 600, 10, 300, 60, 30, 30, 900, 300, 60, 120};
}

ControlTimes usual_control_times(std::uint32_t model) {
  std::uint32_t family = 0;
  while (family + 1 < kFamilies.size() && kFamilies.at(family) != family_of(model)) ++family;
  return usual_in_family(family);
}

void make_time_files(const Place &place) {
  const Folder folder(place);
  for (std::uint32_t family = 0; family < kFamilies.size(); ++family) {
    const std::string name(kFamilies.at(family));
    folder.write(control_file(name), words_of(usual_in_family(family)));
    folder.write(command_file(name), words_of(usual_command_times()));
  }
}

std::optional<CommandTimes> command_times(const Place &place, std::uint32_t model) {
  const auto words = Folder(place).read(command_file(family_of(model)), kCommandWords);
  if (!words) return std::nullopt;
  CommandTimes times{};
  std::copy_n(words->begin(), times.size(), times.begin());
  return times;
}

std::optional<ControlTimes> control_times(const Place &place, std::uint32_t model) {
  const auto words = Folder(place).read(control_file(family_of(model)), kControlWords);
  if (!words) return std::nullopt;
  ControlTimes times{};
  std::copy_n(words->begin(), kControlTimes, times[0].begin());
  std::copy_n(words->begin() + kSecondHalf, kControlTimes, times[1].begin());
  return times;
}

void set_command_times(const Place &place, std::uint32_t model, const CommandTimes &times) {
  Folder(place).replace(command_file(family_of(model)), words_of(times));
}

void set_control_times(const Place &place, std::uint32_t model, const ControlTimes &times) {
  Folder(place).replace(control_file(family_of(model)), words_of(times));
}

void remove_time_files(const Place &place, std::uint32_t model) {
  const Folder folder(place);
  folder.remove(command_file(family_of(model)));
  folder.remove(control_file(family_of(model)));
}

}  // namespace box
