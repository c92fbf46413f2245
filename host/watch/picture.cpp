#include "host/watch/picture.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <span>

#include "host/watch/layout.h"
#include "host/watch/marks.h"

namespace watch {
namespace {

constexpr Glyph kAcross{U'─', '-'}, kDown{U'│', '|'}, kTopLeft{U'┌', '+'}, kTopRight{U'┐', '+'}, kBottomLeft{U'└', '+'},
    kBottomRight{U'┘', '+'}, kLeftRule{U'├', '+'}, kRightRule{U'┤', '+'};

constexpr int kChassisColumns = kLeastWidth + 2, kBesideIt = 40, kLabelWidth = 9, kGap = 1, kFrame = 2, kSections = 4;

struct Box {
  int row, column, rows, columns;
};

// A list of lines under a label; of those that have no room the last are shown, or the first and how many more there are.
struct Section {
  std::string_view label;
  std::vector<std::string> lines;
  bool newest_last;
  Paint paint;
  int rows = 1;
};

class Painter {
 public:
  Painter(const Scene &scene, const View &view, int rows, int columns, Letters letters)
      : scene_(scene), server_(scene.server), view_(view), picture_{Canvas(rows, columns, letters), {}} {}

  Picture draw() &&;

 private:
  void frame(const Box &box, const std::string &title, const std::string &foot);
  void chassis(const Box &box, const Plan &plan);
  void tile(const Spot &spot, int row, int column);
  void domains(const Spot &spot, int row, int column);
  void menu(const Box &box, const Menu &menu);
  int keys();
  int main_part(int most_rows, int columns);
  void legend_in(const Box &box);
  void sections(Box box);
  void section(const Section &section, const Box &box);
  std::string title() const;
  std::string foot() const;

  Canvas &canvas() { return picture_.canvas; }

