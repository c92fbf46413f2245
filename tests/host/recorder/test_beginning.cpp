#include "host/recorder/beginning.h"

#include <gtest/gtest.h>

#include "host/box/breakage.h"
#include "host/box/daemon_bend.h"
#include "host/box/hardware.h"
#include "host/box/inventory.h"
#include "host/box/program_list.h"
#include "host/script/script.h"
#include "tests/host/box/scratch.h"

namespace {

class BeginningOfAPlay : public testing::Test {
 protected:
  BeginningOfAPlay() { box::create_box(place(), LMAINTE_MODEL_QE1); }

  box::Place place() const { return box::Place(scratch_ / "box"); }
  std::string steps() const {
    const auto beginning = recorder::beginning_of(box::contents_of(place()), scratch_ / "boxes");
    std::string text;
    for (const auto &step : beginning.steps) text += script::joined(step) + "\n";
    return text + (beginning.is_whole ? "" : "and a dump\n");
  }

  Scratch scratch_;
};

TEST_F(BeginningOfAPlay, IsANewBox) {
  EXPECT_EQ(steps(), "box qe1\n");
}

TEST_F(BeginningOfAPlay, IsWhatWasDoneToOne) {
  const box::Inventory inventory(place());
  inventory.change(box::Change::kPull, {"/PSU#1", "/FAN_A#0"});
  inventory.change(box::Change::kFault, {"/PSU#0", "/FAN_A#1/FAN#0"});
  inventory.change(box::Change::kDegrade, {"/PSU#2"});
  box::TextDatabase kept(place());
  box::Bend bend;
  bend.exit = 7;
  bend.delay = 3;
  bend.hang = bend.ignore_term = true;
  box::set_bend(kept, "ctlled", bend);
  bend = {};
  bend.die = 11;
  box::set_bend(kept, "ctlfan", bend);
  box::set_last_run(kept, "testfru", {});
  box::set_daemon_bend(kept, {box::DaemonWay::kLate, 5});
  EXPECT_EQ(steps(),
            "box qe1\nspbox pull /PSU#1 /FAN_A#0\nspbox fault /PSU#0 /FAN_A#1/FAN#0\nspbox degrade /PSU#2\n"
            "spbox program ctlfan --die 11\n"
            "spbox program ctlled --exit 7 --delay 3 --hang --ignore-term\nspbox daemon --delay 5\n");
}

TEST_F(BeginningOfAPlay, HasRecordsThatAreBroken) {
  box::break_records(place(), {{LMAINTE_DB_FRU, "fru_psu_qe_info_00"}}, box::Breakage::kMissing);
  box::break_records(place(), {{LMAINTE_DB_FRU, "fru_psu_qe_info_01"}}, box::Breakage::kShort);
  box::break_records(place(), {{LMAINTE_DB_FRU, "fru_psu_qe_info_02"}}, box::Breakage::kLong);
  EXPECT_EQ(steps(),
            "box qe1\nspbox break fru_psu_qe_info_00 --missing\nspbox break fru_psu_qe_info_01 --short\n"
            "spbox break fru_psu_qe_info_02 --long\n");
}

TEST_F(BeginningOfAPlay, IsADumpWhereTheVerbsMakeNoSuchBox) {
  box::Inventory(place()).change(box::Change::kFault, {"/PSU#0"});
  box::Hardware(place()).set_led("/PSU#0", "blink");
  EXPECT_EQ(steps(), "box qe1\nand a dump\n");
}

}  // namespace
