#include "host/play/box.h"

#include <stdexcept>

#include "host/box/contents.h"
#include "host/box/model.h"
#include "host/clock/hours.h"
#include "host/play/layout.h"
#include "host/script/values.h"

namespace play {

namespace fs = std::filesystem;

Box::Box(std::string spbox, const fs::path &folder, int alarm, std::vector<std::string> options)
    : spbox_(std::move(spbox)),
      own_folder_(folder.empty() ? std::make_unique<OwnFolder>() : nullptr),
      box_(own_folder_ ? own_folder_->box() : fs::absolute(folder)),
      alarm_(alarm),
      options_(std::move(options)) {
  if (exists()) box_time::keep(place().clock());
}

bool Box::exists() const {
  return box::is_box(place());
}

void Box::make(const std::string &model, const fs::path &dump, std::chrono::milliseconds patience) {
  const auto there = [&] { return std::string(box::model_name(box::model_of_box(place()))); };
  if (exists()) {
    if (there() == model) return;
    throw std::runtime_error(box_.string() + " is a box of model " + there() + ". Give one of model " + model +
                             ", or a folder that does not exist yet.");
  }
  auto create = dump.empty() ? spbox({"create", "--model", model})
                             : terminal::BackgroundProgram({spbox_, "load", dump.string(), box_.string()}, alarm_);
  const auto status = create.wait(patience);
  if (!status) throw std::runtime_error("the box was not made in " + script::seconds_text(patience) + ".");
  if (*status != 0) throw std::runtime_error("no box could be made:\n" + create.output());
  if (!dump.empty() && there() != model) {
    throw std::runtime_error(dump.string() + " is of a box of model " + there() + ", not of model " + model + ".");
  }
  box_time::keep(place().clock());
}

terminal::BackgroundProgram Box::spbox(std::vector<std::string> words) const {
  words.insert(words.begin(), spbox_);
  words.insert(words.begin() + 2, box_.string());
  return terminal::BackgroundProgram(words, alarm_);
}

terminal::BackgroundProgram Box::spbox_beside(std::vector<std::string> words) const {
  std::vector<std::string> command{"/usr/bin/env", "-C",          box_.parent_path().string(),
                                   spbox_,         words.front(), box_.filename().string()};
  command.insert(command.end(), words.begin() + 1, words.end());
  return terminal::BackgroundProgram(command, alarm_);
}

std::vector<std::string> Box::command_in_box(const std::vector<std::string> &command) const {
  std::vector<std::string> words{spbox_, "run", box_.string()};
  words.insert(words.end(), options_.begin(), options_.end());
  words.emplace_back("--");
  words.insert(words.end(), command.begin(), command.end());
  return words;
}

std::string Box::without_folder(std::string text) const {
  if (!own_folder_) return text;
  text = as_steps(std::move(text), box_);
  const std::string folder = own_folder_->path().string() + "/";
  for (auto at = text.find(folder); at != std::string::npos; at = text.find(folder, at)) text.erase(at, folder.size());
  return text;
}

}  // namespace play
