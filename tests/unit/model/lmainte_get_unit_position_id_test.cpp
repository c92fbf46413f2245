// Locations and their positions: lmainte_get_unit_position_id, lmainte_convert_strtofrutype and the rewriting of memory
// locations.

#include <cstring>
#include <tuple>

#include <gtest/gtest.h>

#include "tests/unit/doubles/library_test.h"

namespace {

using doubles::Bytes;
using doubles::in_a_process_of_its_own;
using doubles::Lines;
using doubles::machine;

struct Row {
  const char *path;
  const char *for_records;  // type and ids with the types of the database records, or the result
  const char *own;          // with position codes and own numbers
};

// A model once found is kept by the library, so each case is a process of its own.
class Location : public doubles::LibraryTest {
 protected:
  void SetUp() override {
    LibraryTest::SetUp();
    machine().records[{2, "current_system_info"}] = {Bytes(176)};
    machine().records[{1, "setup_system_info"}] = {Bytes(248)};
    machine().records[{0, "gen_system_info"}] = {Bytes(1408)};
    for (const char *family : {"qa", "qb", "qe"}) {
      machine().files[std::string("/mgb/cli/etc/controltime_") + family] = Bytes(256);
      machine().files[std::string("/mgb/cli/etc/cmdtime_") + family] = Bytes(128);
    }
    std::memset(&position_, 0xA5, sizeof position_);
  }

  // Runs on a new machine with the marker of a model, or with none.
  void on(const std::string &model, const std::function<void()> &body) {
    in_a_process_of_its_own([&] {
      SetUp();
      if (!model.empty()) machine().markers = {"/tmp/." + model};
      body();
    });
  }

  int32_t get(uint32_t mode, const char *path) { return lmainte_get_unit_position_id(mode, path, &position_); }

  bool is_untouched() {
    lmainte_unit_position pattern;
    std::memset(&pattern, 0xA5, sizeof pattern);
    return std::memcmp(&pattern, &position_, sizeof pattern) == 0;
  }

  // The position as text, such as "16 [3]", or the result where there is none.
  std::string got(uint32_t mode, const char *path) {
    std::memset(&position_, 0xA5, sizeof position_);
    const int32_t result = get(mode, path);
    if (result != 0) return std::to_string(result) + (is_untouched() ? "" : " and a position");
    std::string text = std::to_string(position_.type) + " [";
    for (uint32_t i = 0; i < 6; ++i) {
      if (i < position_.count)
        text += (i == 0 ? "" : ",") + std::to_string(position_.id[i]);
      else if (position_.id[i] != 0)
        text += " and an id past the count";
    }
    return text + "]";
  }

  void expect_positions(const std::string &model, const std::vector<Row> &rows) {
    on(model, [&] {
      for (const auto &row : rows) {
        EXPECT_EQ(got(0, row.path), row.for_records) << row.path;
        EXPECT_EQ(got(1, row.path), row.own) << row.path;
      }
    });
  }

