#include "host/watch/layout.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <map>
#include <optional>
#include <span>
#include <string_view>

#include "host/base/number.h"

namespace watch {
namespace {

// A part of a row: the units whose names fit a pattern. In a pattern, "?" stands for a letter, "%" for the number of the board, and
// "#" at the end for what tells the units apart.
struct Bay {
  std::string_view label;  // "%": the board's number
  std::string_view pattern;
  Look look = Look::kTile;
  std::string_view heading = {};
  bool only_with_room = false;
};

// A row of the chassis. One that has a "%" stands for as many as there are such boards.
struct ChassisRow {
  std::string_view models;
  std::array<Bay, 9> bays;
};

constexpr ChassisRow kChassis[] = {
    {"qa qb1", {{{"MBU_A", "/MBU_A"}, {"CPUM", "/MBU_A/CPUM#"}, {"MEM", "/MBU_A/MEM#"}, {"PCI", "/MBU_A/PCI#"}}}},
    {"qb2", {{{"MBU_B", "/MBU_B"}, {"CPUM", "/MBU_B/CPUM#"}}}},
    {"qb1 qb2", {{{"MEMB#%", "/MBU_?/MEMB#%/MEM#"}}}},
    {"qb1 qb2", {{{"IOU#%", "/IOU#%"}, {"PCI", "/IOU#%/PCI#"}}}},
    {"qe1 qe2 qe3",
     {{{"% CMU", "/CMU#%", Look::kTile, "Board"},
       {"", "/CMU#%/CPUM#", Look::kMark, "CPUM", true},
       {"", "/CMU#%/MEM#", Look::kMark, "MEM", true},
       {"IOU", "/IOU#%"},
       {"", "/IOU#%/PCI#", Look::kMark, "PCI", true},
       {"", "%", Look::kDomains, "Domains"}}}},
    {"qa qb1 qb2 qe1 qe2 qe3", {{{"PSU", "/PSU#"}}}},
    {"qa qb1 qb2 qe1 qe2 qe3",
     {{{"FAN_A", "/FAN_A#"},
       {"FAN_B", "/FAN_B#"},
       {"DDC_A", "/DDC_A#"},
       {"EMGBU", "/EMGBU"},
       {"EMGBU_B", "/EMGBU_B#"},
       {"EMGBU_C", "/EMGBU_C#"},
       {"BP_A", "/BP_A#"},
       {"OPNL", "/OPNL"},
       {"OPNL", "/OPNL#"}}}},
};

struct Fit {
  std::string board;  // what "%" stands for
  std::string label;  // what "#" at the end stands for
};

bool is_digit(char letter) {
  return std::isdigit(static_cast<unsigned char>(letter)) != 0;
}

std::optional<Fit> fit(std::string_view pattern, std::string_view name) {
  Fit found;
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    if (pattern[i] == '#' && i + 1 == pattern.size()) {
      if (!name.starts_with('#') || name.find('/') != std::string_view::npos) return std::nullopt;
      found.label = name.substr(1);
      return found;
    }
    if (pattern[i] == '%') {
      for (; !name.empty() && is_digit(name[0]); name.remove_prefix(1)) found.board += name[0];
      if (found.board.empty()) return std::nullopt;
      continue;
    }
    if (name.empty() || (pattern[i] != '?' && pattern[i] != name[0])) return std::nullopt;
    name.remove_prefix(1);
  }
  return name.empty() ? std::optional(found) : std::nullopt;
}

struct Fitting {
  std::size_t unit;
  std::string label;
};
using ByBoard = std::map<std::uint32_t, std::vector<Fitting>>;  // 0 where there is no board's number

struct ShownBay {
  const Bay *bay;
  ByBoard units;
};

// Where the next thing goes.
struct Pen {
  int row = 0, column = 0;
};

constexpr int kBetweenBays = 1, kBetweenBoards = 4, kBoardDigits = 2, kDomainWidth = 3;

std::string right_aligned(const std::string &text, std::size_t width) {
  return text.size() >= width ? text : std::string(width - text.size(), ' ') + text;
}

std::string label_of(std::string_view label, std::uint32_t board) {
  std::string text(label);
  const std::size_t at = text.find('%');
  if (at == std::string::npos) return text;
  const std::string number = std::to_string(board);
  return text.replace(at, 1, at == 0 ? right_aligned(number, kBoardDigits) : number);
}

class Drafter {
 public:
  Drafter(const Server &server, int width, bool with_room, bool with_rules)
      : server_(server), width_(width), with_room_(with_room), with_rules_(with_rules) {}

