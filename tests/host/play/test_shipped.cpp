// The shipped plays: each of the three procedures with every kind of unit that a model has. It is done, or refused where a server
// cannot do without its board.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <set>
#include <string>

#include "host/box/model.h"
#include "host/box/unit_records.h"
#include "host/play/plan.h"

namespace {

namespace fs = std::filesystem;

// "replace_unit psu on qe1: exit 0"
std::string line_of(const std::string &procedure, const std::string &kind, std::string_view model, const char *status) {
  return procedure + " " + kind + " on " + std::string(model) + ": exit " + status;
}

struct KindRow {
  const char *word;
  std::int32_t type;
  bool is_of_board;
};
constexpr KindRow kKinds[] = {
    {"cmu", 16, true}, {"iou", 80, true}, {"fan", 180, false}, {"psu", 161, false}, {"ddc", 212, false}};

bool has(const box::Model &model, const KindRow &row) {
  return std::ranges::any_of(box::kinds(), [&](const box::Kind &kind) {
    return kind.type == row.type && (kind.models >> model.code & 1U) != 0;
  });
}

std::set<std::string> all_lines() {
  std::set<std::string> lines;
  for (const box::Model &model : box::models()) {
    for (const KindRow &row : kKinds) {
      const char *status = row.is_of_board && model.xsbs == 0 ? "2" : "0";
      if (!has(model, row)) continue;
      for (const char *procedure : {"add_unit", "remove_unit", "replace_unit"})
        lines.insert(line_of(procedure, row.word, model.name, status));
    }
  }
  return lines;
}

std::set<std::string> played_lines() {
  const play::Verbs verbs{{"fault", "pull", "insert", "units", "show", "log"}, [](const play::Words &) {}};
  std::set<std::string> lines;
  for (const auto &entry : fs::directory_iterator(PLAYS)) {
    std::string model;
    play::Words command;
    for (const play::Step &step : play::read_plan(entry.path(), {}, verbs)) {
      if (step.row->verb == "box") model = step.words.at(0);
      if (step.row->verb == "start") command = step.words;
      if (step.row->verb == "exit")
        lines.insert(line_of(command.at(0), command.at(1), model, step.words.at(0).c_str()));
    }
  }
  return lines;
}

TEST(ShippedPlays, HaveEachProcedureWithEveryKindOfUnitOfEveryModel) {
  const std::set<std::string> played = played_lines(), all = all_lines();
  EXPECT_EQ(all.size(), 75U);
  for (const std::string &line : all) EXPECT_TRUE(played.contains(line)) << "no play has: " << line;
  for (const std::string &line : played) EXPECT_TRUE(all.contains(line)) << "a play has: " << line;
}

}  // namespace