  const Scene &scene_;
  const Server &server_;
  const View &view_;
  Picture picture_;
};

std::string title_of(const Server &server, const std::string &box) {
  if (server.fan_speed.empty()) return " " + server.model + "; " + box + " ";
  return " " + server.model + ": " + (server.in_maintenance_mode ? "MAINTENANCE MODE" : "no maintenance mode") +
         ", fans " + server.fan_speed + ", " + server.note + "; " + box + " ";
}

std::string carried_text(const Server &server, std::size_t unit) {
  std::size_t carried = 0, troubled = 0, first = 0;
  for (std::size_t i = unit + 1; i < server.units.size() && server.units[i].carrier == unit; ++i) {
    ++carried;
    if (is_troubled(server.units[i]) && troubled++ == 0) first = i;
  }
  if (troubled == 0) return carried == 0 ? "" : "; carries " + std::to_string(carried);
  const std::string more = troubled > 1 ? " and " + std::to_string(troubled - 1) + " more" : "";
  return "; " + server.units[first].name + more + ": " + condition_of(server.units[first]);
}

std::vector<std::string> or_one(const std::vector<std::string> &lines, const char *otherwise) {
  return lines.empty() ? std::vector<std::string>{otherwise} : lines;
}

std::array<Section, kSections> sections_of(const Scene &scene) {
  return {{{"At work", or_one(scene.at_work, "nobody"), false, scene.at_work.empty() ? Paint::kQuiet : Paint::kPlain},
           {"Bent", or_one(scene.server.bent, "nothing"), false,
            scene.server.bent.empty() ? Paint::kQuiet : Paint::kDegraded},
           {"Trace", or_one(scene.trace, "empty"), true, scene.trace.empty() ? Paint::kQuiet : Paint::kPlain},
           {"Log", or_one(scene.log, "empty"), true, scene.log.empty() ? Paint::kQuiet : Paint::kPlain}}};
}

// Each has one row. What is left goes round among those that have more lines.
void share(std::span<Section> sections, int rows) {
  int left = rows - static_cast<int>(sections.size());
  const auto wants = [](const Section &section) { return static_cast<int>(section.lines.size()) > section.rows; };
  for (std::size_t turn = 0; left > 0; ++turn) {
    if (std::ranges::none_of(sections, wants)) return;
    Section &next = sections[turn % sections.size()];
    if (!wants(next)) continue;
    ++next.rows;
    --left;
  }
}

std::string Painter::title() const {
  return title_of(server_, view_.box);
}

std::string Painter::foot() const {
  if (!view_.chosen || *view_.chosen >= server_.units.size()) return "";
  const Unit &unit = server_.units[*view_.chosen];
  const std::string note = unit.note.empty() ? "" : " (" + unit.note + ")";
  return " " + unit.name + note + ": " + condition_of(unit) + carried_text(server_, *view_.chosen) + " ";
}

void Painter::frame(const Box &box, const std::string &title, const std::string &foot) {
  const int last_row = box.row + box.rows - 1, last = box.column + box.columns - 1;
  for (int column = box.column + 1; column < last; ++column) {
    canvas().put(box.row, column, kAcross, Paint::kQuiet);
    canvas().put(last_row, column, kAcross, Paint::kQuiet);
  }
  for (int row = box.row + 1; row < last_row; ++row) {
    canvas().put(row, box.column, kDown, Paint::kQuiet);
    canvas().put(row, last, kDown, Paint::kQuiet);
  }
  canvas().put(box.row, box.column, kTopLeft, Paint::kQuiet);
  canvas().put(box.row, last, kTopRight, Paint::kQuiet);
  canvas().put(last_row, box.column, kBottomLeft, Paint::kQuiet);
  canvas().put(last_row, last, kBottomRight, Paint::kQuiet);
  canvas().put(box.row, box.column + 2, title, Paint::kHead, box.columns - 4);
  canvas().put(last_row, box.column + 2, foot, Paint::kHead, box.columns - 4);
}

void Painter::tile(const Spot &spot, int row, int column) {
  const Unit &unit = server_.units[spot.unit];
  const Mark state = state_mark(unit, carries_trouble(server_, spot.unit));
  int at = column;
  if (spot.look == Look::kTile) at = canvas().put(row, column, spot.text);
  canvas().put(row, at, state.glyph, state.paint);
  if (spot.look == Look::kTile) {
    const Mark flag = flag_mark(unit), led = led_mark(unit, view_.is_lit);
    canvas().put(row, at + 1, flag.glyph, flag.paint);
    canvas().put(row, at + 2, led.glyph, led.paint);
  }
  if (view_.chosen == spot.unit) canvas().choose(row, column, spot.width);
  picture_.regions.push_back({row, column, spot.width, spot.unit, {}, {}});
}

// "+07" runs in domain 7, "-07" does not run, "---" belongs to none.
void Painter::domains(const Spot &spot, int row, int column) {
  for (const Part &part : server_.parts) {
    if (part.board != spot.unit) continue;
    std::string text = " --";
    if (!part.readable) text = " ??";
    if (part.readable && part.domain <= Part::kLastDomain) {
      text = (part.active ? "+" : "-") + std::string(part.domain < 10 ? "0" : "") + std::to_string(part.domain);
    }
    const Paint paint = !part.readable ? Paint::kUnreadable : part.active ? Paint::kGood : Paint::kQuiet;
    column = canvas().put(row, column, text, paint);
  }
}

void Painter::chassis(const Box &box, const Plan &plan) {
  frame(box, title(), foot());
  const int last = box.row + box.rows - 1;
  for (const int rule : plan.rules) {
    const int row = box.row + 1 + rule, end = box.column + box.columns - 1;
    if (row >= last) continue;
    canvas().put(row, box.column, kLeftRule, Paint::kQuiet);
    for (int column = box.column + 1; column < end; ++column) canvas().put(row, column, kAcross, Paint::kQuiet);
    canvas().put(row, end, kRightRule, Paint::kQuiet);
  }
  for (const Caption &caption : plan.captions) {
    const int row = box.row + 1 + caption.row;
    if (row < last) canvas().put(row, box.column + 1 + caption.column, caption.text, Paint::kQuiet);
  }
  for (const Spot &spot : plan.spots) {
    const int row = box.row + 1 + spot.row, column = box.column + 1 + spot.column;
    if (row >= last) continue;
    if (spot.look == Look::kDomains) {
      domains(spot, row, column);
    } else {
      tile(spot, row, column);
    }
  }
}

void Painter::menu(const Box &box, const Menu &menu) {
  frame(box, " " + menu.title + " ", "");
  const auto room = static_cast<std::size_t>(box.rows - kFrame);
  const std::size_t last = menu.lines.size() > room ? menu.lines.size() - room : 0;
  const std::size_t first = std::min(menu.chosen > room / 2 ? menu.chosen - room / 2 : 0, last);
  int row = box.row + 1;
  for (std::size_t line = first; line < std::min(first + room, menu.lines.size()); ++line, ++row) {
    canvas().put(row, box.column + 2, menu.lines[line], Paint::kPlain, box.columns - 4);
    if (line == menu.chosen) canvas().choose(row, box.column + 1, box.columns - 2);
    picture_.regions.push_back({row, box.column + 1, box.columns - 2, {}, line, {}});
  }
}

// In the last rows. Returns how many it takes.
int Painter::keys() {
  if (view_.keys.empty()) return 0;
  struct Place {
    int row, column;
  };
  std::vector<Place> places;
  Place at{0, 0};
  const auto width_of = [](const KeyHint &key) { return static_cast<int>(key.name.size() + 1 + key.what.size()); };
  for (const KeyHint &key : view_.keys) {
    if (at.column > 0 && at.column + width_of(key) > canvas().columns()) at = {at.row + 1, 0};
    places.push_back(at);
    at.column += width_of(key) + kGap + 1;
  }
  const int rows = at.row + 1, top = canvas().rows() - rows;
  for (std::size_t i = 0; i < places.size(); ++i) {
    const KeyHint &key = view_.keys[i];
    const int row = top + places[i].row;
    const int behind = canvas().put(row, places[i].column, key.name, Paint::kKey);
    canvas().put(row, behind + 1, key.what, Paint::kPlain);
    picture_.regions.push_back({row, places[i].column, width_of(key), {}, {}, key.key});
  }
  if (!view_.message.empty()) {
    const int row = canvas().rows() - 1;
    canvas().clear(row, 0, canvas().columns());
    canvas().put(row, 0, view_.message, Paint::kHead);
  }
  return rows;
}

void Painter::section(const Section &section, const Box &box) {
  canvas().put(box.row, box.column, section.label, Paint::kQuiet, box.columns);
  const auto &lines = section.lines;
  const auto room = static_cast<std::size_t>(section.rows);
  const bool has_room = lines.size() <= room;
  const std::size_t first = has_room || !section.newest_last ? 0 : lines.size() - room;
  for (std::size_t i = 0; i < room && first + i < lines.size(); ++i) {
    const bool is_cut = !has_room && !section.newest_last && i + 1 == room;
    const std::size_t left = lines.size() - first - i;
    const std::string text = is_cut && room > 1 ? "and " + std::to_string(left) + " more"
                             : is_cut           ? lines[first + i] + "; " + std::to_string(left - 1) + " more"
                                                : lines[first + i];
    canvas().put(box.row + static_cast<int>(i), box.column + kLabelWidth, text, section.paint,
                 box.columns - kLabelWidth);
  }
}

// What happens in the box, in all of this place.
void Painter::sections(Box box) {
  if (!scene_.trouble.empty()) {
    canvas().put(box.row++, box.column, scene_.trouble, Paint::kFaulted, box.columns);
    --box.rows;
  }
  std::array<Section, kSections> all = sections_of(scene_);
  share(all, box.rows);
  for (const Section &each : all) {
    section(each, box);
    box.row += each.rows;
  }
}

void Painter::legend_in(const Box &box) {
  const std::vector<LegendRow> rows = legend();
  for (std::size_t i = 0; i < rows.size() && static_cast<int>(i) < box.rows; ++i) {
    const int row = box.row + static_cast<int>(i);
    canvas().put(row, box.column + 1, rows[i].mark.glyph, rows[i].mark.paint);
    canvas().put(row, box.column + 3, rows[i].meaning, Paint::kQuiet, box.columns - 3);
  }
}

// The chassis, or a menu in its place, as high as it has to be. Returns its rows.
int Painter::main_part(int most_rows, int columns) {
  const bool is_inside = view_.inside && *view_.inside < server_.units.size();
  const Plan plan = is_inside ? plan_inside(server_, *view_.inside, columns - kFrame)
                              : plan_of(server_, columns - kFrame, most_rows - kFrame);
  const int wanted = view_.menu ? std::max(plan.rows, static_cast<int>(view_.menu->lines.size())) : plan.rows;
  const Box box{0, 0, std::min(wanted + kFrame, most_rows), columns};
  if (view_.menu) {
    menu(box, *view_.menu);
  } else {
    chassis(box, plan);
  }
  return box.rows;
}

Picture Painter::draw() && {
  const int rows = canvas().rows() - keys(), columns = canvas().columns();
  const bool is_beside = columns >= kChassisColumns + kGap + kBesideIt;
  if (is_beside) {
    const int chassis_rows = main_part(rows, kChassisColumns);
    legend_in({chassis_rows, 0, rows - chassis_rows, kChassisColumns});
    sections({0, kChassisColumns + kGap, rows, columns - kChassisColumns - kGap});
  } else {
    const int below = kSections + (scene_.trouble.empty() ? 0 : 1);
    const int chassis_rows = main_part(rows - below, columns);
    sections({chassis_rows, 0, rows - chassis_rows, columns});
  }
  return std::move(picture_);
}

}  // namespace

Picture draw(const Scene &scene, const View &view, int rows, int columns, Letters letters) {
  return Painter(scene, view, std::max(rows, kLeastRows), std::max(columns, kLeastColumns), letters).draw();
}

}  // namespace watch
