// The rows of the table: a call of the library each, and its floor.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace bench {

struct Row {
  std::string name;
  std::function<void()> floor;
  std::function<void()> call;
  std::function<void()> prepare = [] {};  // what neither half counts
  bool starts_a_child = false;
};

std::vector<Row> reader_rows();
Row trace_row();
Row list_row();
Row program_row();
std::vector<Row> swap_list_rows();

}  // namespace bench
