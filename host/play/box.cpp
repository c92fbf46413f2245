#include "host/play/box.h"

#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <system_error>

#include "host/box/contents.h"
#include "host/box/model.h"
#include "host/play/layout.h"
#include "host/play/leftovers.h"
#include "host/script/values.h"

namespace play {
namespace {

namespace fs = std::filesystem;

fs::path new_folder() {
  auto pattern = (fs::temp_directory_path() / "spbox-play.XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) {
    throw std::system_error(errno, std::generic_category(), "cannot make a folder for the box: " + pattern);
  }
  return pattern;
}

}  // namespace

Box::Box(std::string spbox, const fs::path &folder, int alarm)
    : spbox_(std::move(spbox)),
      temporary_(folder.empty() ? new_folder() : ""),
      box_(folder.empty() ? temporary_ / "box" : fs::absolute(folder)),
      alarm_(alarm) {}

Box::~Box() {
  if (temporary_.empty()) return;
  try {
    remove();
  } catch (const std::exception &) {
    // What cannot be removed stays.
  }
}

// What has left the command's session is still in the box, and the daemon ends a moment after `spbox run` was killed.
void Box::remove() const {
  constexpr int kTries = 100;
  constexpr useconds_t kBetweenTries = 10'000;
  for (int i = 0; i < kTries; ++i) {
    const auto left = processes_of(place());
    if (left.empty()) break;
    for (const pid_t process : left) kill(process, SIGKILL);
    usleep(kBetweenTries);
  }
  std::error_code ignored;
  fs::remove_all(temporary_, ignored);
}

bool Box::exists() const {
  return box::is_box(place());
}

void Box::make(const std::string &model, std::chrono::milliseconds patience) {
  if (exists()) {
    const std::string there(box::model_name(box::model_of_box(place())));
    if (there == model) return;
    throw std::runtime_error(box_.string() + " is a box of model " + there + ". Give one of model " + model +
                             ", or a folder that does not exist yet.");
  }
  auto create = spbox({"create", "--model", model});
  const auto status = create.wait(patience);
  if (!status) throw std::runtime_error("the box was not made in " + script::seconds_text(patience) + ".");
  if (*status != 0) throw std::runtime_error("no box could be made:\n" + create.output());
}

terminal::BackgroundProgram Box::spbox(std::vector<std::string> words) const {
  words.insert(words.begin(), spbox_);
  words.insert(words.begin() + 2, box_.string());
  return terminal::BackgroundProgram(words, alarm_);
}

std::vector<std::string> Box::command_in_box(const std::vector<std::string> &command) const {
  std::vector<std::string> words{spbox_, "run", box_.string(), "--"};
  words.insert(words.end(), command.begin(), command.end());
  return words;
}

std::string Box::without_folder(std::string text) const {
  if (temporary_.empty()) return text;
  text = as_steps(std::move(text), box_);
  const std::string folder = temporary_.string() + "/";
  for (auto at = text.find(folder); at != std::string::npos; at = text.find(folder, at)) text.erase(at, folder.size());
  return text;
}

}  // namespace play
