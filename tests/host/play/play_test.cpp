#include "tests/host/play/play_test.h"

#include <sys/stat.h>

#include <fstream>
#include <sstream>

#include "host/box/contents.h"
#include "host/box/model.h"

// It runs commands where it stands, works as a technician until there is a file of the unit's name, and says what else
// it was asked.
PlayTest::PlayTest() {
  write("spbox",
        "#!/bin/sh\n"
        "case $1 in\n"
        "run) shift 3; exec \"$@\" ;;\n"
        "create) mkdir \"$2\" ;;\n"
        "technician)\n"
        "  unit=${6##*/}\n"
        "  case $unit in late) exit 1 ;; mute) exec sleep 60 ;; esac\n"
        "  printf . >&3; exec 3>&-\n"
        "  while [ ! -e ${0%/*}/$unit ]; do sleep 0.02; done\n"
        "  echo worked: $unit; [ $unit != fail ] ;;\n"
        "show) echo 'Model qe2'; [ $3 = /PSU#98 ] && exec sleep 60; [ $3 != /PSU#99 ] ;;\n"
        "*) echo asked: $1 $3 ;;\n"
        "esac\n");
  chmod(path("spbox").c_str(), 0755);
}

void PlayTest::write(const std::string &name, const std::string &text) const {
  std::ofstream(scratch_ / name.c_str()) << text;
}

std::vector<play::Step> PlayTest::read(const std::string &text, const play::Values &values) const {
  write("walk.play", text);
  return play::read_plan(scratch_ / "walk.play", values, {{"pull", "show"}, [](const auto &) {}});
}

std::string PlayTest::play(const std::string &text) {
  const auto steps = read(text);
  std::ostringstream out;
  play::Transcript transcript(out);
  play::Narrator narrator(transcript, picture_);
  play::Box box(path("spbox"), scratch_ / "box", -1);
  play::Stage stage(box, narrator, -1);
  play::play_steps(stage, steps);
  return without_folder(out.str());
}

std::string PlayTest::error_of(const std::string &text) {
  try {
    play(text);
  } catch (const std::runtime_error &error) {
    return without_folder(error.what());
  }
  return "no error";
}

std::string PlayTest::reason_of(const std::string &text) {
  const auto error = error_of(text);
  return error.substr(0, error.find('\n'));
}

std::string PlayTest::wrong_with(const std::string &text, const play::Values &values) const {
  try {
    read(text, values);
  } catch (const script::Error &error) {
    return without_folder(error.what());
  }
  return "nothing";
}

void PlayTest::make_box(const std::string &model) const {
  box::create_box(place(), box::new_server(box::find_model(model)->code));
}

std::string PlayTest::without_folder(std::string text) const {
  const std::string folder = scratch_.path().string() + "/";
  for (auto at = text.find(folder); at != std::string::npos; at = text.find(folder)) text.erase(at, folder.size());
  return text;
}
