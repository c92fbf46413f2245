// The list of the units that are marked for replacement, on every model, beside the maintenance flags of its box.

#include <cstdio>
#include <map>

#include "include/lmainte.h"
#include "tests/host/inventory/bent_box.h"
#include "tests/run.h"

namespace {

using Words = std::vector<std::string>;

struct ListedKind {
  std::uint32_t type;
  bool high_end_only;
};
// In the order of the list. The other models list no boards and have no DDC units.
constexpr ListedKind kListedKinds[] = {{LMAINTE_TYPE_CMU, true},
                                       {LMAINTE_TYPE_IOU, true},
                                       {LMAINTE_TYPE_FANTRAY, false},
                                       {LMAINTE_TYPE_PSU, false},
                                       {LMAINTE_TYPE_DDC, true}};

struct Marked {
  std::string name;
  std::string line;  // of the list
};

std::string listing_of(const std::vector<Marked> &units) {
  std::string text;
  for (const Marked &unit : units) text += unit.line + "\n";
  return text + std::to_string(units.size()) + " units\n";
}

// Some of the units are faulted, degraded or taken out: the list is of places, whatever is in them.
class MarkedUnits : public BentBox {
 protected:
  // Sets flags with a command in the box, "start UNIT" or "end UNIT" in turn. What is listed then.
  std::string listed(const Words &flags = {}) const {
    Words words = {SPBOX, "run", place().root(), "--", MARKED};
    words.insert(words.end(), flags.begin(), flags.end());
    return run_to_end(words).output;
  }

  std::string started(const std::vector<Marked> &units) const {
    Words flags;
    for (const Marked &unit : std::vector<Marked>(units.rbegin(), units.rend()))
      flags.insert(flags.end(), {"start", unit.name});
    return listed(flags);
  }

  // The units of one kind by their numbers.
  std::map<std::uint32_t, Marked> units_of(std::uint32_t type) const {
    std::map<std::uint32_t, Marked> by_number;
    for (const box::Unit &unit : units()) {
      for (const box::UnitEntry &entry : unit.place.entries) {
        if (entry.type != static_cast<int32_t>(type) || entry.at == box::kNowhere) continue;
        char line[80];
        std::snprintf(line, sizeof line, "type %u, number %u, id %08X %08X", type, entry.number, unit.place.id[0],
                      unit.place.id[1]);
        by_number[entry.number] = {unit.place.name, line};
      }
    }
    return by_number;
  }

  // The first unit and the last one of each kind that the model lists, in the order of the list.
  std::vector<Marked> some_of_each_kind() const {
    std::vector<Marked> all;
    for (const ListedKind &kind : kListedKinds) {
      if (kind.high_end_only && !box::is_high_end(GetParam())) continue;
      const std::map<std::uint32_t, Marked> by_number = units_of(kind.type);
      if (by_number.empty()) continue;
      all.push_back(by_number.begin()->second);
      all.push_back(by_number.rbegin()->second);
    }
    return all;
  }

  void put_another_one_in(const std::string &name) const {
    const box::Inventory inventory(place());
    if (inventory.unit(name).installed()) inventory.change(box::Change::kPull, {name});
    inventory.change(box::Change::kInsert, {name});
    inventory.change(box::Change::kFault, {name});
  }
};

INSTANTIATE_TEST_SUITE_P(Of, MarkedUnits, testing::Range(1u, 7u), model_of_row);

TEST_P(MarkedUnits, AreThoseUnderMaintenance) {
  EXPECT_EQ(listed(), "0 units\n");
  const std::vector<Marked> marked = some_of_each_kind();
  const std::size_t kinds = GetParam() == LMAINTE_MODEL_QE1 ? 5 : box::is_high_end(GetParam()) ? 4 : 2;
  ASSERT_EQ(marked.size(), 2 * kinds);
  EXPECT_EQ(started(marked), listing_of(marked));
  EXPECT_EQ(listed({"end", marked[0].name}), listing_of({marked.begin() + 1, marked.end()}));
  Words ends;
  for (std::size_t i = 1; i < marked.size(); ++i) ends.insert(ends.end(), {"end", marked[i].name});
  EXPECT_EQ(listed(ends), "0 units\n");
}

TEST_P(MarkedUnits, StayMarkedWhateverIsPutInTheirPlaces) {
  const std::vector<Marked> marked = some_of_each_kind();
  EXPECT_EQ(started(marked), listing_of(marked));
  ASSERT_EQ(in_child([&] {
              for (const Marked &unit : marked) put_another_one_in(unit.name);
              return 0;
            }),
            0);
  EXPECT_EQ(listed(), listing_of(marked));
}

// No list asks for these, whatever their flags are.
TEST_P(MarkedUnits, AreOfTheKindsThatAreListed) {
  const Words others = box::is_high_end(GetParam())
                           ? Words{"start", "/CMU#0/MEM#03A", "start", "/OPNL#0", "start", "/IOU#0/PCI#1"}
                           : Words{"start", GetParam() == LMAINTE_MODEL_QB2 ? "/MBU_B" : "/MBU_A", "start", "/OPNL"};
  EXPECT_EQ(listed(others), "0 units\n");
}

// The platform of this process is in the box, as that of a command that has begun its list already.
TEST_P(MarkedUnits, AreAddedWhileTheyAreUnderMaintenance) {
  lmainte_model_data data = {};
  data.model = GetParam();
  ASSERT_EQ(lmainte_init_swap_fru_list(&data), 0);
  EXPECT_EQ(lmainte_add_swap_fru_to_list(LMAINTE_TYPE_PSU, 1), 0);
  listed({"start", "/PSU#1"});
  EXPECT_EQ(lmainte_add_swap_fru_to_list(LMAINTE_TYPE_PSU, 1), 1);
  EXPECT_EQ(lmainte_check_swap_fru(LMAINTE_TYPE_PSU, 1), 1);
  listed({"end", "/PSU#1"});
  EXPECT_EQ(lmainte_delete_swap_fru_from_list(LMAINTE_TYPE_PSU, 1), 0);
  EXPECT_EQ(lmainte_add_swap_fru_to_list(LMAINTE_TYPE_PSU, 1), 0);
  lmainte_free_swap_fru_list();
}

}  // namespace
