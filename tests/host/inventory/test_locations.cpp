// The location of every unit of every model, turned into its position in a box.

#include <sstream>

#include "tests/host/inventory/bent_box.h"
#include "tests/run.h"

namespace {

using Lines = std::set<std::string>;

class Locations : public BentBox {
 protected:
  Lines located(const std::vector<std::string> &locations) const {
    std::vector<std::string> words = {SPBOX, "run", place().root(), "--", LOCATE};
    words.insert(words.end(), locations.begin(), locations.end());
    const auto done = run_to_end(words);
    EXPECT_EQ(done.exit_status, 0) << done.output;
    Lines lines;
    std::istringstream output(done.output);
    for (std::string line; std::getline(output, line);) lines.insert(line);
    return lines;
  }
};

INSTANTIATE_TEST_SUITE_P(Of, Locations, testing::Range(1u, 7u), model_of_row);

TEST_P(Locations, OfEveryUnitGiveItsId) {
  std::vector<std::string> locations;
  Lines expected;
  for (const box::Unit &unit : units()) {
    if (unit.place.id == box::UnitId{}) continue;  // a fan of a tray
    char line[160];
    std::snprintf(line, sizeof line, "%s 0x%08X 0x%08X", unit.place.name.c_str(), unit.place.id[0], unit.place.id[1]);
    locations.push_back(unit.place.name);
    expected.insert(line);
  }
  EXPECT_GT(locations.size(), 10u);
  EXPECT_EQ(differences(located(locations), expected), Lines());
}

TEST_P(Locations, ThatTheModelLacksGiveNone) {
  EXPECT_EQ(located({"/PSU#99", "/CMU#0/", "PSU#0", "/PSU#00", "/XYZ", "/IOX@0001"}),
            (Lines{"/PSU#99 222", "/CMU#0/ 222", "PSU#0 222", "/PSU#00 222", "/XYZ 222", "/IOX@0001 222"}));
}

}  // namespace
