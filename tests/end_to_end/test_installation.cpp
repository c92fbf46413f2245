// The check that a unit was put in or taken out, with a technician whose hands are late, unsteady or missing.

#include <algorithm>
#include <optional>

#include "host/box/inventory.h"
#include "host/box/place.h"
#include "host/box/trace_ring.h"
#include "host/terminal/background_program.h"
#include "host/trace_book/trace_book.h"
#include "lmainte.h"
#include "tests/end_to_end/box_test.h"
#include "tests/eventually.h"

namespace end_to_end {
namespace {

class Installation : public BoxTest {
 protected:
  void SetUp() override { make_box("qe1"); }

  // The technician begins with a pull of /PSU#3; they are ready when that is done.
  void technician(const std::string &steps) {
    hands_.emplace(Words{SPBOX, "technician", box(), "--do", "pull /PSU#3; " + steps});
    ASSERT_TRUE(eventually([&] { return !is_installed(); }));
  }
  bool is_installed() const { return box::Inventory(box::Place(box())).unit("/PSU#3").installed(); }

  // The check of /PSU#3, to the end of the technician's work.
  std::string check(const char *expectation) {
    std::string result = run_to_end(in_box({ACT, "installed", expectation, "3"})).output;
    EXPECT_EQ(hands_->wait(), 0) << hands_->output();
    return result;
  }

  // How often the check has looked at the unit.
  std::ptrdiff_t looks() const {
    const auto entries = box::TraceRing::read(box::Place(box()).trace());
    return std::count_if(entries.begin(), entries.end(), [](const auto &entry) {
      const auto line = trace_book::words_of(entry);
      return line.function == "lmainte_chk_fru_install:test" && line.event == "exit";
    });
  }

 private:
  std::optional<terminal::BackgroundProgram> hands_;
};

TEST_F(Installation, IsMetByAUnitThatAppearsLate) {
  technician("when trace lmainte_chk_fru_install entry; after 6; insert /PSU#3");
  EXPECT_EQ(check("0"), "result 0\n");
  EXPECT_TRUE(is_installed());
}

TEST_F(Installation, IsNotMetByAUnitThatNeverComes) {
  technician("after 0");
  EXPECT_EQ(check("0"), "result 224\n");
}

TEST_F(Installation, IsNotMetByAUnitThatVanishesAgain) {
  technician(
      "when trace lmainte_chk_fru_install entry; insert /PSU#3; "
      "when trace lmainte_chk_fru_install:test exit; pull /PSU#3");
  EXPECT_EQ(check("0"), "result 224\n");
}

class InstallationInRealTime : public Installation {
 protected:
  InstallationInRealTime() { stay_in_real_time(); }
};

// A look every second sees a unit in its place that is in fact out half of the time.
TEST_F(InstallationInRealTime, IsNotMetByAUnitThatFlickers) {
  technician(
      "when trace lmainte_chk_fru_install entry; flicker /PSU#3 5 0.3; "
      "when trace lmainte_chk_fru_install:test exit; after 1.4; flicker /PSU#3 1 0; after 1; flicker /PSU#3 1 0");
  EXPECT_EQ(check("0"), "result 224\n");
  EXPECT_TRUE(is_installed()) << "in the end";
}

TEST_F(Installation, IsMetByAUnitThatFlickeredBeforeItWasLookedAt) {
  technician("when trace lmainte_chk_fru_install entry; flicker /PSU#3 9 0.1");
  EXPECT_EQ(check("0"), "result 0\n");
  EXPECT_EQ(looks(), 5) << "the first finds it, four confirm it";
}

TEST_F(Installation, IsMetByAUnitThatIsTakenOutLate) {
  technician("after 1; insert /PSU#3; when trace lmainte_chk_fru_install entry; after 6; pull /PSU#3");
  EXPECT_EQ(check("2"), "result 0\n");
}

}  // namespace
}  // namespace end_to_end
