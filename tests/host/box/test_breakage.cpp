#include "host/box/breakage.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>

#include "host/base/child.h"
#include "host/box/contents.h"
#include "tests/host/box/scratch.h"

namespace {

using box::Breakage;
using box::Mended;
using box::RecordName;

box::BrokenRecord break_record(const box::Place &place, const RecordName &record, Breakage breakage) {
  return box::break_records(place, {record}, breakage).at(0);
}

Mended mend_record(const box::Place &place, const RecordName &record) {
  return box::mend_records(place, {record}).at(0);
}

class BreakageTest : public testing::Test {
 protected:
  BreakageTest() { box::create_box(place_, LMAINTE_MODEL_QA); }

  std::optional<box::Bytes> now(const RecordName &record) const {
    return box::Database(place_.database(record.db_id)).get(record.name);
  }

  Scratch scratch_;
  box::Place place_{scratch_ / "box"};
  RecordName psus_{2, "current_psu_info"};
};

TEST_F(BreakageTest, RemovesARecordOrMakesItAByteShorterOrLonger) {
  const box::Bytes whole = now(psus_).value();
  box::Bytes shorter = whole, longer = whole;
  shorter.pop_back();
  longer.push_back(0);
  break_record(place_, psus_, Breakage::kMissing);
  EXPECT_EQ(now(psus_), std::nullopt);
  break_record(place_, psus_, Breakage::kShort);
  EXPECT_EQ(now(psus_), shorter) << "of the whole record, however it was broken before";
  const box::BrokenRecord broken = break_record(place_, psus_, Breakage::kLong);
  EXPECT_EQ(now(psus_), longer);
  EXPECT_EQ(broken.size, 3361u);
  EXPECT_EQ(broken.whole, 3360u);
  EXPECT_EQ(mend_record(place_, psus_), Mended::kRestored);
  EXPECT_EQ(now(psus_), whole);
  EXPECT_TRUE(box::broken_records(place_).empty());
}

TEST_F(BreakageTest, KeepsWhatACommandWroteAnew) {
  break_record(place_, psus_, Breakage::kMissing);
  const box::Bytes anew(3360, 7);
  box::Database(place_.database(2)).put("current_psu_info", anew);
  EXPECT_EQ(mend_record(place_, psus_), Mended::kRewritten);
  EXPECT_EQ(now(psus_), anew);
  EXPECT_EQ(mend_record(place_, psus_), Mended::kWhole);
}

TEST_F(BreakageTest, BreaksTheRecordThatACommandWroteSince) {
  break_record(place_, psus_, Breakage::kMissing);
  const box::Bytes anew(3360, 7);
  box::Database(place_.database(2)).put("current_psu_info", anew);
  EXPECT_TRUE(box::broken_records(place_).at(0).rewritten());
  break_record(place_, psus_, Breakage::kShort);
  EXPECT_EQ(now(psus_), box::Bytes(3359, 7));
  EXPECT_FALSE(box::broken_records(place_).at(0).rewritten());
  EXPECT_EQ(mend_record(place_, psus_), Mended::kRestored);
  EXPECT_EQ(now(psus_), anew);
}

TEST_F(BreakageTest, WaitsForACommandThatHasTheRecordUnderItsLock) {
  const pid_t command = fork();
  if (command == 0) {
    box::Database database(place_.database(2));
    if (!database.lock()) _exit(1);
    database.put("current_psu_info", box::Bytes(3360, 7));
    std::ofstream(scratch_ / "locked") << "yes";
    usleep(300000);
    _exit(database.unlock() ? 0 : 1);
  }
  while (!std::filesystem::exists(scratch_ / "locked")) usleep(1000);
  break_record(place_, psus_, Breakage::kMissing);
  EXPECT_EQ(base::exit_status_of(command), 0);
  mend_record(place_, psus_);
  EXPECT_EQ(now(psus_), box::Bytes(3360, 7)) << "what the command wrote in that time is lost";
}

TEST_F(BreakageTest, TellsWhatIsBroken) {
  break_record(place_, {4, "fru_psu_qe_info_01"}, Breakage::kShort);
  break_record(place_, psus_, Breakage::kMissing);
  const std::vector<box::BrokenRecord> all = box::broken_records(place_);
  ASSERT_EQ(all.size(), 2u);
  EXPECT_EQ(all[0].record, psus_);
  EXPECT_EQ(all[0].size, std::nullopt);
  EXPECT_EQ(all[1].record, (RecordName{4, "fru_psu_qe_info_01"}));
  EXPECT_EQ(all[1].size, 319u);
  EXPECT_EQ(all[1].whole, 320u);
}

TEST_F(BreakageTest, FindsARecordInItsDatabaseAlsoWhenItIsGone) {
  EXPECT_EQ(box::find_record(place_, "local_mgb_info"), (RecordName{3, "local_mgb_info"}));
  break_record(place_, psus_, Breakage::kMissing);
  EXPECT_EQ(box::find_record(place_, "current_psu_info"), psus_);
  EXPECT_THROW(box::find_record(place_, "no_such_info"), box::BoxError);
  box::Database(place_.database(5)).put("local_mgb_info", box::Bytes(1));
  EXPECT_THROW(box::find_record(place_, "local_mgb_info"), box::BoxError);
}

TEST(KeyOfABrokenRecord, TellsItsDatabaseAndItsName) {
  EXPECT_EQ(box::record_of_key("whole 5 a name"), (RecordName{5, "a name"}));
  const struct {
    const char *what, *key;
  } rows[] = {
      {"a setting", "led /PSU#0"},
      {"another word of five letters", "other 5 name"},
      {"a database that there is not", "whole 6 name"},
      {"a number of two digits", "whole 12 name"},
      {"no name", "whole 5"},
      {"nothing", ""},
  };
  for (const auto &row : rows) EXPECT_EQ(box::record_of_key(row.key), std::nullopt) << row.what;
}

TEST_F(BreakageTest, CannotShortenAnEmptyRecordOrBreakOneThatIsNotThere) {
  box::Database(place_.database(5)).put("empty", box::Bytes());
  EXPECT_THROW(break_record(place_, {5, "empty"}, Breakage::kShort), box::BoxError);
  EXPECT_THROW(break_record(place_, {5, "none"}, Breakage::kLong), box::BoxError);
  EXPECT_TRUE(box::broken_records(place_).empty());
  EXPECT_EQ(now({5, "none"}), std::nullopt);
}

}  // namespace
