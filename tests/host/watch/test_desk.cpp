// What keys and clicks mean.
#include "host/watch/desk.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/host/watch/scenes.h"

namespace {

using watch::Desk;
using watch::Hand;

// Somebody at a server, with the picture that they see.
class Visitor {
 public:
  explicit Visitor(const char *model, int rows = 24, int columns = 80)
      : scene(scene_of(model)), rows_(rows), columns_(columns) {
    for (const box::Program &program : box::kPrograms)
      scene.server.programs.push_back(std::string(program.name) + ": straight");
  }

  watch::Picture picture() const { return watch::draw(scene, desk.view(), rows_, columns_, watch::Letters::kAscii); }
  std::string screen() const {
    std::string text;
    for (const std::string &line : picture().canvas.lines()) text += line + "\n";
    return text;
  }
  std::optional<Hand> press(int key) { return desk.press(key, scene, picture()); }
  std::optional<Hand> type(const std::string &keys) {
    std::optional<Hand> last;
    for (const char key : keys) last = press(key);
    return last;
  }
  // Where the screen shows this text.
  std::optional<Hand> click(const std::string &text) {
    const auto lines = picture().canvas.lines();
    for (std::size_t row = 0; row < lines.size(); ++row) {
      const auto at = lines[row].find(text);
      if (at != std::string::npos) return desk.click(static_cast<int>(row), static_cast<int>(at), scene, picture());
    }
    ADD_FAILURE() << "no " << text << " in\n" << screen();
    return std::nullopt;
  }
  std::string chosen() const { return scene.server.units.at(desk.view().chosen.value()).name; }

  watch::Scene scene;
  Desk desk{"box"};

