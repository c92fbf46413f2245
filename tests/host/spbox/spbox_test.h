// spbox as a user runs it, on boxes in a folder that is gone after the test.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host/box/database.h"
#include "host/box/hardware.h"
#include "host/box/inventory.h"
#include "host/box/place.h"
#include "tests/host/box/scratch.h"
#include "tests/run.h"

using Words = std::vector<std::string>;

class SpboxTest : public testing::Test {
 protected:
  // Runs spbox with these words, in a folder where the box is called "box".
  Done spbox(const Words &words) const;
  // The same for what must succeed; returns the output.
  std::string done(const Words &words) const;
  // The same for what must be refused: exit status 1 and one line for the user.
  std::string refused(const Words &words) const;
  // A command in the box.
  Done in_box(const Words &command) const;
  Done shell(const std::string &line) const { return in_box({"sh", "-c", line}); }

  // A file in that folder.
  void write(const std::string &name, const std::string &text) const;

  void make_box(const std::string &model) { done({"create", "box", "--model", model}); }
  box::Place place() const { return box::Place(scratch_ / "box"); }
  box::Bytes record(std::uint32_t db_id, const std::string &name) const;
  bool has_record(std::uint32_t db_id, const std::string &name) const;

  Scratch scratch_;
};

std::uint32_t word(const box::Bytes &record, std::size_t at);
