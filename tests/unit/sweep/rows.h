// What the failure sweep runs: a row for each exported function, and for each way through it that makes calls of its own.
#pragma once

#include <functional>
#include <iosfwd>
#include <set>
#include <string>
#include <vector>

#include "include/lmainte.h"
#include "tests/unit/doubles/machine.h"

namespace sweep {

struct Row {
  std::string name;
  std::function<int32_t()> call;
  std::set<int32_t> results = {};       // that the header lists, but for the one of a call in which nothing fails
  std::set<std::string> harmless = {};  // calls whose failure need not be one of the function
  uint32_t entry = 0;                   // its entry record, 0 where it has none of its own
  std::function<void()> prepare = [] {};
  std::vector<std::string> functions = {};  // that it calls, where it is not named after the one
  bool samples = false;                     // only the first and the last call of each kind fails
};

void PrintTo(const Row &row, std::ostream *out);

// Of the rooms of the library.
const std::vector<Row> &frame_rows();
const std::vector<Row> &ops_rows();
const std::vector<Row> &db_rows();
const std::vector<Row> &model_rows();
const std::vector<Row> &inventory_rows();
const std::vector<Row> &state_rows();
const std::vector<Row> &dialogue_rows();

// What several rooms prepare: a server of a model; children that are processes of their own; a list of four marked units,
// which returns their number.
void set_model(int32_t model);
void use_real_children();
int32_t list_marked_units();

// A function that calls nothing that could fail.
struct QuietRow {
  std::string function;
  std::function<void()> call;
  std::function<void()> prepare = [] {};
};
const std::vector<QuietRow> &quiet_rows();

}  // namespace sweep