  void add(const ChassisRow &row);
  void add(const Bay &bay, const std::vector<Fitting> &units, std::uint32_t board);
  void end_line();
  Plan plan() && { return std::move(plan_); }

 private:
  ByBoard fitting(const Bay &bay) const;
  std::vector<ShownBay> shown_bays(const ChassisRow &row) const;
  void add_boards(const std::vector<ShownBay> &bays);
  void add_board(const std::vector<ShownBay> &bays, std::uint32_t board, std::optional<int> heading_row);
  void add_marks(const std::vector<Fitting> &units);
  void add_domains(std::uint32_t board);
  void put(Look look, int width, std::size_t unit, const std::string &text = "");

  const Server &server_;
  int width_;
  bool with_room_, with_rules_;
  Pen pen_;
  int left_ = 0;  // where the line begins
  Plan plan_;
};

void Drafter::put(Look look, int width, std::size_t unit, const std::string &text) {
  plan_.spots.push_back({pen_.row, pen_.column, width, look, unit, text});
  pen_.column += width;
  plan_.rows = std::max(plan_.rows, pen_.row + 1);
}

void Drafter::end_line() {
  if (pen_.column > left_) pen_ = {pen_.row + 1, left_};
}

ByBoard Drafter::fitting(const Bay &bay) const {
  ByBoard all;
  for (std::size_t i = 0; i < server_.units.size(); ++i) {
    if (const auto found = fit(bay.pattern, server_.units[i].name)) {
      const auto board = found->board.empty() ? 0 : base::number_in<std::uint32_t>(found->board).value_or(0);
      all[board].push_back({i, found->label});
    }
  }
  return all;
}

void Drafter::add_marks(const std::vector<Fitting> &units) {
  for (const Fitting &fitting : units) put(Look::kMark, 1, fitting.unit);
}

void Drafter::add_domains(std::uint32_t board) {
  const auto parts = std::ranges::count(server_.parts, board, &Part::board);
  if (parts > 0) put(Look::kDomains, static_cast<int>(parts) * kDomainWidth, board);
}

// A line ends where the numbers leave a gap, if all between two gaps has room in a line.
void Drafter::add(const Bay &bay, const std::vector<Fitting> &units, std::uint32_t board) {
  if (bay.look == Look::kDomains) return add_domains(board);
  if (bay.look == Look::kMark) return add_marks(units);
  std::string label = label_of(bay.label, board);
  if (units.size() == 1 && units.front().label.empty()) {
    const int width = static_cast<int>(label.size()) + kMarksWidth;
    if (pen_.column + width > width_) end_line();
    return put(Look::kTile, width, units.front().unit, label);
  }
  std::size_t digits = 2;
  for (const Fitting &one : units) digits = std::max(digits, one.label.size());
  if (units.front().label.size() == digits) label += ' ';
  const int tile = static_cast<int>(digits) + kMarksWidth;
  const auto label_width = static_cast<int>(label.size());
  const int all = label_width + tile * static_cast<int>(units.size());
  if (pen_.column > left_ && pen_.column + all > width_) end_line();
  const auto follows = [&](std::size_t i) {
    const auto number = base::number_in<std::uint32_t>(units[i].label),
               before = base::number_in<std::uint32_t>(units[i - 1].label);
    return !number || !before || *number == *before + 1;
  };
  int run = 1, longest = 1;
  for (std::size_t i = 1; i < units.size(); ++i) longest = std::max(longest, run = follows(i) ? run + 1 : 1);
  const bool ends_at_gaps = label_width + longest * tile <= width_;
  plan_.captions.push_back({pen_.row, pen_.column, label});
  pen_.column += label_width;
  const int indent = pen_.column;
  for (std::size_t i = 0; i < units.size(); ++i) {
    const bool is_gap = ends_at_gaps && i > 0 && !follows(i);
    if (is_gap || pen_.column + tile > width_) pen_ = {pen_.row + 1, indent};
    put(Look::kTile, tile, units[i].unit, right_aligned(units[i].label, digits));
  }
}

std::vector<ShownBay> Drafter::shown_bays(const ChassisRow &row) const {
  std::vector<ShownBay> bays;
  for (const Bay &bay : row.bays) {
    if (bay.pattern.empty() || (bay.only_with_room && !with_room_)) continue;
    bays.push_back({&bay, bay.look == Look::kDomains ? ByBoard{} : fitting(bay)});
  }
  return bays;
}

void Drafter::add_board(const std::vector<ShownBay> &bays, std::uint32_t board, std::optional<int> heading_row) {
  for (const auto &[bay, all] : bays) {
    const auto units = all.find(board);
    if (bay->look != Look::kDomains && units == all.end()) continue;
    if (pen_.column > left_) pen_.column += kBetweenBays;
    if (heading_row) plan_.captions.push_back({*heading_row, pen_.column, std::string(bay->heading)});
    add(*bay, units == all.end() ? std::vector<Fitting>{} : units->second, board);
  }
}

// Boards stand one below the other, in as many columns as there is room for.
void Drafter::add_boards(const std::vector<ShownBay> &bays) {
  const ByBoard &boards = bays.front().units;
  if (boards.empty()) return;
  const int heading_rows = bays.front().bay->heading.empty() ? 0 : 1;
  Drafter trial(server_, width_, with_room_, false);
  trial.add_board(bays, boards.begin()->first, std::nullopt);
  const int board_width = trial.pen_.column, board_rows = trial.pen_.row + 1;
  const int together = with_room_ ? 1 : std::max(1, (width_ + kBetweenBoards) / (board_width + kBetweenBoards));
  const int in_column = (static_cast<int>(boards.size()) + together - 1) / together;
  const int top = pen_.row;
  int number = 0;
  for (const auto &[board, units] : boards) {
    left_ = number / in_column * (board_width + kBetweenBoards);
    const int row_in_column = number % in_column;
    pen_ = {top + heading_rows + row_in_column * board_rows, left_};
    const bool has_heading = heading_rows > 0 && row_in_column == 0;
    add_board(bays, board, has_heading ? std::optional(top) : std::nullopt);
    ++number;
  }
  left_ = 0;
  pen_ = {top + heading_rows + in_column * board_rows, left_};
}

void Drafter::add(const ChassisRow &row) {
  if (row.models.find(server_.model) == std::string_view::npos) return;
  if (with_rules_ && plan_.rows > 0) {
    plan_.rules.push_back(pen_.row++);
    ++plan_.rows;
  }
  const std::vector<ShownBay> bays = shown_bays(row);
  if (row.bays.front().pattern.find('%') != std::string_view::npos) return add_boards(bays);
  add_board(bays, 0, std::nullopt);
  end_line();
}

Plan draft(const Server &server, int width, bool with_room, bool with_rules) {
  Drafter drafter(server, width, with_room, with_rules);
  for (const ChassisRow &row : kChassis) drafter.add(row);
  return std::move(drafter).plan();
}

}  // namespace

Plan plan_of(const Server &server, int width, int rows) {
  for (const bool with_rules : {true, false}) {
    Plan plan = draft(server, width, true, with_rules);
    if (plan.rows <= rows) return plan;
  }
  return draft(server, width, false, false);
}

Plan plan_inside(const Server &server, std::size_t unit, int width) {
  Drafter drafter(server, width, true, false);
  std::string stem;
  std::vector<Fitting> units;
  const auto add_units = [&] {
    if (!units.empty()) drafter.add({.label = stem, .pattern = "#"}, units, 0);
    drafter.end_line();
    units.clear();
  };
  for (std::size_t i = unit + 1; i < server.units.size() && server.units[i].carrier == unit; ++i) {
    const std::string_view name = std::string_view(server.units[i].name).substr(server.units[unit].name.size() + 1);
    const std::size_t at = name.rfind('#');
    const std::string own(name.substr(0, at));
    if (own != stem) add_units();
    stem = own;
    units.push_back({i, at == std::string_view::npos ? "" : std::string(name.substr(at + 1))});
  }
  add_units();
  return std::move(drafter).plan();
}

}  // namespace watch
