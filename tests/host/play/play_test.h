// A play in a folder of its own: scripts, a box where one is asked for, and a spbox that needs no root of its own for a
// command. A technician is never ready for the unit /mute, and gives up at /late; /PSU#98 takes a minute to be shown,
// and /PSU#99 is none.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host/box/hardware.h"
#include "host/box/place.h"
#include "host/play/picture.h"
#include "host/play/plan.h"
#include "host/play/player.h"
#include "tests/host/box/scratch.h"

class PlayTest : public testing::Test {
 protected:
  PlayTest();

  void write(const std::string &name, const std::string &text) const;

  // Plays a script, "walk.play" by name, and returns what is printed. Throws play::Failure and script::Error.
  std::string play(const std::string &text);

  // What the exception says that such a play throws: "no error" without one.
  std::string error_of(const std::string &text);
  // Its first line alone.
  std::string reason_of(const std::string &text);

  // What is wrong with a script, before it is played; its name is without the folder.
  std::string wrong_with(const std::string &text, const play::Values &values = {}) const;
  std::vector<play::Step> read(const std::string &text, const play::Values &values = {}) const;

  void make_box(const std::string &model) const;  // a real one, in the place of the play
  box::Place place() const { return box::Place(scratch_ / "box"); }
  std::string path(const char *name) const { return (scratch_ / name).string(); }
  std::string without_folder(std::string text) const;

  Scratch scratch_;
  play::Picture picture_;
};