 private:
  int rows_, columns_;
};

struct WayCase {
  const char *says, *model;
  std::vector<int> keys;
  const char *chosen;
};

TEST(DeskTest, GoesWhereTheKeysSay) {
  using enum watch::Key;
  const WayCase rows[] = {
      {"begins at the first unit", "qe2", {}, "/CMU#0"},
      {"right, to the next in the row", "qe2", {kRight}, "/CMU#0/CPUM#0"},
      {"down, to the next board", "qe2", {kDown, kDown}, "/CMU#2"},
      {"not beyond an end", "qe2", {kUp, kLeft}, "/CMU#0"},
      {"down to the power supplies", "qa", {kDown, kRight}, "/PSU#1"},
      {"into a unit", "qe2", {kDown, '\n'}, "/CMU#1/CPUM#0"},
      {"and among what it carries", "qe2", {kDown, '\n', kDown, kRight}, "/CMU#1/MEM#02A"},
      {"and out of it again", "qe2", {kDown, '\n', kDown, kEscape}, "/CMU#1"},
      {"to a unit by its name", "qe2", {'/', 'P', 'S', 'U', '#', '4', '1', '\n'}, "/PSU#41"},
      {"to one that another carries", "qe3", {'/', '/', 'C', 'M', 'U', '#', '7', '/', 'M', '\n'}, "/CMU#7/MEM#03A"},
      {"not where the search is left", "qe2", {'/', 'P', 'S', 'U', kEscape}, "/CMU#0"},
      {"with a letter taken back", "qe2", {'/', 'O', 'P', 'S', kBackspace, kBackspace, 'P', '\n'}, "/OPNL#0"},
  };
  for (const WayCase &row : rows) {
    Visitor visitor(row.model);
    for (const int key : row.keys) EXPECT_FALSE(visitor.press(key).has_value()) << row.says;
    EXPECT_EQ(visitor.chosen(), row.chosen) << row.says << "\n" << visitor.screen();
    EXPECT_NE(visitor.screen().find(" " + visitor.chosen() + ": Normal"), std::string::npos) << visitor.screen();
  }
}

TEST(DeskTest, GoesFromTroubleToTrouble) {
  Visitor visitor("qe3");
  visitor.press('n');
  EXPECT_EQ(visitor.desk.view().message, "No unit is in trouble.");
  unit_in(visitor.scene, "/PSU#22").state = watch::State::kOut;
  unit_in(visitor.scene, "/CMU#3/MEM#03A").state = watch::State::kFaulted;
  unit_in(visitor.scene, "/FAN_A#1/FAN#2").state = watch::State::kDegraded;
  for (const char *name : {"/CMU#3/MEM#03A", "/PSU#22", "/FAN_A#1/FAN#2", "/CMU#3/MEM#03A"}) {
    visitor.press('n');
    EXPECT_EQ(visitor.chosen(), name);
    EXPECT_NE(visitor.screen().find(" " + std::string(name) + ": "), std::string::npos) << visitor.screen();
  }
}

TEST(DeskTest, LetsHandsChangeTheUnitThatIsChosen) {
  for (const technician::ChangeRow &row : technician::kChanges) {
    Visitor visitor("qa");
    visitor.press(watch::kDown);
    const auto hand = visitor.press(row.verb.front());
    ASSERT_TRUE(hand) << row.verb;
    EXPECT_EQ(hand->what, Hand::What::kChange);
    EXPECT_EQ(hand->change, row.change) << row.verb;
    EXPECT_EQ(hand->unit, "/PSU#0");
  }
}

TEST(DeskTest, BendsAProgramByTwoMenus) {
  Visitor visitor("qa");
  visitor.press('b');
  EXPECT_NE(visitor.screen().find("ctlmainte: straight"), std::string::npos) << visitor.screen();
  visitor.press(watch::kDown);
  visitor.press(watch::kDown);
  visitor.press(watch::kUp);
  EXPECT_FALSE(visitor.press('\n'));
  EXPECT_NE(visitor.screen().find("ctlfan: Enter takes a way"), std::string::npos) << visitor.screen();
  visitor.press(watch::kDown);
  const auto hand = visitor.press('\n');
  ASSERT_TRUE(hand);
  EXPECT_EQ(hand->what, Hand::What::kBend);
  EXPECT_EQ(hand->program, 1U);
  EXPECT_EQ(watch::bends()[hand->way].bend.exit, 1);
  EXPECT_FALSE(visitor.desk.view().menu);
  visitor.press('b');
  EXPECT_FALSE(visitor.press(watch::kEscape));
  EXPECT_FALSE(visitor.desk.view().menu);
}

TEST(DeskTest, AsksBeforeItPutsAllRight) {
  Visitor visitor("qa");
  EXPECT_FALSE(visitor.type("a"));
  EXPECT_NE(visitor.screen().find("y: yes, n: no"), std::string::npos) << visitor.screen();
  EXPECT_FALSE(visitor.type("n"));
  EXPECT_FALSE(visitor.type("y"));
  const auto hand = visitor.type("ay");
  ASSERT_TRUE(hand);
  EXPECT_EQ(hand->what, Hand::What::kHeal);
}

TEST(DeskTest, TakesClicks) {
  Visitor visitor("qe1");
  EXPECT_FALSE(visitor.click("40."));
  EXPECT_EQ(visitor.chosen(), "/PSU#40");
  const auto hand = visitor.click("f fault");
  ASSERT_TRUE(hand);
  EXPECT_EQ(hand->unit, "/PSU#40");
  visitor.click("0 CMU");
  visitor.click("0 CMU");
  EXPECT_EQ(visitor.chosen(), "/CMU#0/CPUM#0");
  visitor.click("b bend");
  visitor.click("ctlled: straight");
  EXPECT_NE(visitor.screen().find("ctlled: Enter"), std::string::npos);
  EXPECT_EQ(visitor.click("hangs until")->program, 5U);
  EXPECT_FALSE(visitor.click("At work"));
}

TEST(DeskTest, EndsAtItsKey) {
  Visitor visitor("qa");
  visitor.type("?q");
  EXPECT_FALSE(visitor.desk.is_over());
  visitor.type("/q");
  visitor.press('\n');
  EXPECT_FALSE(visitor.desk.is_over());
  visitor.type("q");
  EXPECT_TRUE(visitor.desk.is_over());
}

// However small the window, and whatever is shown.
TEST(DeskTest, ShowsEveryKey) {
  for (const char *model : {"qa", "qb1", "qb2", "qe1", "qe2", "qe3"}) {
    for (const auto &[rows, columns] : {std::pair(24, 80), std::pair(50, 160)}) {
      Visitor visitor(model, rows, columns);
      const std::string screen = visitor.screen();
      for (const watch::KeyHint &key : visitor.desk.view().keys) {
        EXPECT_NE(screen.find(key.name + " " + key.what), std::string::npos) << key.what << "\n" << screen;
      }
      for (const char *label : {"At work", "Bent", "Trace", "Log"})
        EXPECT_NE(screen.find(label), std::string::npos) << screen;
    }
  }
}

}  // namespace
