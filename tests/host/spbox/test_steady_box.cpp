// Who looks at a box while another process makes it anew.
#include "host/spbox/steady_box.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/host/box/scratch.h"

namespace {

namespace fs = std::filesystem;

class LookAtOneBox : public testing::Test {
 protected:
  LookAtOneBox() { fs::create_directory(parts_); }
  void take_away() const { fs::rename(parts_, scratch_ / "old"); }
  void make_anew() const {
    fs::rename(parts_, scratch_ / ("old" + std::to_string(looks_)).c_str());
    fs::create_directory(parts_);
  }
  // What is said at the end, by looks of which each one does this.
  template <typename Look>
  std::string said(const Look &look) {
    return spbox::look_at_one_box(box::Place(scratch_.path()), [&] {
      ++looks_;
      return look();
    });
  }

  Scratch scratch_;
  fs::path parts_ = scratch_ / "mgb";
  int looks_ = 0;
};

TEST_F(LookAtOneBox, OnceWhereAllIsWell) {
  EXPECT_EQ(said([&] {
              make_anew();
              return std::string();
            }),
            "");
  EXPECT_EQ(looks_, 1);
}

TEST_F(LookAtOneBox, OnceWhereTheSameBoxIsInTrouble) {
  EXPECT_EQ(said([] { return std::string("damaged"); }), "damaged");
  EXPECT_EQ(looks_, 1);
}

TEST_F(LookAtOneBox, AgainWhereItWasMadeAnewMeanwhile) {
  EXPECT_EQ(said([&] {
              if (looks_ > 1) return std::string();
              make_anew();
              return std::string("Permission denied");
            }),
            "");
  EXPECT_EQ(looks_, 2);
}

TEST_F(LookAtOneBox, AgainWhereTheOldOneIsAwayAndTheNewOneIsNotThereYet) {
  EXPECT_EQ(said([&] {
              if (looks_ == 1) take_away();
              if (looks_ == 2) fs::create_directory(parts_);
              return std::string(looks_ > 2 ? "" : "no box");
            }),
            "");
  EXPECT_EQ(looks_, 3);
}

TEST_F(LookAtOneBox, NotForEverWhereItIsMadeAnewAllTheTime) {
  EXPECT_EQ(said([&] {
              make_anew();
              return std::string("Permission denied");
            }),
            "Permission denied");
  EXPECT_EQ(looks_, 5);
}

}  // namespace
