#include "host/sweep/table.h"

#include <algorithm>

namespace sweep {
namespace {

void add_cell(std::string &line, const std::string &text, std::size_t width) {
  line += text;
  line.resize(std::max(line.size() + 1, width), ' ');
}

std::string number_of(std::size_t number) {
  return number == 0 ? "" : std::to_string(number);
}

}  // namespace

std::vector<Tally> tallies_of(const std::vector<Tried> &tried) {
  std::vector<Tally> tallies;
  for (const Tried &one : tried) {
    auto at = std::ranges::find_if(
        tallies, [&](const Tally &tally) { return tally.kind == one.kind && tally.deviation == one.deviation; });
    if (at == tallies.end()) at = tallies.insert(tallies.end(), {one.kind, one.deviation});
    const bool is_unplayed = one.result.verdict == runner::Verdict::kUnplayed;
    ++(is_unplayed ? at->unplayed : is_wrong(one.result.verdict) ? at->failed : at->passed);
  }
  std::ranges::sort(tallies, {}, [](const Tally &tally) { return std::pair(tally.kind, tally.deviation); });
  return tallies;
}

std::string table_of(const std::vector<Tally> &tallies) {
  constexpr std::size_t kColumns[] = {16, 32, 41, 50, 59};
  std::string text, head;
  const char *const kHeads[] = {"Point", "Deviation", "Tried", "Passed", "Failed"};
  for (std::size_t i = 0; i < std::size(kHeads); ++i) add_cell(head, kHeads[i], kColumns[i]);
  text = head + "Unplayed\n";
  for (const Tally &tally : tallies) {
    std::string line;
    add_cell(line, tally.kind, kColumns[0]);
    add_cell(line, tally.deviation, kColumns[1]);
    add_cell(line, std::to_string(tally.all()), kColumns[2]);
    add_cell(line, number_of(tally.passed), kColumns[3]);
    add_cell(line, number_of(tally.failed), kColumns[4]);
    line += number_of(tally.unplayed);
    line.erase(line.find_last_not_of(' ') + 1);
    text += line + "\n";
  }
  return text;
}

}  // namespace sweep
