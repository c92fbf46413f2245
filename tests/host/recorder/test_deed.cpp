#include "host/recorder/deed.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>

#include "host/box/box_error.h"
#include "tests/host/box/scratch.h"

namespace {

using play::Words;
using recorder::Deed;
using recorder::Deeds;
using recorder::ToldDeed;
namespace fs = std::filesystem;

class Told : public testing::Test {
 protected:
  Told() { fs::create_directories(pipe().parent_path()); }

  fs::path pipe() const { return place().root() / "mgb/lib/recorder"; }
  box::Place place() const { return box::Place(scratch_.path()); }

  Scratch scratch_;
};

TEST_F(Told, ADeedBeginsAndIsDone) {
  Deeds deeds(place());
  EXPECT_TRUE(deeds.take().empty());
  const Words step{"spbox", "pull", "a word\n", "\"$\\", "", "\xff\x01"};
  {
    Deed deed(place(), step);
    const auto begun = deeds.take();
    ASSERT_EQ(begun.size(), 1U);
    EXPECT_EQ(begun[0].what, ToldDeed::What::kBegins);
    EXPECT_EQ(begun[0].who, getpid());
    EXPECT_EQ(begun[0].step, step);
    deed.was_done();
  }
  const auto done = deeds.take();
  ASSERT_EQ(done.size(), 1U);
  EXPECT_EQ(done[0].what, ToldDeed::What::kDone);
}

TEST_F(Told, ADeedThatIsNotDoneFails) {
  Deeds deeds(place());
  { const Deed deed(place(), {"spbox", "pull"}); }
  const auto told = deeds.take();
  ASSERT_EQ(told.size(), 2U);
  EXPECT_EQ(told[1].what, ToldDeed::What::kFailed);
}

TEST_F(Told, ALongDeedComesWhole) {
  Deeds deeds(place());
  const Words step{"hands", std::string(20'000, 'x')};
  const Deed deed(place(), step);
  const auto told = deeds.take();
  ASSERT_EQ(told.size(), 1U);
  EXPECT_EQ(told[0].step, step);
}

TEST_F(Told, NobodyIsToldWhereNothingIsRecorded) {
  { Deed deed(place(), {"spbox", "pull"}); }
  EXPECT_FALSE(fs::exists(pipe()));
  ASSERT_EQ(mkfifo(pipe().c_str(), 0600), 0);  // of a recorder that was killed
  { Deed deed(place(), {"spbox", "pull"}); }
  EXPECT_TRUE(Deeds(place()).take().empty());
  EXPECT_FALSE(fs::exists(pipe()));
}

TEST_F(Told, AVerbThatChangesNothingTellsNothing) {
  Deeds deeds(place());
  { const Deed deed(place(), {}); }
  EXPECT_TRUE(deeds.take().empty());
}

TEST_F(Told, OneRecorderListensInABox) {
  const Deeds deeds(place());
  EXPECT_THROW(const Deeds other(place()), box::BoxError);
}

TEST_F(Told, AFileInThePipesPlaceIsNeitherReadNorWritten) {
  std::ofstream(pipe()) << "kept";
  { Deed deed(place(), {"spbox", "pull"}); }
  EXPECT_THROW(const Deeds deeds(place()), box::BoxError);
  EXPECT_EQ(fs::file_size(pipe()), 4U);
}

TEST_F(Told, NonsenseInThePipeIsNoDeed) {
  Deeds deeds(place());
  std::ofstream(pipe()) << "x\n1 b \"open\n2 b \n3 d\n";
  const auto told = deeds.take();
  ASSERT_EQ(told.size(), 2U);
  EXPECT_TRUE(told[0].step.empty());
  EXPECT_EQ(told[1].what, ToldDeed::What::kDone);
}

}  // namespace