  lmainte_unit_position position_;
};

// ---- what each model has: every location at its first or last number, and behind it

TEST_F(Location, OfQa) {
  expect_positions("qa", {
                             {"/MBU_A", "222", "120 [0]"},
                             {"/MBU_A/MEM#3A", "222", "138 [0,0,0]"},
                             {"/MBU_A/MEM#1B", "222", "138 [0,0,6]"},
                             {"/MBU_A/MEM#0B", "222", "138 [0,0,7]"},
                             {"/MBU_A/MEM#4A", "222", "222"},
                             {"/MBU_A/MEM#0", "222", "222"},
                             {"/MBU_A/PCI#3", "104 [0,3]", "192 [0,3]"},
                             {"/MBU_A/PCI#4", "222", "222"},
                             {"/PSU#0", "161 [0]", "195 [0]"},
                             {"/PSU#1", "161 [1]", "195 [1]"},
                             {"/PSU#2", "222", "222"},
                             {"/FAN_A#1", "180 [1]", "198 [1]"},
                             {"/FAN_A#2", "222", "222"},
                             {"/FAN_B#0", "222", "222"},
                             {"/FANBP_B", "222", "199 [0]"},
                             {"/OPNL", "222", "205 [0]"},
                             {"/OPNL#0", "222", "222"},
                             {"/CMU#0", "222", "222"},
                             {"/MBU_B", "222", "222"},
                         });
}

TEST_F(Location, OfQb1) {
  expect_positions("qb1", {
                              {"/MBU_A", "222", "120 [0]"},
                              {"/MBU_A/DDC_A#1", "222", "121 [0,1]"},
                              {"/MBU_A/DDC_A#2", "222", "222"},
                              {"/MBU_A/DDC_B#0", "222", "122 [0,0]"},
                              {"/MBU_A/DDC_B#1", "222", "222"},
                              {"/MBU_A/CPUM#1", "222", "139 [0,1]"},
                              {"/MBU_A/CPUM#2", "222", "222"},
                              {"/MBU_A/MEMB#3", "222", "133 [0,3]"},
                              {"/MBU_A/MEMB#4", "222", "222"},
                              {"/MBU_A/MEMB#0/MEM#3A", "222", "138 [0,0,0]"},
                              {"/MBU_A/MEMB#1/MEM#2B", "222", "138 [0,1,11]"},
                              {"/MBU_A/MEMB#3/MEM#0B", "222", "138 [0,3,31]"},
                              {"/MBU_A/MEMB#4/MEM#0B", "222", "222"},
                              {"/MBU_A/MEMB#3/MEM#0C", "222", "222"},
                              {"/MBU_A/MEM#0B", "222", "222"},
                              {"/BPU_A", "222", "175 [0]"},
                              {"/IOU#0", "222", "179 [0]"},
                              {"/IOU#1", "222", "222"},
                              {"/IOU#0/DDC_A#0", "222", "188 [0,0]"},
                              {"/IOU#0/DDC_A#1", "222", "222"},
                              {"/IOU#0/DDCR", "222", "189 [0,0]"},
                              {"/IOU#0/DDCR/DDC_B#0", "222", "190 [0,0,0]"},
                              {"/IOU#0/DDCR/DDC_B#1", "222", "222"},
                              {"/IOU#0/PCI#4", "104 [0,4]", "192 [0,4]"},
                              {"/IOU#0/PCI#5", "222", "222"},
                              {"/EMGBU", "222", "194 [0]"},
                              {"/PSU#1", "161 [1]", "195 [1]"},
                              {"/PSU#2", "222", "222"},
                              {"/FANBP_A", "222", "222"},
                              {"/FANBP_B", "222", "199 [0]"},
                              {"/FAN_A#1", "180 [1]", "198 [1]"},
                              {"/FAN_A#2", "222", "222"},
                              {"/FAN_B#0", "180 [2]", "201 [0]"},
                              {"/FAN_B#1", "180 [3]", "201 [1]"},
                              {"/FAN_B#2", "222", "222"},
                              {"/OPNL", "222", "205 [0]"},
                          });
}

TEST_F(Location, OfQb2) {
  expect_positions("qb2", {
                              {"/MBU_B", "222", "147 [0]"},
                              {"/MBU_A", "222", "222"},
                              {"/MBU_B/DDC_A#3", "222", "148 [0,3]"},
                              {"/MBU_B/DDC_A#4", "222", "222"},
                              {"/MBU_B/DDC_B#1", "222", "149 [0,1]"},
                              {"/MBU_B/DDC_B#2", "222", "222"},
                              {"/MBU_B/CPUM#3", "222", "167 [0,3]"},
                              {"/MBU_B/CPUM#4", "222", "222"},
                              {"/MBU_B/MEMB#7", "222", "161 [0,7]"},
                              {"/MBU_B/MEMB#8", "222", "222"},
                              {"/MBU_B/MEMB#5/MEM#3A", "222", "166 [0,5,8]"},
                              {"/MBU_B/MEMB#5/MEM#2B", "222", "166 [0,5,11]"},
                              {"/MBU_B/MEMB#3/MEM#0B", "222", "166 [0,3,31]"},
                              {"/MBU_B/MEMB#4/MEM#3A", "222", "166 [0,4,0]"},
                              {"/MBU_B/MEMB#7/MEM#0B", "222", "166 [0,7,31]"},
                              {"/MBU_B/MEMB#8/MEM#0B", "222", "222"},
                              {"/MBU_B/MEMB#05/MEM#3A", "222", "222"},
                              {"/IOU#1", "222", "179 [1]"},
                              {"/IOU#2", "222", "222"},
                              {"/IOU#1/DDC_A#0", "222", "188 [1,0]"},
                              {"/IOU#1/DDC_A#1", "222", "222"},
                              {"/IOU#1/DDCR", "222", "189 [1,0]"},
                              {"/IOU#1/DDCR/DDC_B#0", "222", "190 [1,0,0]"},
                              {"/IOU#2/DDCR/DDC_B#0", "222", "222"},
                              {"/IOU#1/PCI#4", "104 [1,4]", "192 [1,4]"},
                              {"/IOU#1/PCI#5", "222", "222"},
                              {"/EMGBU", "222", "194 [0]"},
                              {"/PSU#3", "161 [3]", "195 [3]"},
                              {"/PSU#4", "222", "222"},
                              {"/FANBP_C", "222", "202 [0]"},
                              {"/FAN_A#3", "180 [3]", "204 [3]"},
                              {"/FAN_A#4", "222", "222"},
                              {"/OPNL", "222", "205 [0]"},
                          });
}

TEST_F(Location, OfQe1) {
  expect_positions("qe1", {
                              {"/CMU#0", "16 [0]", "1 [0]"},
                              {"/CMU#3", "16 [3]", "1 [3]"},
                              {"/CMU#4", "222", "222"},
                              {"/CMU#3/CPUM#3", "222", "20 [3,3]"},
                              {"/CMU#4/CPUM#3", "222", "222"},
                              {"/CMU#3/CPUM#4", "222", "222"},
                              {"/CMU#2/MEM#13A", "222", "19 [2,4]"},
                              {"/CMU#15/MEM#30B", "222", "19 [15,31]"},
                              {"/CMU#16/MEM#30B", "222", "222"},
                              {"/CMU#0/MEM#31C", "222", "222"},
                              {"/IOU#3", "80 [3]", "42 [3]"},
                              {"/IOU#4", "222", "222"},
                              {"/IOU#3/DDC#13", "222", "51 [3,13]"},
                              {"/IOU#3/DDC#14", "222", "222"},
                              {"/IOU#3/PCI#7", "104 [3,7]", "52 [3,7]"},
                              {"/IOU#3/PCI#8", "222", "222"},
                              {"/EMGBU_B#1", "128 [1]", "85 [1]"},
                              {"/EMGBU_B#2", "222", "222"},
                              {"/PSU#0", "161 [0]", "89 [0]"},
                              {"/PSU#8", "161 [8]", "89 [8]"},
                              {"/PSU#9", "222", "222"},
                              {"/PSU#40", "161 [9]", "89 [40]"},
                              {"/PSU#48", "161 [17]", "89 [48]"},
                              {"/PSU#49", "222", "222"},
                              {"/BP_A#0", "222", "64 [0]"},
                              {"/BP_A#1", "222", "222"},
                              {"/DDC_A#1", "212 [1]", "76 [1]"},
                              {"/DDC_A#2", "222", "222"},
                              {"/FANBP_C#0", "222", "92 [0]"},
                              {"/FANBP_C#1", "222", "92 [1]"},
                              {"/FANBP_C#2", "222", "222"},
                              {"/FAN_A#0", "180 [2]", "93 [0]"},
                              {"/FAN_A#3", "180 [5]", "93 [3]"},
                              {"/FAN_A#4", "222", "222"},
                              {"/FAN_B#0", "180 [0]", "95 [0]"},
                              {"/FAN_B#1", "180 [1]", "95 [1]"},
                              {"/FAN_B#2", "180 [6]", "95 [2]"},
                              {"/FAN_B#7", "180 [11]", "95 [7]"},
                              {"/FAN_B#8", "222", "222"},
                              {"/OPNL#0", "2 [0]", "97 [0]"},
                              {"/OPNL#1", "222", "222"},
                              {"/OPNL", "222", "222"},
                          });
}

TEST_F(Location, OfQe2) {
  expect_positions("qe2", {
                              {"/CMU#7", "16 [7]", "1 [7]"},
                              {"/CMU#8", "222", "222"},
                              {"/CMU#7/CPUM#3", "222", "20 [7,3]"},
                              {"/CMU#1/MEM#13A", "222", "19 [1,4]"},
                              {"/CMU#8/MEM#13A", "222", "222"},
                              {"/IOU#7", "80 [7]", "42 [7]"},
                              {"/IOU#7/DDC#13", "222", "51 [7,13]"},
                              {"/IOU#7/PCI#7", "104 [7,7]", "52 [7,7]"},
                              {"/EMGBU_B#1", "128 [1]", "85 [1]"},
                              {"/EMGBU_C#0", "222", "222"},
                              {"/PSU#14", "161 [14]", "89 [14]"},
                              {"/PSU#15", "222", "222"},
                              {"/PSU#40", "161 [15]", "89 [40]"},
                              {"/PSU#54", "161 [29]", "89 [54]"},
                              {"/FANBP_A#0", "222", "90 [0]"},
                              {"/FANBP_A#1", "222", "222"},
                              {"/FANBP_B#0", "222", "91 [0]"},
                              {"/FAN_A#15", "180 [15]", "93 [15]"},
                              {"/FAN_A#16", "222", "222"},
                              {"/OPNL#0", "2 [0]", "97 [0]"},
                              {"/DDC_A#0", "222", "222"},
                          });
}

TEST_F(Location, OfQe3) {
  expect_positions("qe3", {
                              {"/CMU#15", "16 [15]", "1 [15]"},
                              {"/CMU#16", "222", "222"},
                              {"/CMU#15/CPUM#3", "222", "20 [15,3]"},
                              {"/CMU#15/MEM#03A", "222", "19 [15,0]"},
                              {"/XBU_B#15", "222", "29 [15]"},
                              {"/XBU_B#16", "222", "222"},
                              {"/IOU#15", "80 [15]", "42 [15]"},
                              {"/IOU#15/DDC#13", "222", "51 [15,13]"},
                              {"/IOU#15/PCI#7", "104 [15,7]", "52 [15,7]"},
                              {"/IOU#15/PCI#8", "222", "222"},
                              {"/EMGBU_B#1", "128 [1]", "85 [1]"},
                              {"/EMGBU_C#0", "130 [0]", "86 [0]"},
                              {"/EMGBU_C#1", "130 [1]", "86 [1]"},
                              {"/EMGBU_C#2", "222", "222"},
                              {"/CLKU_B#3", "222", "55 [3]"},
                              {"/CLKU_B#4", "222", "222"},
                              {"/PSU#14", "161 [14]", "89 [14]"},
                              {"/PSU#15", "222", "222"},
                              {"/PSU#20", "161 [15]", "89 [20]"},
                              {"/PSU#60", "161 [45]", "89 [60]"},
                              {"/PSU#74", "161 [59]", "89 [74]"},
                              {"/PSU#75", "222", "222"},
                              {"/FANBP_A#1", "222", "90 [1]"},
                              {"/FANBP_B#1", "222", "91 [1]"},
                              {"/FANBP_B#2", "222", "222"},
                              {"/FAN_A#15", "180 [15]", "93 [15]"},
                              {"/FAN_A#16", "222", "222"},
                              {"/FAN_A#20", "180 [16]", "93 [20]"},
                              {"/FAN_A#35", "180 [31]", "93 [35]"},
                              {"/FAN_A#36", "222", "222"},
                              {"/OPNL#0", "2 [0]", "97 [0]"},
                          });
}

// ---- paths

TEST_F(Location, NumbersAreDecimalWithoutLeadingZeros) {
  expect_positions("qe3", {
                              {"/CMU#0", "16 [0]", "1 [0]"},
                              {"/CMU#00", "222", "222"},
                              {"/CMU#03", "222", "222"},
                              {"/CMU#", "222", "222"},
                              {"/CMU", "222", "222"},
                              {"/CMU#+3", "222", "222"},
                              {"/CMU#-0", "222", "222"},
                              {"/CMU#0x3", "222", "222"},
                              {"/CMU#3A", "222", "222"},
                              {"/CMU##3", "222", "222"},
                              {"/CMU#3#", "222", "222"},
                              {"/CMU#3#4", "222", "222"},
                              {"/CMU#256", "222", "222"},
                              {"/CMU#259", "222", "222"},
                              {"/CMU#1003", "222", "222"},
                              {"/CMU#65539", "222", "222"},
                              {"/CMU#4294967296", "222", "222"},
                              {"/CMU#4294967299", "222", "222"},
                              {"/CMU#999999999999999", "222", "222"},
                              {"/CMU#18446744073709551619", "222", "222"},
                              {"/CMU#3/CPUM#", "222", "222"},
                              {"/CMU#/CPUM#3", "222", "222"},
                              {"/CMU#03/MEM#03A", "222", "222"},
                          });
}

TEST_F(Location, NamesAreExact) {
  expect_positions("qe3", {
                              {"/cmu#3", "222", "222"},
                              {"/CMUX#3", "222", "222"},
                              {"/MU#3", "222", "222"},
                              {"/PSU#074", "222", "222"},
                              {"/PSU#7", "161 [7]", "89 [7]"},
                              {"/PSU#", "222", "222"},
                              {"/PSU", "222", "222"},
                              {"/CMU#1/MEM#03a", "222", "222"},
                              {"/CMU#1/MEM#3A", "222", "222"},
                              {"/CMU#1/MEM#03A/X", "222", "222"},
                              {"/CMU#1/PSU#0", "222", "222"},
                              {"/FAN_A#1/FAN#0", "222", "222"},
                          });
}

TEST_F(Location, MalformedPathsNameNothing) {
  const std::string long_part(300, 'A');
  const std::string long_path = "/" + long_part;
  expect_positions("qe3", {
                              {"", "222", "222"},
                              {"/", "222", "222"},
                              {"//", "222", "222"},
                              {"CMU#0", "222", "222"},
                              {"CMU#0/MEM#03A", "222", "222"},
                              {"/CMU#0/", "222", "222"},
                              {"//CMU#0", "222", "222"},
                              {"/CMU#0//MEM#03A", "222", "222"},
                              {" /CMU#0", "222", "222"},
                              {"/CMU# 0", "222", "222"},
                              {"/CMU#0 ", "222", "222"},
                              {"/CMU#0\n", "222", "222"},
                              {"/CMU#0\t/MEM#03A", "222", "222"},
                              {"/CMU#0\v", "222", "222"},
                              {"/CMU#0\f", "222", "222"},
                              {"/CMU#0\r", "222", "222"},
                              {"/CMU#\xFF", "222", "222"},
                              {"/A/B/C/D/E/F", "222", "222"},
                              {"/A/B/C/D/E/F/G", "222", "222"},
                              {"/A#0/B#0/C#0/D#0/E#0/F#0/G#0/H#0/I#0", "222", "222"},
                              {long_path.c_str(), "222", "222"},
                          });
}

TEST_F(Location, PartsOf32CharactersAreTooLong) {
  on("qe3", [this] {
    const std::string longest = "/CMU#" + std::string(27, '1');
    EXPECT_EQ(got(1, longest.c_str()), "222");
    const auto split_steps = Lines{"100 110C04B0", "100 110C04B1"};
    EXPECT_EQ(doubles::trace_of(0x110C04B0), split_steps);
    EXPECT_EQ(got(1, (longest + "1").c_str()), "222");
    EXPECT_EQ(doubles::trace_of(0x110C04B0),
              (Lines{"100 110C04B0", "100 110C04B1", "100 110C04B0", "805 110C14B1 1 32", "100 110C04B1"}));
    EXPECT_EQ(doubles::trace_of(0x110C04A0).at(4), "805 110C14A5 1 222");
    EXPECT_EQ(got(1, ("/CMU#0/" + std::string(32, 'M')).c_str()), "222");
  });
}

TEST_F(Location, ExpansionUnitsHaveNoLocation) {
  expect_positions("qb1", {
                              {"/IOX@", "222", "222"},
                              {"/IOX@0001", "222", "222"},
                              {"/IOX@0001/PSU#0", "222", "222"},
                              {"/IOX@0001-a-part-that-is-longer-than-32-characters", "222", "222"},
                              {"/IOX#0", "222", "222"},
                              {"/PSU#0/IOX@", "222", "222"},
                          });
}

TEST_F(Location, PathOfAnExpansionUnitIsNotSplit) {
  on("qb1", [this] {
    EXPECT_EQ(got(0, "/IOX@0001-a-part-that-is-longer-than-32-characters"), "222");
    EXPECT_EQ(doubles::trace_of(0x110C04B0), (Lines{"100 110C04B0", "100 110C04B1"}));
    EXPECT_EQ(doubles::trace_of(0x110C04C0), Lines{});
    EXPECT_EQ(doubles::trace_of(0x110C04A0).at(1).substr(0, 12), "805 110C14A7");
    EXPECT_EQ(got(0, "/IOX#0001-a-part-that-is-longer-than-32-characters"), "222");
    EXPECT_EQ(doubles::trace_of(0x110C04A0).at(4).substr(0, 12), "805 110C14A5") << "any other path is";
  });
}

// ---- what comes first

struct RefusalRow {
  const char *says;
  uint32_t mode;
  const char *path;
  const char *marker;
  bool out;
  int32_t result;
  bool asks_for_the_model;
};

TEST_F(Location, RefusalsHaveAnOrder) {
  constexpr RefusalRow kRows[] = {
      {"mode 2", 2, "/PSU#0", "qe1", true, 8, false},
      {"a mode of all ones", 0xFFFFFFFF, "/PSU#0", "qe1", true, 8, false},
      {"mode 256", 256, "/PSU#0", "qe1", true, 8, false},
      {"no path", 0, nullptr, "qe1", true, 8, false},
      {"no position", 1, "/PSU#0", "qe1", false, 8, false},
      {"mode 2 before a malformed path", 2, "PSU#0", "qe1", true, 8, false},
      {"no position before a malformed path", 0, "PSU#0", "qe1", false, 8, false},
      {"a malformed path before the model", 0, "PSU#0", "", true, 222, false},
      {"white space before the model", 0, "/PSU# 0", "", true, 222, false},
      {"seven parts before the model", 0, "/A/B/C/D/E/F/G", "", true, 222, false},
      {"a slash at the end before the model", 0, "/PSU#0/", "", true, 222, false},
      {"a slash alone before the model", 0, "/", "", true, 222, false},
      {"no model before parts of one letter", 0, "/A", "", true, 8, true},
      {"no model before six parts", 0, "/A/B/C/D/E/F", "", true, 8, true},
      {"no model", 0, "/PSU#0", "", true, 8, true},
      {"no model before an expansion unit", 0, "/IOX@1", "", true, 8, true},
      {"no model before a long part", 0, "/AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA", "", true, 8, true},
      {"no model before an unknown location", 1, "/XYZ", "", true, 8, true},
  };
  for (const auto &row : kRows) {
    on(row.marker, [&] {
      EXPECT_EQ(lmainte_get_unit_position_id(row.mode, row.path, row.out ? &position_ : nullptr), row.result)
          << row.says;
      EXPECT_EQ(doubles::trace_of(0x110C0440).empty(), !row.asks_for_the_model) << row.says;
      EXPECT_EQ(machine().calls.empty(), !row.asks_for_the_model) << row.says;
      EXPECT_TRUE(is_untouched()) << row.says;
      const auto records = doubles::trace_of(0x110C04A0);
      ASSERT_EQ(records.size(), 3u) << row.says;
      EXPECT_EQ(records[0], "100 110C04A0");
      EXPECT_EQ(records[1].substr(0, 11), "805 110C14A") << row.says;
      EXPECT_EQ(records[1].substr(13, records[1].find(' ', 13) - 13), std::to_string(static_cast<int32_t>(row.mode)))
          << row.says;
      EXPECT_EQ(records[2], "100 110C04A1");
    });
  }
}

TEST_F(Location, ModelThatCannotBeReadFails) {
  for (const char *call : {"lopen /mgb/cli/etc/controltime_qe", "lread 256", "lclose", "open 2", "get 0", "unlock 1"}) {
    on("qe1", [&] {
      machine().fail(call);
      EXPECT_EQ(get(0, "/PSU#0"), 8) << call;
      EXPECT_TRUE(is_untouched()) << call;
      EXPECT_EQ(doubles::trace_of(0x110C04A0), (Lines{"100 110C04A0", "805 110C14A4 0 8", "100 110C04A1"})) << call;
    });
  }
}

TEST_F(Location, LockedDatabaseKeepsTheModelFromBeingRead) {
  on("qe1", [this] {
    lmainte_scdb_lock(3);
    EXPECT_EQ(get(0, "/PSU#0"), 8);
    lmainte_scdb_unlock(3);
    EXPECT_EQ(get(0, "/PSU#0"), 0);
  });
}

// ---- steps

TEST_F(Location, NumberThatTheModelLacksIsRecordedWithTheMode) {
  const std::tuple<uint32_t, const char *, const char *> rows[] = {
      {0, "/PSU#75", "805 110C14C1 0 75"},
      {1, "/PSU#75", "805 110C14C1 1 75"},
      {0, "/CMU#16", "805 110C14C1 0 16"},
      {1, "/CMU#0/CPUM#4", "805 110C14C1 1 4"},
  };
  for (const auto &[mode, path, error] : rows) {
    on("qe3", [this, mode = mode, path = path, error = error] {
      EXPECT_EQ(get(mode, path), 222) << path;
      EXPECT_EQ(doubles::trace_of(0x110C04C0), (Lines{"100 110C04C0", error, "100 110C04C1"})) << path;
    });
  }
}

TEST_F(Location, RecordsItsSteps) {
  on("qe3", [this] {
    EXPECT_EQ(got(0, "/PSU#74"), "161 [59]");
    EXPECT_EQ(doubles::trace_of(0x110C04A0), (Lines{"100 110C04A0", "100 110C04A1"}));
    EXPECT_EQ(doubles::trace_of(0x110C04B0), (Lines{"100 110C04B0", "100 110C04B1"}));
    EXPECT_EQ(doubles::trace_of(0x110C04C0), (Lines{"100 110C04C0", "100 110C04C1"}));
    EXPECT_EQ(doubles::trace().front(), "100 110C04A0");
    EXPECT_EQ(doubles::trace().back(), "100 110C04A1");
  });
}

TEST_F(Location, FailuresCarryTheMode) {
  const std::pair<const char *, Lines> rows[] = {
      {"/XYZ#0", {"100 110C04A0", "805 110C14A7 0", "100 110C04A1"}},
      {"/CMU#0/MEM#03A", {"100 110C04A0", "805 110C14A8 0 0", "100 110C04A1"}},
      {"/PSU#75", {"100 110C04A0", "805 110C14A9 0 222", "100 110C04A1"}},
  };
  for (const auto &[path, records] : rows) {
    on("qe3", [this, path = path, &records = records] {
      EXPECT_EQ(get(0, path), 222) << path;
      EXPECT_EQ(doubles::trace_of(0x110C04A0), records) << path;
    });
  }
}

TEST_F(Location, MemoryBelowABoardIsRewritten) {
  const std::pair<const char *, const char *> rows[] = {{"qa", "/MBU_A/MEM#3A"},
                                                        {"qb1", "/MBU_A/MEMB#0/MEM#3A"},
                                                        {"qb2", "/MBU_B/MEMB#0/MEM#3A"},
                                                        {"qe1", "/CMU#0/MEM#03A"}};
  for (const auto &[model, path] : rows) {
    on(model, [this, model = std::string(model), path = path] {
      const Lines rewritten = {"100 110C04D0", "100 110C04D1"};
      const Lines rewritten_on_qa = {"100 110C04E0", "100 110C04E1"};
      get(0, path);
      EXPECT_EQ(doubles::trace_of(0x110C04D0), Lines{}) << model;
      EXPECT_EQ(doubles::trace_of(0x110C04E0), Lines{}) << model;
      EXPECT_EQ(get(1, path), 0) << model;
      EXPECT_EQ(doubles::trace_of(0x110C04D0), model[1] == 'b' ? rewritten : Lines{}) << model;
      EXPECT_EQ(doubles::trace_of(0x110C04E0), model == "qa" ? rewritten_on_qa : Lines{}) << model;
    });
  }
}

// ---- the same in words

class FruType : public Location {
 protected:
  void SetUp() override {
    Location::SetUp();
    std::memset(&words_, 0xA5, sizeof words_);
  }

