#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <set>
#include <stdexcept>

#include "host/box/place.h"
#include "host/box/unit_name.h"
#include "tests/host/box/scratch.h"

namespace {

using box::UnitId;

constexpr std::uint32_t kQb1 = 1, kQb2 = 2, kQe1 = 3, kQe2 = 4, kQe3 = 5, kQa = 6;

struct Pair {
  std::uint32_t model;
  const char *name;
  UnitId id;  // type, count, ids: one byte each
};

TEST(UnitName, NamesAndIdsMapBothWays) {
  const Pair pairs[] = {
      {kQe3, "/PSU#74", {0x59014A00, 0}},
      {kQe1, "/CMU#3", {0x01010300, 0}},
      {kQe2, "/CMU#1/MEM#13A", {0x13020104, 0}},
      {kQe1, "/CMU#15/MEM#30B", {0x13020F1F, 0}},
      {kQb2, "/MBU_B/MEMB#5/MEM#3A", {0xA6030005, 0x08000000}},
      {kQb2, "/MBU_B/MEMB#1/MEM#3A", {0xA6030001, 0x08000000}},
      {kQb1, "/MBU_A/MEMB#3/MEM#0B", {0x8A030003, 0x1F000000}},
      {kQa, "/MBU_A/MEM#0B", {0x8A030000, 0x07000000}},
      {kQa, "/MBU_A/PCI#3", {0xC0020003, 0}},
      {kQb1, "/IOU#0/DDCR/DDC_B#0", {0xBE030000, 0}},
      {kQb1, "/FANBP_B", {0xC7010000, 0}},
      {kQb1, "/FAN_A#1", {0xC6010100, 0}},
      {kQb1, "/FAN_B#1", {0xC9010100, 0}},
      {kQe1, "/FAN_B#7", {0x5F010700, 0}},
      {kQe3, "/FANBP_B#1", {0x5B010100, 0}},
      {kQe3, "/FAN_A#35", {0x5D012300, 0}},
      {kQa, "/OPNL", {0xCD010000, 0}},
      {kQe3, "/OPNL#0", {0x61010000, 0}},
  };
  for (const Pair &pair : pairs) {
    EXPECT_EQ(box::unit_id(pair.model, pair.name), pair.id) << pair.name;
    EXPECT_EQ(box::unit_name(pair.model, pair.id), pair.name) << pair.name;
  }
}

TEST(UnitName, NamesThatTheModelDoesNotHaveAreRefused) {
  const std::pair<std::uint32_t, const char *> names[] = {
      {kQe3, "/PSU#15"},
      {kQe3, "/PSU#75"},
      {kQe1, "/CMU#4"},
      {kQe1, "/CMU#03"},
      {kQe1, "/CMU#"},
      {kQe1, "CMU#0"},
      {kQe1, "/CMU#0/"},
      {kQe1, "/CMU#0/MEM#40A"},
      {kQe1, "/CMU#0/MEM#3A"},
      {kQe1, ""},
      {kQe1, "/"},
      {kQb1, "/FANBP_A"},
      {kQa, "/CMU#0"},
      {kQa, "/OPNL#0"},
      {kQa, "/MBU_A#0"},
      {kQb2, "/MBU_B/MEMB#8/MEM#3A"},
      {kQb2, "/MBU_B/MEM#3A"},
      {kQe1, "/CMU#0/IOU#0"},
      {kQe1, "/CMU#256"},
      {kQe1, "/CMU# 0"},
      {0, "/PSU#0"},
      {7, "/PSU#0"},
      {kQe1, "/PSU#0/PSU#0"},
      {kQe1, "/DDC_A#2"},
  };
  for (const auto &[model, name] : names) EXPECT_EQ(box::unit_id(model, name), std::nullopt) << model << name;
}

TEST(UnitName, IdsThatTheModelDoesNotHaveAreRefused) {
  const std::pair<std::uint32_t, UnitId> ids[] = {
      {kQe1, {0, 0}},                    // no type
      {kQe1, {0x01010400, 0}},           // /CMU#4
      {kQe1, {0x01000000, 0}},           // no component
      {kQe1, {0x01020000, 0}},           // a component too many
      {kQe1, {0x01010001, 0}},           // something behind the last component
      {kQe1, {0x01010000, 1}},           //
      {kQe1, {0x02010000, 0}},           // a type that there is not
      {kQe1, {0x59010900, 0}},           // /PSU#9
      {kQa, {0x01010000, 0}},            // a type of another model
      {kQa, {0x8A030001, 0x07000000}},   // memory of a second board
      {kQa, {0x8A020007, 0}},            // memory without the board that stands for none
      {kQb2, {0xA6030005, 0x28000000}},  // memory counted on past the fourth board
      {kQb2, {0xA6030005, 0x00000000}},  // the first board's memory on the sixth
      {kQb1, {0xC5010000, 0}},           // /FANBP_A, which has no number
      {0, {0x01010000, 0}},
      {7, {0x01010000, 0}},
  };
  for (const auto &[model, id] : ids) {
    EXPECT_EQ(box::unit_name(model, id), std::nullopt) << model << std::hex << " " << id[0] << " " << id[1];
  }
}

// How many units of each pattern a model has: the product of its limits, or of its named units.
const std::map<std::uint32_t, std::map<std::string, int>> kLocations = {
    {kQa,
     {{"/MBU_A", 1},
      {"/MBU_A/MEM#", 8},
      {"/MBU_A/PCI#", 4},
      {"/PSU#", 2},
      {"/FAN_A#", 2},
      {"/FANBP_B", 1},
      {"/OPNL", 1}}},
    {kQb1,
     {{"/MBU_A", 1},
      {"/MBU_A/DDC_A#", 2},
      {"/MBU_A/DDC_B#", 1},
      {"/MBU_A/CPUM#", 2},
      {"/MBU_A/MEMB#", 4},
      {"/MBU_A/MEMB#/MEM#", 32},
      {"/BPU_A", 1},
      {"/IOU#", 1},
      {"/IOU#/DDC_A#", 1},
      {"/IOU#/DDCR", 1},
      {"/IOU#/DDCR/DDC_B#", 1},
      {"/IOU#/PCI#", 5},
      {"/EMGBU", 1},
      {"/PSU#", 2},
      {"/FAN_A#", 2},
      {"/FANBP_B", 1},
      {"/FAN_B#", 2},
      {"/OPNL", 1}}},
    {kQb2,
     {{"/MBU_B", 1},
      {"/MBU_B/DDC_A#", 4},
      {"/MBU_B/DDC_B#", 2},
      {"/MBU_B/CPUM#", 4},
      {"/MBU_B/MEMB#", 8},
      {"/MBU_B/MEMB#/MEM#", 64},
      {"/IOU#", 2},
      {"/IOU#/DDC_A#", 2},
      {"/IOU#/DDCR", 2},
      {"/IOU#/DDCR/DDC_B#", 2},
      {"/IOU#/PCI#", 10},
      {"/EMGBU", 1},
      {"/PSU#", 4},
      {"/FANBP_C", 1},
      {"/FAN_A#", 4},
      {"/OPNL", 1}}},
    {kQe1,
     {{"/CMU#", 4},
      {"/CMU#/CPUM#", 16},
      {"/CMU#/MEM#", 512},
      {"/IOU#", 4},
      {"/IOU#/DDC#", 56},
      {"/IOU#/PCI#", 32},
      {"/EMGBU_B#", 2},
      {"/PSU#", 18},
      {"/BP_A#", 1},
      {"/DDC_A#", 2},
      {"/FANBP_C#", 2},
      {"/FAN_A#", 4},
      {"/FAN_B#", 8},
      {"/OPNL#", 1}}},
    {kQe2,
     {{"/CMU#", 8},
      {"/CMU#/CPUM#", 32},
      {"/CMU#/MEM#", 256},
      {"/IOU#", 8},
      {"/IOU#/DDC#", 112},
      {"/IOU#/PCI#", 64},
      {"/EMGBU_B#", 2},
      {"/PSU#", 30},
      {"/FANBP_A#", 1},
      {"/FANBP_B#", 1},
      {"/FAN_A#", 16},
      {"/OPNL#", 1}}},
    {kQe3,
     {{"/CMU#", 16},
      {"/CMU#/CPUM#", 64},
      {"/CMU#/MEM#", 512},
      {"/XBU_B#", 16},
      {"/IOU#", 16},
      {"/IOU#/DDC#", 224},
      {"/IOU#/PCI#", 128},
      {"/EMGBU_B#", 2},
      {"/EMGBU_C#", 2},
      {"/CLKU_B#", 4},
      {"/PSU#", 60},
      {"/FANBP_A#", 2},
      {"/FANBP_B#", 2},
      {"/FAN_A#", 32},
      {"/OPNL#", 1}}},
};

// Every id that a location of up to three components can have.
template <typename Visit>
void every_id(Visit visit) {
  for (std::uint32_t type = 1; type < 256; ++type) {
    for (std::uint32_t a = 0; a < 80; ++a) visit({type << 24U | 0x010000U | a << 8U, 0});
    for (std::uint32_t a = 0; a < 18; ++a) {
      for (std::uint32_t b = 0; b < 34; ++b) visit({type << 24U | 0x020000U | a << 8U | b, 0});
    }
    for (std::uint32_t a = 0; a < 3; ++a) {
      for (std::uint32_t b = 0; b < 10; ++b) {
        for (std::uint32_t c = 0; c < 34; ++c) visit({type << 24U | 0x030000U | a << 8U | b, c << 24U});
      }
    }
  }
}

// "/CMU#/MEM#" for "/CMU#0/MEM#03A"
std::string pattern_of(const std::string &name) {
  std::string pattern;
  bool number = false;
  for (char c : name) {
    if (c == '/') number = false;
    if (!number) pattern += c;
    if (c == '#') number = true;
  }
  return pattern;
}

TEST(UnitName, EveryLocationOfEveryModelMapsToAnIdOfItsOwnAndBack) {
  for (const auto &[model, expected] : kLocations) {
    std::map<std::string, int> found;
    std::set<std::string> names;
    every_id([&, model = model](const UnitId &id) {
      const auto name = box::unit_name(model, id);
      if (!name) return;
      EXPECT_TRUE(names.insert(*name).second) << *name;
      EXPECT_EQ(box::unit_id(model, *name), id) << *name;
      ++found[pattern_of(*name)];
    });
    EXPECT_EQ(found, expected) << "model " << model;
  }
}

TEST(ModelIn, IsTheFirstMarkerThatExists) {
  Scratch scratch;
  const box::Place place(scratch.path());
  EXPECT_EQ(box::model_in(place), 0U);
  std::filesystem::create_directory(scratch / "tmp");
  EXPECT_EQ(box::model_in(place), 0U);
  const std::pair<const char *, std::uint32_t> markers[] = {{"tmp/.qe3", kQe3}, {"tmp/.qe2", kQe2}, {"tmp/.qe1", kQe1},
                                                            {"tmp/.qb2", kQb2}, {"tmp/.qb1", kQb1}, {"tmp/.qa", kQa}};
  for (const auto &[marker, model] : markers) {
    std::ofstream(scratch / marker).close();
    EXPECT_EQ(box::model_in(place), model) << marker;
  }
}

TEST(Place, IsWhereTheEnvironmentSays) {
  unsetenv("SPBOX_ROOT");
  EXPECT_EQ(box::Place::here().root(), "/");
  EXPECT_EQ(box::Place::here().database(4).text(), "database 4 in /mgb/db");
  setenv("SPBOX_ROOT", "", 1);
  EXPECT_EQ(box::Place::here().root(), "/");
  setenv("SPBOX_ROOT", "/srv/box", 1);
  EXPECT_EQ(box::Place::here().database(4).text(), "database 4 in /srv/box/mgb/db");
  EXPECT_EQ(box::Place::here().hardware().text(), "the box's own database in /srv/box/mgb/db");
  EXPECT_EQ(box::Place::here().trace(), "/srv/box/mgb/log/trace");
  EXPECT_EQ(box::Place::here().events(), "/srv/box/mgb/log/events");
  EXPECT_EQ(box::Place::here().etc(), "/srv/box/mgb/cli/etc");
  EXPECT_EQ(box::Place::here().tmp(), "/srv/box/tmp");
  unsetenv("SPBOX_ROOT");
}

TEST(LocationOf, BeginsWithASlashThatANameMayLack) {
  EXPECT_EQ(box::location_of("PSU#3"), "/PSU#3");
  EXPECT_EQ(box::location_of("/PSU#3"), "/PSU#3");
  EXPECT_EQ(box::location_of("CMU#0/MEM#03A"), "/CMU#0/MEM#03A");
  EXPECT_EQ(box::location_of(""), "/");
}

TEST(CheckUnits, RefusesThoseThatTheModelLacks) {
  const std::string good[] = {"/PSU#0", "CMU#0/MEM#03A"}, bad[] = {"/PSU#0", "IOX#9"};
  EXPECT_NO_THROW(box::check_units("qe3", good));
  EXPECT_THROW(box::check_units("qe3", bad), std::invalid_argument);
  EXPECT_THROW(box::check_units("qe9", good), std::invalid_argument) << "no such model";
}

}  // namespace
