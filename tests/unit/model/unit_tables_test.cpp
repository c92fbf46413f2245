// The locations of the six models and the names that they use, told again from the rules by which they are made.

#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "include/lmainte.h"

namespace {

// ---- names

struct Name {
  std::string name;
  int id_fru, id_pos;

  bool operator==(const Name &other) const = default;
};

void PrintTo(const Name &name, std::ostream *out) {
  *out << name.name << " " << name.id_fru << "/" << name.id_pos;
}

using Names = std::vector<Name>;

Names names_of(const lmainte_unit_name *table) {
  Names names;
  for (; table->name[0] != '\0'; ++table) names.push_back({table->name, table->id_fru, table->id_pos});
  return names;
}

struct Run {
  std::string stem;
  int first, last;
};

// Units by their number, run after run: their place counts on, their position is the number.
Names counted(const std::vector<Run> &runs) {
  Names names;
  for (const auto &run : runs)
    for (int number = run.first; number <= run.last; ++number)
      names.push_back({run.stem + "#" + std::to_string(number), static_cast<int>(names.size()), number});
  return names;
}

// The eight memory modules of a board, in the order of the records.
const std::vector<std::string> kModules = {"3A", "2A", "3B", "2B", "1A", "0A", "1B", "0B"};

Names memory_of_boards(int boards, int modulo) {
  Names names;
  for (int board = 0; board < boards; ++board) {
    for (int k = 0; k < 8; ++k) {
      const int id = (8 * board + k) % modulo;
      names.push_back({"MEMB#" + std::to_string(board) + "/MEM#" + kModules[static_cast<size_t>(k)], id, id});
    }
  }
  return names;
}

Names memory_of_high_end() {
  Names names;
  for (const auto &half : {std::vector<std::string>{"3A", "2A", "3B", "2B"}, {"1A", "0A", "1B", "0B"}}) {
    for (int group = 0; group < 4; ++group) {
      for (const auto &module : half) {
        const int id = static_cast<int>(names.size());
        names.push_back({"MEM#" + std::to_string(group) + module, id, id});
      }
    }
  }
  return names;
}

Names memory_of_entry_model() {
  Names names;
  for (int k = 0; k < 8; ++k) names.push_back({"MEM#" + kModules[static_cast<size_t>(k)], k, k});
  return names;
}

TEST(UnitNames, PowerSupplies) {
  EXPECT_EQ(names_of(convert_unit_no_qa_psu), counted({{"PSU", 0, 1}}));
  EXPECT_EQ(names_of(convert_unit_no_qb1_psu), counted({{"PSU", 0, 1}}));
  EXPECT_EQ(names_of(convert_unit_no_qb2_psu), counted({{"PSU", 0, 3}}));
  EXPECT_EQ(names_of(convert_unit_no_qe1_psu), counted({{"PSU", 0, 8}, {"PSU", 40, 48}}));
  EXPECT_EQ(names_of(convert_unit_no_qe2_psu), counted({{"PSU", 0, 14}, {"PSU", 40, 54}}));
  EXPECT_EQ(names_of(convert_unit_no_qe3_psu),
            counted({{"PSU", 0, 14}, {"PSU", 20, 34}, {"PSU", 40, 54}, {"PSU", 60, 74}}));
}

TEST(UnitNames, FanTrays) {
  EXPECT_EQ(names_of(convert_unit_no_qa_fan), counted({{"FAN_A", 0, 1}}));
  EXPECT_EQ(names_of(convert_unit_no_qb1_fan), counted({{"FAN_A", 0, 1}, {"FAN_B", 0, 1}}));
  EXPECT_EQ(names_of(convert_unit_no_qb2_fan), counted({{"FAN_A", 0, 3}}));
  EXPECT_EQ(names_of(convert_unit_no_qe1_fan), counted({{"FAN_B", 0, 1}, {"FAN_A", 0, 3}, {"FAN_B", 2, 7}}));
  EXPECT_EQ(names_of(convert_unit_no_qe2_fan), counted({{"FAN_A", 0, 15}}));
  EXPECT_EQ(names_of(convert_unit_no_qe3_fan), counted({{"FAN_A", 0, 15}, {"FAN_A", 20, 35}}));
}

TEST(UnitNames, MemoryModules) {
  EXPECT_EQ(names_of(convert_unit_no_qa_mem), memory_of_entry_model());
  EXPECT_EQ(names_of(convert_unit_no_qb1_mem), memory_of_boards(4, 32));
  EXPECT_EQ(names_of(convert_unit_no_qb2_mem), memory_of_boards(8, 32));
  EXPECT_EQ(names_of(convert_unit_no_qe_mem), memory_of_high_end());
}

TEST(UnitNames, MemoryOfTheHighEndGoesFromTheFirstGroupToTheLast) {
  EXPECT_STREQ(convert_unit_no_qe_mem[0].name, "MEM#03A");
  EXPECT_STREQ(convert_unit_no_qe_mem[4].name, "MEM#13A");
  EXPECT_STREQ(convert_unit_no_qe_mem[31].name, "MEM#30B");
}

TEST(UnitNames, FanBackplanes) {
  EXPECT_EQ(names_of(convert_unit_no_qa_fanbp), (Names{{"FANBP_B", 0, 0}}));
  EXPECT_EQ(names_of(convert_unit_no_qb1_fanbp), (Names{{"FANBP_B", 0, 0}}));
  EXPECT_EQ(names_of(convert_unit_no_qb2_fanbp), (Names{{"FANBP_C", 0, 0}}));
  EXPECT_EQ(names_of(convert_unit_no_qe1_fanbp), (Names{{"FANBP_C#0", 0, 0}, {"FANBP_C#1", 1, 1}}));
  EXPECT_EQ(names_of(convert_unit_no_qe2_fanbp), (Names{{"FANBP_A#0", 0, 0}, {"FANBP_B#0", 1, 0}}));
  EXPECT_EQ(names_of(convert_unit_no_qe3_fanbp),
            (Names{{"FANBP_A#0", 0, 0}, {"FANBP_B#0", 1, 0}, {"FANBP_A#1", 2, 1}, {"FANBP_B#1", 3, 1}}));
}

TEST(UnitNames, TablesAreObjectsOfTheirOwn) {
  EXPECT_NE(static_cast<const void *>(convert_unit_no_qa_psu), static_cast<const void *>(convert_unit_no_qb1_psu));
  EXPECT_NE(static_cast<const void *>(convert_unit_no_qa_fanbp), static_cast<const void *>(convert_unit_no_qb1_fanbp));
}

// ---- locations

struct LocationRow {
  const char *pattern;
  int type_fru, type_pos;
  std::vector<uint8_t> limits;  // of its components
  const lmainte_unit_name *names;
};

void expect_locations(const lmainte_unit_code *table, const std::vector<LocationRow> &locations) {
  for (const auto &location : locations) {
    SCOPED_TRACE(location.pattern);
    EXPECT_STREQ(table->pattern, location.pattern);
    EXPECT_EQ(table->type_fru, location.type_fru);
    EXPECT_EQ(table->type_pos, location.type_pos);
    auto limits = location.limits;
    limits.resize(6, 0);
    EXPECT_EQ(std::vector<uint8_t>(table->max, table->max + 6), limits);
    EXPECT_EQ(table->names, location.names);
    ++table;
  }
  EXPECT_STREQ(table->pattern, "");
}

TEST(UnitLocations, OfQa) {
  expect_locations(convert_unit_code_qa, {
                                             {"/MBU_A", 0, 120, {1}, nullptr},
                                             {"/MBU_A/MEM#", 0, 138, {1, 1, 8}, convert_unit_no_qa_mem},
                                             {"/MBU_A/PCI#", 104, 192, {1, 4}, nullptr},
                                             {"/PSU#", 161, 195, {2}, convert_unit_no_qa_psu},
                                             {"/FAN_A#", 180, 198, {2}, convert_unit_no_qa_fan},
                                             {"/FANBP_B", 0, 199, {1}, convert_unit_no_qa_fanbp},
                                             {"/OPNL", 0, 205, {1}, nullptr},
                                         });
}

TEST(UnitLocations, OfQb1) {
  expect_locations(convert_unit_code_qb1, {
                                              {"/MBU_A", 0, 120, {1}, nullptr},
                                              {"/MBU_A/DDC_A#", 0, 121, {1, 2}, nullptr},
                                              {"/MBU_A/DDC_B#", 0, 122, {1, 1}, nullptr},
                                              {"/MBU_A/CPUM#", 0, 139, {1, 2}, nullptr},
                                              {"/MBU_A/MEMB#", 0, 133, {1, 4}, nullptr},
                                              {"/MBU_A/MEMB#/MEM#", 0, 138, {1, 4, 8}, convert_unit_no_qb1_mem},
                                              {"/BPU_A", 0, 175, {1}, nullptr},
                                              {"/IOU#", 0, 179, {1}, nullptr},
                                              {"/IOU#/DDC_A#", 0, 188, {1, 1}, nullptr},
                                              {"/IOU#/DDCR", 0, 189, {1, 1}, nullptr},
                                              {"/IOU#/DDCR/DDC_B#", 0, 190, {1, 1, 1}, nullptr},
                                              {"/IOU#/PCI#", 104, 192, {1, 5}, nullptr},
                                              {"/EMGBU", 0, 194, {1}, nullptr},
                                              {"/PSU#", 161, 195, {2}, convert_unit_no_qb1_psu},
                                              {"/FANBP_A", 0, 197, {1}, convert_unit_no_qb1_fanbp},
                                              {"/FAN_A#", 180, 198, {2}, convert_unit_no_qb1_fan},
                                              {"/FANBP_B", 0, 199, {1}, convert_unit_no_qb1_fanbp},
                                              {"/FAN_B#", 180, 201, {2}, convert_unit_no_qb1_fan},
                                              {"/OPNL", 0, 205, {1}, nullptr},
                                          });
}

TEST(UnitLocations, OfQb2) {
  expect_locations(convert_unit_code_qb2, {
                                              {"/MBU_B", 0, 147, {1}, nullptr},
                                              {"/MBU_B/DDC_A#", 0, 148, {1, 4}, nullptr},
                                              {"/MBU_B/DDC_B#", 0, 149, {1, 2}, nullptr},
                                              {"/MBU_B/CPUM#", 0, 167, {1, 4}, nullptr},
                                              {"/MBU_B/MEMB#", 0, 161, {1, 8}, nullptr},
                                              {"/MBU_B/MEMB#/MEM#", 0, 166, {1, 8, 8}, convert_unit_no_qb2_mem},
                                              {"/IOU#", 0, 179, {2}, nullptr},
                                              {"/IOU#/DDC_A#", 0, 188, {2, 1}, nullptr},
                                              {"/IOU#/DDCR", 0, 189, {2, 1}, nullptr},
                                              {"/IOU#/DDCR/DDC_B#", 0, 190, {2, 1, 1}, nullptr},
                                              {"/IOU#/PCI#", 104, 192, {2, 5}, nullptr},
                                              {"/EMGBU", 0, 194, {1}, nullptr},
                                              {"/PSU#", 161, 195, {4}, convert_unit_no_qb2_psu},
                                              {"/FANBP_C", 0, 202, {1}, convert_unit_no_qb2_fanbp},
                                              {"/FAN_A#", 180, 204, {4}, convert_unit_no_qb2_fan},
                                              {"/OPNL", 0, 205, {1}, nullptr},
                                          });
}

TEST(UnitLocations, OfQe1) {
  expect_locations(convert_unit_code_qe1, {
                                              {"/CMU#", 16, 1, {4}, nullptr},
                                              {"/CMU#/CPUM#", 0, 20, {4, 4}, nullptr},
                                              {"/CMU#/MEM#", 0, 19, {16, 32}, convert_unit_no_qe_mem},
                                              {"/IOU#", 80, 42, {4}, nullptr},
                                              {"/IOU#/DDC#", 0, 51, {4, 14}, nullptr},
                                              {"/IOU#/PCI#", 104, 52, {4, 8}, nullptr},
                                              {"/EMGBU_B#", 128, 85, {2}, nullptr},
                                              {"/PSU#", 161, 89, {9}, convert_unit_no_qe1_psu},
                                              {"/BP_A#", 0, 64, {1}, nullptr},
                                              {"/DDC_A#", 212, 76, {2}, nullptr},
                                              {"/FANBP_C#", 0, 92, {2}, convert_unit_no_qe1_fanbp},
                                              {"/FAN_A#", 180, 93, {4}, convert_unit_no_qe1_fan},
                                              {"/FAN_B#", 180, 95, {8}, convert_unit_no_qe1_fan},
                                              {"/OPNL#", 2, 97, {1}, nullptr},
                                          });
}

TEST(UnitLocations, OfQe2) {
  expect_locations(convert_unit_code_qe2, {
                                              {"/CMU#", 16, 1, {8}, nullptr},
                                              {"/CMU#/CPUM#", 0, 20, {8, 4}, nullptr},
                                              {"/CMU#/MEM#", 0, 19, {8, 32}, convert_unit_no_qe_mem},
                                              {"/IOU#", 80, 42, {8}, nullptr},
                                              {"/IOU#/DDC#", 0, 51, {8, 14}, nullptr},
                                              {"/IOU#/PCI#", 104, 52, {8, 8}, nullptr},
                                              {"/EMGBU_B#", 128, 85, {2}, nullptr},
                                              {"/PSU#", 161, 89, {15}, convert_unit_no_qe2_psu},
                                              {"/FANBP_A#", 0, 90, {1}, convert_unit_no_qe2_fanbp},
                                              {"/FANBP_B#", 0, 91, {1}, convert_unit_no_qe2_fanbp},
                                              {"/FAN_A#", 180, 93, {16}, convert_unit_no_qe2_fan},
                                              {"/OPNL#", 2, 97, {1}, nullptr},
                                          });
}

TEST(UnitLocations, OfQe3) {
  expect_locations(convert_unit_code_qe3, {
                                              {"/CMU#", 16, 1, {16}, nullptr},
                                              {"/CMU#/CPUM#", 0, 20, {16, 4}, nullptr},
                                              {"/CMU#/MEM#", 0, 19, {16, 32}, convert_unit_no_qe_mem},
                                              {"/XBU_B#", 0, 29, {16}, nullptr},
                                              {"/IOU#", 80, 42, {16}, nullptr},
                                              {"/IOU#/DDC#", 0, 51, {16, 14}, nullptr},
                                              {"/IOU#/PCI#", 104, 52, {16, 8}, nullptr},
                                              {"/EMGBU_B#", 128, 85, {2}, nullptr},
                                              {"/EMGBU_C#", 130, 86, {2}, nullptr},
                                              {"/CLKU_B#", 0, 55, {4}, nullptr},
                                              {"/PSU#", 161, 89, {30}, convert_unit_no_qe3_psu},
                                              {"/FANBP_A#", 0, 90, {2}, convert_unit_no_qe3_fanbp},
                                              {"/FANBP_B#", 0, 91, {2}, convert_unit_no_qe3_fanbp},
                                              {"/FAN_A#", 180, 93, {32}, convert_unit_no_qe3_fan},
                                              {"/OPNL#", 2, 97, {1}, nullptr},
                                          });
}

}  // namespace
