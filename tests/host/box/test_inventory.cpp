#include "host/box/inventory.h"

#include <gtest/gtest.h>

#include <cstring>

#include "host/box/hardware.h"
#include "host/box/inventory_records.h"
#include "host/box/partitions.h"
#include "tests/host/box/child.h"
#include "tests/host/box/scratch.h"

namespace {

class InventoryTest : public testing::Test {
 protected:
  InventoryTest() { box::create_box(place_, LMAINTE_MODEL_QE1); }

  box::Database database(std::uint32_t db_id) const { return box::Database(place_.database(db_id)); }
  std::uint32_t psu_status(const box::Bytes &psus, std::size_t number) const {
    std::uint32_t status = 0;
    std::memcpy(&status, psus.data() + 56 * number + 8, 4);
    return status;
  }

  Scratch scratch_;
  box::Place place_{scratch_ / "box"};
};

TEST_F(InventoryTest, ReadsOneUnitByItsName) {
  box::Inventory inventory(place_);
  inventory.change(box::Change::kDegrade, {"/PSU#41"});
  for (const char *name : {"/PSU#41", "PSU#41"}) {
    const box::Unit unit = inventory.unit(name);
    EXPECT_EQ(unit.place.name, "/PSU#41");
    EXPECT_EQ(unit.status, 0x90000000u);
    EXPECT_EQ(unit.fru_name.substr(0, 11), "PW-1600-E5 ");
  }
  EXPECT_TRUE(inventory.has("PSU#41"));
  EXPECT_FALSE(inventory.has("/PSU#9"));
  EXPECT_FALSE(inventory.has(""));
  EXPECT_THROW(inventory.unit("/PSU#9"), box::BoxError);
}

TEST_F(InventoryTest, ReadsOneUnitWhateverOtherRecordsAreLike) {
  database(2).remove("current_cmu_info_00");
  database(2).put("current_panel_info", box::Bytes(63));
  database(4).remove("fru_fan_qe_info_00");
  const box::Inventory inventory(place_);
  EXPECT_EQ(inventory.unit("/PSU#3").unreadable, "");
  EXPECT_EQ(inventory.unit("/CMU#1").unreadable, "");
  EXPECT_EQ(inventory.unit("/CMU#0").unreadable, "record current_cmu_info_00 is missing");
  EXPECT_EQ(box::state_word(inventory.unit("/CMU#0")), "Unreadable");
  EXPECT_EQ(inventory.unit("/OPNL#0").unreadable, "record current_panel_info is 63 bytes, should be 64");
  EXPECT_EQ(inventory.unit("/FAN_B#0").unreadable, "");
  EXPECT_EQ(inventory.unit("/FAN_B#0").fru_unreadable, "record fru_fan_qe_info_00 is missing");
  EXPECT_EQ(inventory.units().size(), 248u);
}

TEST_F(InventoryTest, AsksForNoIdentityRecordOfAUnitThatIsNotThere) {
  box::Inventory inventory(place_);
  inventory.change(box::Change::kPull, {"/PSU#3"});
  database(4).remove("fru_psu_qe_info_03");
  EXPECT_EQ(inventory.unit("/PSU#3").fru_unreadable, "");
}

TEST_F(InventoryTest, NamesUnitsWithWhatTheyCarry) {
  const box::Inventory inventory(place_);
  EXPECT_EQ(
      inventory.with_carried({"FAN_A#0", "/CMU#0/CPUM#1"}),
      (std::vector<std::string>{"/FAN_A#0", "/FAN_A#0/FAN#0", "/FAN_A#0/FAN#1", "/FAN_A#0/FAN#2", "/CMU#0/CPUM#1"}));
  EXPECT_EQ(inventory.with_carried({"/CMU#3"}).size(), 1u + 4 + 32);
}

// A command reads database 2 under its lock, gives that back and then reads database 4. The technician comes in between.
TEST_F(InventoryTest, LetsNoCommandMissAnIdentityRecordThatIsPulledMeanwhile) {
  box::Database current = database(2);
  ASSERT_TRUE(current.lock());
  const box::Bytes psus = current.get("current_psu_info").value();
  ASSERT_TRUE(current.unlock());
  EXPECT_EQ(psu_status(psus, 3), 0x80000000u);
  ASSERT_EQ(in_child([&] {
              box::Inventory(place_).change(box::Change::kPull, {"/PSU#3", "/FAN_A#0"});
              return 0;
            }),
            0);
  box::Database fru = database(4);
  ASSERT_TRUE(fru.lock());
  const std::optional<box::Bytes> psu = fru.get("fru_psu_qe_info_03");
  const std::optional<box::Bytes> tray = fru.get("fru_fan_qe_info_02");
  ASSERT_TRUE(fru.unlock());
  EXPECT_EQ(psu, box::Bytes(320)) << "it is there, and names nothing";
  EXPECT_EQ(tray, box::Bytes(256));
}

TEST_F(InventoryTest, GivesACommandThatReadsAfterwardsTheWholeChange) {
  box::Inventory inventory(place_);
  inventory.change(box::Change::kPull, {"/PSU#3"});
  inventory.change(box::Change::kInsert, {"/PSU#3"});
  EXPECT_EQ(inventory.unit("/PSU#3").status, 0x80000000u);
  EXPECT_EQ(inventory.unit("/PSU#3").fru_name.size(), 15u);
}

// The mark is that of the place: whatever comes and goes in it, and however that is.
TEST_F(InventoryTest, KeepsTheMarkOfAUnitUnderMaintenanceThroughEveryChange) {
  const box::Inventory inventory(place_);
  // Where the kinds keep their faults: in the status word, in a flag byte.
  for (const char *unit : {"/CMU#1", "/PSU#3", "/FAN_A#0", "/DDC_A#1"}) {
    EXPECT_FALSE(inventory.set_flag(unit, true));
    const struct {
      box::Change change;
      std::uint32_t status;
    } rows[] = {{box::Change::kFault, 0xA0008000},   {box::Change::kDegrade, 0x90008000},
                {box::Change::kPull, 0x00008000},    {box::Change::kInsert, 0x80008000},
                {box::Change::kDegrade, 0x90008000}, {box::Change::kRepair, 0x80008000}};
    for (const auto &row : rows) {
      inventory.change(row.change, {unit});
      EXPECT_EQ(inventory.unit(unit).status, row.status) << unit;
    }
    EXPECT_EQ(box::state_word(inventory.unit(unit)), "Normal");
    EXPECT_TRUE(inventory.set_flag(unit, false));
    EXPECT_EQ(inventory.unit(unit).status, 0x80000000u) << unit;
  }
}

TEST_F(InventoryTest, MarksNoUnitButTheOneUnderMaintenance) {
  const box::Contents before = box::contents_of(place_);
  const box::Inventory inventory(place_);
  inventory.set_flag("/CMU#1", true);
  for (const box::Unit &unit : inventory.units()) {
    EXPECT_EQ(unit.status, unit.place.name == "/CMU#1" ? 0x80008000u : 0x80000000u) << unit.place.name;
  }
  inventory.set_flag("CMU#1", false);
  const box::Contents after = box::contents_of(place_);
  EXPECT_EQ(after.records, before.records);
  EXPECT_EQ(after.hardware, before.hardware);
}

TEST_F(InventoryTest, TellsWhetherAUnitWasUnderMaintenanceBefore) {
  const box::Inventory inventory(place_);
  EXPECT_FALSE(inventory.set_flag("/PSU#3", false));
  EXPECT_FALSE(inventory.set_flag("/PSU#3", true));
  EXPECT_TRUE(inventory.set_flag("/PSU#3", true));
  EXPECT_TRUE(box::Hardware(place_).flag("/PSU#3"));
  EXPECT_TRUE(inventory.set_flag("/PSU#3", false));
  EXPECT_FALSE(box::Hardware(place_).flag("/PSU#3"));
}

TEST_F(InventoryTest, KnowsTheUnitsUnderMaintenanceOfTheBoxThatItWasMadeOf) {
  box::Inventory(place_).set_flag("/PSU#3", true);
  const box::Place copy(scratch_ / "copy");
  box::create_box(copy, box::contents_of(place_));
  const box::Inventory inventory(copy);
  EXPECT_EQ(inventory.unit("/PSU#3").status, 0x80008000u);
  EXPECT_EQ(box::server_of(copy).status, 0x80008000u);
  EXPECT_TRUE(inventory.set_flag("/PSU#3", false));
  EXPECT_EQ(inventory.unit("/PSU#3").status, 0x80000000u);
  EXPECT_EQ(box::server_of(copy).status, 0x80000000u);
}

TEST(BoardPartIn, ReadsTheNameOfAnExtendedSystemBoard) {
  EXPECT_EQ(box::xsb_name(14), "03-2");
  EXPECT_EQ(box::xsb_name(63), "15-3");
  const auto part = box::board_part_in("03-2");
  ASSERT_TRUE(part.has_value());
  EXPECT_EQ(part->board, 3u);
  EXPECT_EQ(part->part, 2u);
  EXPECT_TRUE(box::board_part_in("99-0").has_value()) << "whether there is such a board others say";
  for (const char *word : {"", "3-2", "03", "03-", "03-4", "03-02", "0x-1", "-2", "03-2 "}) {
    EXPECT_FALSE(box::board_part_in(word).has_value()) << word;
  }
}

// The hand that pulls a board reads no records.
TEST_F(InventoryTest, PullsABoardAndStopsThePartsWhoseRecordsAreThere) {
  database(LMAINTE_DB_CURRENT).remove("current_xsb_info_12");
  box::Inventory(place_).change(box::Change::kPull, {"/CMU#3"});
  EXPECT_FALSE(box::Inventory(place_).unit("/CMU#3").installed());
  std::string active;
  for (const box::Xsb &xsb : box::xsbs_of(place_, LMAINTE_MODEL_QE1)) active += xsb.active ? xsb.name + " " : "";
  EXPECT_EQ(active, "00-0 01-0 02-0 ");
}

TEST(FruNameIn, IsWhatACommandCopies) {
  const box::FruLayout counted{"fru_psu_qe_info_%02d", 64, 9, 10};
  const box::FruLayout uncounted{"fru_dimm_info_%03d", 16, box::kNowhere, 5};
  const auto name = [](const box::FruLayout &layout, std::uint8_t length, const std::string &text, std::size_t size) {
    box::Bytes record(size);
    if (layout.length_at < size) record[layout.length_at] = length;
    for (std::size_t i = 0; i < text.size() && layout.name_at + i < size; ++i) {
      record[layout.name_at + i] = static_cast<std::uint8_t>(text[i]);
    }
    return box::fru_name_in(layout, record).value_or("too short");
  };
  EXPECT_EQ(name(counted, 3, "ABCDEF", 64), "ABC");
  EXPECT_EQ(name(counted, 0, "ABCDEF", 64), "");
  EXPECT_EQ(name(counted, 0xC3, "ABCDEF", 64), "ABC") << "the length is in the low six bits";
  EXPECT_EQ(name(counted, 63, "ABCDEFGHIJKLMNOPQRSTUVWXYZ", 64), "ABCDEFGHIJKLMNOPQR") << "18 bytes at most";
  EXPECT_EQ(name(counted, 6, "AB", 64), "AB") << "up to a zero";
  EXPECT_EQ(name(counted, 3, "ABC", 13), "ABC");
  EXPECT_EQ(name(counted, 3, "ABC", 12), "too short");
  EXPECT_EQ(name(counted, 3, "ABC", 9), "too short");
  EXPECT_EQ(name(uncounted, 0, "D123456", 16), "D123");
  EXPECT_EQ(name(uncounted, 0, "D123", 8), "too short");
}

}  // namespace
