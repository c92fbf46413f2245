// A box of a model for one test, many of its units out of order or taken out, with the platform of this process in it.
//
// LMDB allows a process one view of a database, and that is the platform's here: the box is made by a child, and what it holds
// is read from a copy.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "host/box/contents.h"
#include "host/box/inventory.h"
#include "host/box/model.h"
#include "tests/host/box/child.h"
#include "tests/host/box/scratch.h"

class BentBox : public testing::TestWithParam<std::uint32_t> {
 protected:
  void SetUp() override {
    ASSERT_EQ(in_child([&] {
                box::create_box(place(), GetParam());
                bend();
                return 0;
              }),
              0);
    std::filesystem::copy(place().root(), scratch_ / "copy",
                          std::filesystem::copy_options::recursive | std::filesystem::copy_options::copy_symlinks);
    const box::Place copy(scratch_ / "copy");
    contents_ = box::contents_of(copy);
    units_ = box::Inventory(copy).units();
    setenv("SPBOX_ROOT", place().root().c_str(), 1);
  }
  void TearDown() override { unsetenv("SPBOX_ROOT"); }

  box::Place place() const { return box::Place(scratch_ / "box"); }
  const box::Model &model() const { return *box::find_model(GetParam()); }
  int32_t code() const { return static_cast<int32_t>(GetParam()); }

  // A record as the box holds it.
  const box::Bytes &record(std::uint32_t db_id, const std::string &name) const {
    return contents_.records.at(db_id).at(name);
  }

  // Every unit, each carried one behind the one that carries it.
  const std::vector<box::Unit> &units() const { return units_; }

  int32_t units_of_type(int32_t type) const {
    int32_t count = 0;
    for (const box::Unit &unit : units_)
      for (const box::UnitEntry &entry : unit.place.entries) count += entry.type == type && entry.at != box::kNowhere;
    return count;
  }

 private:
  static bool contains(const std::vector<std::string> &names, const std::string &name) {
    return std::find(names.begin(), names.end(), name) != names.end();
  }

  // Every fifth unit faulted, degraded, or taken out with what it carries.
  void bend() const {
    const box::Inventory inventory(place());
    std::vector<std::string> faulted;
    std::vector<std::string> degraded;
    std::vector<std::string> pulled;
    for (std::size_t i = 0; i < inventory.places().size(); ++i) {
      const box::UnitPlace &unit = inventory.places()[i];
      if (unit.carried && contains(pulled, unit.carrier())) continue;
      if (i % 5 == 1) faulted.push_back(unit.name);
      if (i % 5 == 2) degraded.push_back(unit.name);
      if (i % 5 == 4) pulled.push_back(unit.name);
    }
    inventory.change(box::Change::kFault, faulted);
    inventory.change(box::Change::kDegrade, degraded);
    inventory.change(box::Change::kPull, pulled);
  }

  Scratch scratch_;
  box::Contents contents_;
  std::vector<box::Unit> units_;
};

// The operator panel and the PCI slots are in no reader's records.
inline bool has_reader(const box::UnitEntry &entry) {
  return entry.type != 2 && entry.type != 104;
}

// What one of two sets has and the other lacks, a line each: nothing when they are alike.
inline std::set<std::string> differences(const std::set<std::string> &seen, const std::set<std::string> &expected) {
  std::set<std::string> lines;
  for (const std::string &one : seen)
    if (!expected.contains(one)) lines.insert("not in the box: " + one);
  for (const std::string &one : expected)
    if (!seen.contains(one)) lines.insert("only in the box: " + one);
  return lines;
}

inline std::string model_of_row(const testing::TestParamInfo<std::uint32_t> &row) {
  return std::string(box::model_name(row.param));
}