  Lines words() {
    Lines some;
    for (const uint32_t word : {words_.type, words_.count, words_.id[0], words_.id[1], words_.id[2], words_.id[3],
                                words_.id[4], words_.id[5]})
      some.push_back(word == 0xA5A5A5A5 ? "untouched" : std::to_string(word));
    return some;
  }

  lmainte_fru_type words_;
};

TEST_F(FruType, WritesTypeCountAndSoManyIds) {
  on("qe3", [this] {
    EXPECT_EQ(lmainte_convert_strtofrutype("/PSU#74", &words_), 0);
    EXPECT_EQ(words(), (Lines{"161", "1", "59", "untouched", "untouched", "untouched", "untouched", "untouched"}));
    EXPECT_EQ(lmainte_convert_strtofrutype("/IOU#15/PCI#7", &words_), 0);
    EXPECT_EQ(words(), (Lines{"104", "2", "15", "7", "untouched", "untouched", "untouched", "untouched"}));
  });
}

TEST_F(FruType, RecordsItsSteps) {
  on("qe3", [this] {
    lmainte_convert_strtofrutype("/PSU#74", &words_);
    EXPECT_EQ(doubles::trace_of(0x110C0520), (Lines{"100 110C0520", "100 110C0521"}));
    EXPECT_EQ(doubles::trace_of(0x110C04A0), (Lines{"100 110C04A0", "100 110C04A1"}));
    EXPECT_EQ(doubles::trace().front(), "100 110C0520");
    EXPECT_EQ(doubles::trace().back(), "100 110C0521");
  });
}

TEST_F(FruType, RefusesNullArguments) {
  EXPECT_EQ(lmainte_convert_strtofrutype(nullptr, &words_), 8);
  EXPECT_EQ(lmainte_convert_strtofrutype("/PSU#74", nullptr), 8);
  EXPECT_EQ(words(), Lines(8, "untouched"));
  EXPECT_EQ(machine().calls, Lines{});
  EXPECT_EQ(doubles::trace(),
            (Lines{"100 110C0520", "805 110C1521", "100 110C0521", "100 110C0520", "805 110C1521", "100 110C0521"}));
}

TEST_F(FruType, FailureIsTheConversions) {
  const std::pair<const char *, int32_t> rows[] = {
      {"PSU#0", 222}, {"/PSU#75", 222}, {"/CMU#1/MEM#13A", 222}, {"/XYZ", 222}, {"", 222}};
  for (const auto &[path, result] : rows) {
    on("qe3", [this, path = path, result = result] {
      EXPECT_EQ(lmainte_convert_strtofrutype(path, &words_), result) << path;
      EXPECT_EQ(words(), Lines(8, "untouched")) << path;
      EXPECT_EQ(doubles::trace_of(0x110C0520), (Lines{"100 110C0520", "805 110C1522 222", "100 110C0521"})) << path;
    });
  }
}

TEST_F(FruType, WithoutAModelFails) {
  on("", [this] {
    EXPECT_EQ(lmainte_convert_strtofrutype("/PSU#0", &words_), 8);
    EXPECT_EQ(words(), Lines(8, "untouched"));
    EXPECT_EQ(doubles::trace_of(0x110C0520), (Lines{"100 110C0520", "805 110C1522 8", "100 110C0521"}));
  });
}

// ---- rewriting

lmainte_path_component part(const char *name, const char *number, const char *whole) {
  lmainte_path_component component = {};
  std::snprintf(component.name, sizeof component.name, "%s", name);
  std::snprintf(component.number, sizeof component.number, "%s", number);
  std::snprintf(component.whole, sizeof component.whole, "%s", whole);
  return component;
}

std::string text_of(const lmainte_path_component &component) {
  return std::string(component.name) + " " + component.number + " " + component.whole;
}

class ReplaceMemLocation : public doubles::LibraryTest {};

TEST_F(ReplaceMemLocation, PutsTheSecondPartBeforeTheThird) {
  lmainte_path_component parts[3] = {part("MBU_B", "0", "MBU_B"), part("MEMB#", "5", "MEMB#5"),
                                     part("MEM#", "2B", "MEM#2B")};
  EXPECT_EQ(replace_mem_location(parts), 0);
  EXPECT_EQ(text_of(parts[0]), "MBU_B 0 MBU_B");
  EXPECT_EQ(text_of(parts[1]), "MEMB# 5 MEMB#5");
  EXPECT_EQ(text_of(parts[2]), "MEM# 2B MEMB#5/MEM#2B");
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C04D0", "100 110C04D1"}));
}

struct CutRow {
  const char *says;
  const char *second;
  const char *third;
  const char *whole;
};

TEST_F(ReplaceMemLocation, CutsAt31Characters) {
  constexpr CutRow kRows[] = {
      {"31 characters fit", "123456789012345", "ABCDEFGHIJKLMNO", "123456789012345/ABCDEFGHIJKLMNO"},
      {"one of 32 characters is cut", "123456789012345", "ABCDEFGHIJKLMNOP", "123456789012345/ABCDEFGHIJKLMNO"},
      {"the slash may be the last character", "123456789012345678901234567890", "ABC",
       "123456789012345678901234567890/"},
      {"the slash may be cut", "1234567890123456789012345678901", "ABC", "1234567890123456789012345678901"},
      {"empty parts leave the slash", "", "", "/"},
  };
  for (const auto &row : kRows) {
    lmainte_path_component parts[3] = {{}, part("", "", row.second), part("", "", row.third)};
    EXPECT_EQ(replace_mem_location(parts), 0);
    EXPECT_EQ(std::string(parts[2].whole, strnlen(parts[2].whole, 32)), row.whole) << row.says;
  }
}

TEST_F(ReplaceMemLocation, RefusesNull) {
  EXPECT_EQ(replace_mem_location(nullptr), 8);
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C04D0", "805 110C14D1", "100 110C04D1"}));
}

TEST_F(ReplaceMemLocation, OnQaMovesTheSecondPartToTheThirdPlace) {
  lmainte_path_component parts[4] = {part("MBU_A", "0", "MBU_A"), part("MEM#", "1B", "MEM#1B"),
                                     part("old", "9", "old9"), part("next", "7", "next7")};
  uint32_t count = 2;
  EXPECT_EQ(replace_mem_location_qa(parts, &count), 0);
  EXPECT_EQ(count, 3u);
  EXPECT_EQ(text_of(parts[0]), "MBU_A 0 MBU_A");
  EXPECT_EQ(text_of(parts[1]), " 0 ");
  EXPECT_EQ(text_of(parts[2]), "MEM# 1B MEM#1B");
  EXPECT_EQ(text_of(parts[3]), "next 7 next7");
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C04E0", "100 110C04E1"}));
}

TEST_F(ReplaceMemLocation, OnQaRefusesNull) {
  lmainte_path_component parts[3] = {};
  uint32_t count = 2;
  EXPECT_EQ(replace_mem_location_qa(nullptr, &count), 8);
  EXPECT_EQ(replace_mem_location_qa(parts, nullptr), 8);
  EXPECT_EQ(count, 2u);
  EXPECT_EQ(doubles::trace(),
            (Lines{"100 110C04E0", "805 110C14E1", "100 110C04E1", "100 110C04E0", "805 110C14E1", "100 110C04E1"}));
}

}  // namespace
