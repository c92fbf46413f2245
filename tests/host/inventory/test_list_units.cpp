// The example list_units, run in a box, beside what the box holds.

#include <sstream>

#include "host/box/database.h"
#include "tests/host/inventory/bent_box.h"
#include "tests/run.h"

namespace {

using Words = std::vector<std::string>;

const Words kKinds = {"boards", "fans", "psus", "backplane", "service", "domains"};

// A line of the tree, in columns.
struct Line {
  std::size_t depth = 0;
  Words columns;

  explicit Line(const std::string &line) : depth(line.find_first_not_of(' ') / 2) {
    std::size_t at = 2 * depth;
    while (at < line.size()) {
      const std::size_t end = std::min(line.find("  ", at), line.size());
      columns.push_back(line.substr(at, end - at));
      at = std::min(line.find_first_not_of(' ', end), line.size());
    }
  }

  bool is_unit() const {
    return columns.size() > 2 && columns[1] != "extended system board" && columns[1] != "first word of its record";
  }
};

// Location and state of every unit, a line each.
using Units = std::set<std::string>;

Units units_in(const std::string &output) {
  Units units;
  std::istringstream lines(output);
  std::string text;
  std::string above;
  while (std::getline(lines, text)) {
    if (text.empty()) continue;
    const Line line(text);
    if (line.depth == 0) above = line.columns[0];
    if (line.is_unit()) units.insert((line.depth == 0 ? above : above + "/" + line.columns[0]) + " " + line.columns[2]);
  }
  return units;
}

class ListUnits : public BentBox {
 protected:
  Done list_units(const Words &arguments = {}) const {
    Words words = {SPBOX, "run", place().root(), "--", LIST_UNITS};
    words.insert(words.end(), arguments.begin(), arguments.end());
    return run_to_end(words);
  }

  void remove(std::uint32_t db_id, const std::string &name) const {
    ASSERT_EQ(in_child([&] {
                box::Database(place().database(db_id)).remove(name);
                return 0;
              }),
              0);
  }
};

INSTANTIATE_TEST_SUITE_P(Of, ListUnits, testing::Range(1u, 7u), model_of_row);

class ListUnitsThatFails : public ListUnits {};

INSTANTIATE_TEST_SUITE_P(Of, ListUnitsThatFails, testing::Values(3u), model_of_row);

TEST_P(ListUnits, PrintsTheTreeOfTheBox) {
  Units expected;
  for (const box::Unit &unit : units())
    if (has_reader(unit.place.entries.front()))
      expected.insert(unit.place.name + " " + std::string(box::state_word(unit)));
  const auto done = list_units();
  EXPECT_EQ(done.exit_status, 0);
  EXPECT_EQ(done.output.substr(0, done.output.find('\n')), "Model " + std::string(model().name));
  EXPECT_EQ(differences(units_in(done.output), expected), Units());
}

TEST_P(ListUnits, FitsOnATerminalOf80Columns) {
  std::istringstream lines(list_units().output);
  for (std::string line; std::getline(lines, line);) EXPECT_LE(line.size(), 80u) << line;
}

TEST_P(ListUnits, PrintsOneKind) {
  const std::string whole = list_units().output;
  for (const std::string &kind : kKinds) {
    const auto done = list_units({kind});
    EXPECT_EQ(done.exit_status, 0) << kind;
    if (kind == "backplane" && model().name != "qe1")
      EXPECT_EQ(done.output, "Model " + std::string(model().name) + " has none.\n");
    else
      EXPECT_NE(whole.find("\n" + done.output), std::string::npos) << done.output;
  }
}

TEST_P(ListUnitsThatFails, NamesTheReaderAndPrintsTheRest) {
  remove(LMAINTE_DB_FRU, "fru_dimm_info_000");
  const auto done = list_units();
  EXPECT_EQ(done.exit_status, 1);
  const std::string message =
      "\nlist_units: the system boards could not be read.\n"
      "lmainte_get_sb_data gave 8. The trace names the reason.\n";
  EXPECT_NE(done.output.find(message), std::string::npos) << done.output;
  EXPECT_NE(done.output.find("\nPower supplies\n/PSU#0 "), std::string::npos) << done.output;
  EXPECT_EQ(list_units({"boards"}).exit_status, 1);
  EXPECT_EQ(list_units({"psus"}).exit_status, 0);
}

TEST_P(ListUnitsThatFails, PrintsNothingWithoutTheModel) {
  remove(LMAINTE_DB_SETUP, "setup_system_info");
  const auto done = list_units({"fans"});
  EXPECT_EQ(done.exit_status, 1);
  EXPECT_EQ(done.output,
            "list_units: the server's model could not be read.\n"
            "lmainte_get_model_data gave 8. The trace names the reason.\n");
}

TEST_P(ListUnitsThatFails, SaysThatTheListCannotBeWritten) {
  for (const char *program : {LIST_UNITS, SHOW_MODEL}) {
    const auto done =
        run_to_end({"/bin/sh", "-c", R"(exec "$0" run "$1" -- "$2" 2>&1 >/dev/full)", SPBOX, place().root(), program});
    EXPECT_EQ(done.exit_status, 1) << program;
    EXPECT_TRUE(done.output.ends_with(" could not be written.\n")) << done.output;
  }
}

TEST_P(ListUnitsThatFails, RefusesWordsThatItDoesNotKnow) {
  for (const Words &words : {Words{"everything"}, Words{""}, Words{"fans", "psus"}}) {
    const auto done = list_units(words);
    EXPECT_EQ(done.exit_status, 2);
    EXPECT_EQ(done.output,
              "usage: list_units [KIND], where KIND is one of: boards fans psus backplane service domains\n");
  }
}

}  // namespace
