// The box on which a play is played: one that is there, or a new one, which goes with the play unless it was asked for.
#pragma once

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "host/box/place.h"
#include "host/play/own_folder.h"
#include "host/terminal/background_program.h"

namespace play {

class Box {
 public:
  // `spbox` is the program. Where no folder is named, the box gets one of its own, which is removed at the end. Commands are started
  // with these options of `spbox run`.
  Box(std::string spbox, const std::filesystem::path &folder, int alarm, std::vector<std::string> options = {});

  // Makes the box, of a dump where one is named; where there is one already, it must be of this model. Throws.
  void make(const std::string &model, const std::filesystem::path &dump, std::chrono::milliseconds patience);

  // spbox VERB BOX WORDS...
  terminal::BackgroundProgram spbox(std::vector<std::string> words) const;
  // The same from the folder in which the box lies, so that what it prints names the box alone.
  terminal::BackgroundProgram spbox_beside(std::vector<std::string> words) const;
  std::vector<std::string> command_in_box(const std::vector<std::string> &command) const;  // spbox run BOX -- COMMAND

  // A text without the name of a folder that is gone after the play, and another one each time. What it advises to type is
  // a step of a play.
  std::string without_folder(std::string text) const;

  box::Place place() const { return box::Place(box_); }
  bool exists() const;

 private:
  std::string spbox_;
  std::unique_ptr<OwnFolder> own_folder_;  // none where a folder was named
  std::filesystem::path box_;
  int alarm_;
  std::vector<std::string> options_;
};

}  // namespace play
