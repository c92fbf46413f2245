#include "host/watch/desk.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <span>
#include <utility>

#include "host/watch/marks.h"

namespace watch {
namespace {

const BendRow kBends[] = {
    {"does what it should", {}},
    {"does nothing and ends with 1", {.exit = 1}},
    {"waits 5 seconds first", {.delay = 5}},
    {"hangs until SIGTERM", {.hang = true}},
    {"hangs and does not end at SIGTERM", {.ignore_term = true, .hang = true}},
    {"does nothing and dies by SIGKILL", {.die = SIGKILL}},
};

constexpr std::string_view kFind = "Find a unit: ",
                           kHeal = "Put all right again, units and what is bent or broken? y: yes, n: no";

}  // namespace

std::span<const BendRow> bends() {
  return kBends;
}

// A key, how the picture names it, and what it does. One without a name goes without saying beside another.
struct Desk::KeyRow {
  int key;
  std::string_view name, what;
  void (Desk::*act)();
};

std::span<const Desk::KeyRow> Desk::key_rows() {
  static constexpr KeyRow kRows[] = {
      {kUp, "arrows", "go", &Desk::go_up},
      {kDown, "", "", &Desk::go_down},
      {kLeft, "", "", &Desk::go_left},
      {kRight, "", "", &Desk::go_right},
      {kEnter, "Enter", "inside", &Desk::look_inside},
      {kEscape, "Esc", "out", &Desk::look_outside},
      {'n', "n", "next trouble", &Desk::go_to_next_trouble},
      {'/', "/", "find", &Desk::begin_to_find},
      {'?', "?", "marks", &Desk::show_legend},
      {kQuit, "q", "quit", &Desk::quit},
      {'p', "p", "pull", &Desk::pull},
      {'i', "i", "insert", &Desk::insert},
      {'f', "f", "fault", &Desk::fault},
      {'d', "d", "degrade", &Desk::degrade},
      {'r', "r", "repair", &Desk::repair},
      {'b', "b", "bend", &Desk::choose_program},
      {'a', "a", "all right", &Desk::ask_to_heal},
  };
  return kRows;
}

Desk::Desk(std::string box) {
  view_.box = std::move(box);
  view_.chosen = 0;
  for (const KeyRow &row : key_rows()) {
    if (!row.name.empty()) view_.keys.push_back({row.key, std::string(row.name), std::string(row.what)});
  }
}

std::optional<Hand> Desk::press(int key, const Scene &scene, const Picture &picture) {
  scene_ = &scene;
  picture_ = &picture;
  hand_.reset();
  switch (mode_) {
    case Mode::kFinding:
      find(key);
      break;
    case Mode::kAsking:
      answer(key);
      break;
    case Mode::kPrograms:
    case Mode::kWays:
    case Mode::kLegend:
      press_in_menu(key);
      break;
    case Mode::kPicture:
      view_.message.clear();
      const auto rows = key_rows();
      const auto row = std::ranges::find(rows, key, &KeyRow::key);
      if (row != rows.end()) (this->*row->act)();
      break;
  }
  return std::exchange(hand_, std::nullopt);
}

std::optional<Hand> Desk::click(int row, int column, const Scene &scene, const Picture &picture) {
  const auto hit = std::ranges::find_if(picture.regions, [&](const Region &region) {
    return region.row == row && region.column <= column && column < region.column + region.width;
  });
  if (hit == picture.regions.end()) return std::nullopt;
  if (hit->key) return press(*hit->key, scene, picture);
  if (hit->menu_line && view_.menu) {
    view_.menu->chosen = *hit->menu_line;
    return press(kEnter, scene, picture);
  }
  if (!hit->unit || mode_ != Mode::kPicture) return std::nullopt;
  // A second click on a unit looks into it.
  if (view_.chosen == hit->unit) return press(kEnter, scene, picture);
  view_.chosen = hit->unit;
  view_.message.clear();
  return std::nullopt;
}

// ---- where they look -----------------------------------------------------------------------------------------------

void Desk::go(int rows, int columns) {
  const auto chosen = std::ranges::find(picture_->regions, view_.chosen, &Region::unit);
  const bool is_shown = view_.chosen && chosen != picture_->regions.end();
  const Region *best = nullptr;
  int best_distance = 0;
  for (const Region &region : picture_->regions) {
    if (!region.unit) continue;
    if (!is_shown) return choose(*region.unit);
    const int down = (region.row - chosen->row) * (rows == 0 ? 1 : rows);
    const int right = region.column + region.width / 2 - chosen->column - chosen->width / 2;
    const bool fits = rows != 0 ? down > 0 : region.row == chosen->row && right * columns > 0;
    // The nearest row counts before what stands nearest in it.
    constexpr int kRow = 1000;
    const int distance = rows != 0 ? down * kRow + std::abs(right) : std::abs(right);
    if (fits && (best == nullptr || distance < best_distance)) {
      best = &region;
      best_distance = distance;
    }
  }
  if (best != nullptr) view_.chosen = best->unit;
}

// Also where the picture has to look into another unit for it.
void Desk::choose(std::size_t unit) {
  const std::uint32_t carrier = scene_->server.units.at(unit).carrier;
  const bool is_shown =
      std::ranges::find(picture_->regions, std::optional(unit), &Region::unit) != picture_->regions.end();
  view_.chosen = unit;
  if (is_shown) return;
  view_.inside = carrier == kNobody ? std::nullopt : std::optional<std::size_t>(carrier);
}

void Desk::look_inside() {
  const auto &units = scene_->server.units;
  if (!view_.chosen || *view_.chosen >= units.size()) return;
  const std::size_t first = *view_.chosen + 1;
  if (first >= units.size() || units[first].carrier != *view_.chosen) return say("It carries no other unit.");
  view_.inside = view_.chosen;
  view_.chosen = first;
}

void Desk::look_outside() {
  if (!view_.inside) return;
  view_.chosen = view_.inside;
  view_.inside.reset();
}

void Desk::go_to_next_trouble() {
  const auto &units = scene_->server.units;
  for (std::size_t i = 1; i <= units.size(); ++i) {
    const std::size_t unit = (view_.chosen.value_or(0) + i) % units.size();
    if (is_troubled(units[unit])) return choose(unit);
  }
  say("No unit is in trouble.");
}

void Desk::begin_to_find() {
  mode_ = Mode::kFinding;
  typed_.clear();
  say(std::string(kFind));
}

void Desk::find(int key) {
  if (key == kBackspace && !typed_.empty()) typed_.pop_back();
  if (key > ' ' && key < 0x7F) typed_ += static_cast<char>(key);
  say(std::string(kFind) + typed_);
  if (key != kEnter && key != kEscape) return;
  mode_ = Mode::kPicture;
  view_.message.clear();
  if (key == kEscape || typed_.empty()) return;
  const auto &units = scene_->server.units;
  const auto fits = [&](const Unit &unit) { return unit.name == typed_ || unit.name == "/" + typed_; };
  auto found = std::ranges::find_if(units, fits);
  if (found == units.end()) {
    found = std::ranges::find_if(units, [&](const Unit &unit) { return unit.name.find(typed_) != std::string::npos; });
  }
  if (found == units.end()) return say("No unit has " + typed_ + " in its name.");
  choose(static_cast<std::size_t>(found - units.begin()));
}

// ---- what hands are to do ------------------------------------------------------------------------------------------

void Desk::change(box::Change change) {
  if (!view_.chosen || *view_.chosen >= scene_->server.units.size()) return;
  hand_ = Hand{.what = Hand::What::kChange, .change = change, .unit = scene_->server.units[*view_.chosen].name};
}

void Desk::ask_to_heal() {
  mode_ = Mode::kAsking;
  say(std::string(kHeal));
}

void Desk::answer(int key) {
  mode_ = Mode::kPicture;
  view_.message.clear();
  if (key == 'y') hand_ = Hand{.what = Hand::What::kHeal};
}

void Desk::choose_program() {
  mode_ = Mode::kPrograms;
  view_.menu = Menu{"Bend which program? Enter takes it, Esc leaves", scene_->server.programs, 0};
}

void Desk::show_legend() {
  mode_ = Mode::kLegend;
  view_.menu = Menu{"The marks: state, flag and LED. Esc leaves", {}, 0};
  for (const LegendRow &row : legend()) {
    const std::string both =
        utf8_of(row.mark.glyph.fine) + (row.mark.glyph.plain == static_cast<char>(row.mark.glyph.fine)
                                            ? "     "
                                            : std::string(" or ") + row.mark.glyph.plain);
    view_.menu->lines.push_back(both + "  " + std::string(row.meaning));
  }
}

void Desk::leave_menu() {
  mode_ = Mode::kPicture;
  view_.menu.reset();
}

void Desk::press_in_menu(int key) {
  Menu &menu = *view_.menu;
  if (key == kUp && menu.chosen > 0) --menu.chosen;
  if (key == kDown && menu.chosen + 1 < menu.lines.size()) ++menu.chosen;
  if (key == kEscape || key == 'q') leave_menu();
  if (key == kEnter) take_menu_line();
}

void Desk::take_menu_line() {
  const std::size_t chosen = view_.menu->chosen;
  if (mode_ == Mode::kPrograms && chosen < box::kPrograms.size()) {
    mode_ = Mode::kWays;
    program_ = chosen;
    view_.menu = Menu{std::string(box::kPrograms.at(chosen).name) + ": Enter takes a way, Esc leaves", {}, 0};
    for (const BendRow &row : bends()) view_.menu->lines.emplace_back(row.words);
    return;
  }
  if (mode_ == Mode::kWays) hand_ = Hand{.what = Hand::What::kBend, .program = program_, .way = chosen};
  leave_menu();
}

}  // namespace watch
