// Units for lists and status tables, and the pages that the pager gets of them.
#pragma once

#include <cstdint>
#include <cstring>
#include <functional>
#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "tests/unit/dialogue/golden.h"
#include "tests/unit/doubles/library_test.h"

namespace doubles {

// A unit by its location and its words of state.
struct UnitRow {
  const char *name;
  uint32_t status;
  uint32_t condition = 0;  // of the word that says how the unit fares
  uint8_t flags = 0;       // where there are such
};

class ShowTest : public LibraryTest {
 protected:
  static constexpr uint32_t kInstalled = 0x80000000;

  // Gives a unit id to a record or a slot, and the location to the unit id.
  void locate(uint32_t (&unit_id)[2], const std::string &location) {
    unit_id[0] = 0xA0000000;
    unit_id[1] = ++last_id_;
    machine().names[{unit_id[0], unit_id[1]}] = location;
  }

  // A record of which only what a list may read has a meaning.
  template <class Unit>
  Unit unit(const std::string &location, uint32_t status, uint32_t mainte_status) {
    Unit record;
    std::memset(&record, 0xB5, sizeof record);
    locate(record.unit_id, location);
    record.status = static_cast<int32_t>(status);
    record.mainte_status = static_cast<decltype(record.mainte_status)>(mainte_status);
    return record;
  }

  // The page as the pager got it, and that it got one.
  static std::string page_of(const std::function<int32_t()> &show) {
    machine().pages.clear();
    EXPECT_EQ(show(), 0);
    EXPECT_EQ(machine().pages.size(), 1u);
    EXPECT_EQ(machine().pages_path, "/tmp/mainte_fru_list.4711");
    return machine().pages.empty() ? "no page" : machine().pages[0];
  }

  static const ListLine *no_lines() {
    static const ListLine kEnd = end_mark();
    return &kEnd;
  }

 private:
  uint32_t last_id_ = 0;
};

// The lines around a list of units: what they are, and how many.
inline std::vector<ListLine> list_lines(const char *heading, const char *count, uint32_t number) {
  return {head("%s\n", {reinterpret_cast<uintptr_t>(heading)}), head("No. Unit            State\n"),
          foot("%d %s.\n", {number, reinterpret_cast<uintptr_t>(count)}), end_mark()};
}

// The lines around a table of one unit.
inline std::vector<ListLine> table_lines(const char *heading) {
  return {head("%s\n", {reinterpret_cast<uintptr_t>(heading)}), foot("As it is now.\n"), end_mark()};
}

}  // namespace doubles
