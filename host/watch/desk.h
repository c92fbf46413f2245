// What the keys and the mouse of the one who watches mean: where they look, and what their hands are to do.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/box/program_list.h"
#include "host/technician/changes.h"
#include "host/watch/picture.h"

namespace watch {

// Keys without a letter of their own. Others are the letters that they type.
enum Key : int { kUp = 0x110000, kDown, kLeft, kRight, kBackspace, kEnter = '\n', kEscape = 27, kQuit = 'q' };

// What hands can make of a control program.
struct BendRow {
  std::string_view words;
  box::Bend bend;
};
std::span<const BendRow> bends();

struct Hand {
  enum class What { kChange, kBend, kHeal };
  What what = What::kHeal;
  box::Change change{};  // of kChange, with the unit
  std::string unit{};
  std::size_t program = 0, way = 0;  // of kBend: places in kPrograms and in bends()
};

class Desk {
 public:
  explicit Desk(std::string box);

  const View &view() const { return view_; }
  bool is_over() const { return is_over_; }
  void press_without_picture(int key) { is_over_ = is_over_ || key == kQuit; }
  void say(std::string message) { view_.message = std::move(message); }
  void set_lit(bool is_lit) { view_.is_lit = is_lit; }

  // In the picture that was shown last of this scene.
  std::optional<Hand> press(int key, const Scene &scene, const Picture &picture);
  std::optional<Hand> click(int row, int column, const Scene &scene, const Picture &picture);

 private:
  struct KeyRow;
  enum class Mode { kPicture, kFinding, kAsking, kPrograms, kWays, kLegend };

  static std::span<const KeyRow> key_rows();
  void look_inside();
  void look_outside();
  void go_to_next_trouble();
  void begin_to_find();
  void choose_program();
  void ask_to_heal();
  void show_legend();
  void quit() { is_over_ = true; }
  void pull() { change(box::Change::kPull); }
  void insert() { change(box::Change::kInsert); }
  void fault() { change(box::Change::kFault); }
  void degrade() { change(box::Change::kDegrade); }
  void repair() { change(box::Change::kRepair); }
  void change(box::Change change);
  void go(int rows, int columns);
  void go_up() { go(-1, 0); }
  void go_down() { go(1, 0); }
  void go_left() { go(0, -1); }
  void go_right() { go(0, 1); }
  void choose(std::size_t unit);
  void find(int key);
  void answer(int key);
  void press_in_menu(int key);
  void take_menu_line();
  void leave_menu();

  View view_;
  Mode mode_ = Mode::kPicture;
  bool is_over_ = false;
  std::string typed_;
  std::size_t program_ = 0;
  std::optional<Hand> hand_;
  const Scene *scene_ = nullptr;  // while a key is pressed
  const Picture *picture_ = nullptr;
};

}  // namespace watch
