#include "host/box/record_words.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

// What is word and what is byte, at the places that readers look at.
struct Row {
  const char *record;
  std::vector<std::size_t> words;
  std::vector<std::size_t> bytes;  // in no word
};

const Row kRows[] = {
    {"gen_system_info", {0, 4, 24, 32}, {36}},
    {"setup_cmu_info_15", {0, 4}, {8}},
    {"setup_xsb_info_63", {128}, {132}},
    {"current_system_info", {8, 32}, {148}},
    {"current_panel_info", {0, 4, 8}, {12}},
    {"current_cmu_info_00", {0, 4, 8, 24, 28, 36, 44}, {48}},
    {"current_cpu_module_info_03", {0, 744, 1488, 2232, 2240, 2972}, {}},
    {"current_dimm_info_07", {0, 56, 1736, 1744, 1788}, {}},
    {"current_iou_info_02", {0, 4, 8, 56, 60, 64, 72, 76, 336}, {12, 376}},
    {"current_psu_info", {0, 4, 8, 56, 3304, 3312}, {20, 24, 76, 3324}},
    {"current_fantray_info", {0, 8, 32, 88, 144, 216, 6696, 6840}, {20, 44, 100, 156, 6716}},
    {"current_bp32_info", {0, 8, 456, 460, 464, 496, 504}, {12, 540}},
    {"current_mgb_info", {0, 8, 80, 88}, {}},
    {"current_mgbr_info", {0, 8, 24, 32}, {}},
    {"current_xsb_info_00", {0, 52, 56}, {61}},
    {"current_domain_info_23", {0}, {44}},
    {"local_mgb_info", {0, 4, 12, 16}, {20}},
    {"fru_psu_qe_info_09", {}, {0, 79, 80}},
    {"fru_dimm_info_511", {}, {92, 95}},
    {"fru_bpa_info", {}, {6187}},
    {"current_cmu_info_", {}, {0}},
    {"current_cmu_info_0x", {}, {0}},
    {"somebody_elses", {}, {0}},
};

bool holds(const std::vector<std::size_t> &words, std::size_t at) {
  return std::ranges::any_of(words, [&](std::size_t word) { return at >= word && at < word + 4; });
}

TEST(RecordWords, AreWhereTheReadersLook) {
  for (const Row &row : kRows) {
    const std::vector<std::size_t> words = box::words_of(row.record);
    for (const std::size_t at : row.words) EXPECT_TRUE(holds(words, at)) << row.record << " byte " << at;
    for (const std::size_t at : row.bytes) EXPECT_FALSE(holds(words, at)) << row.record << " byte " << at;
    for (std::size_t i = 0; i + 1 < words.size(); ++i) EXPECT_LE(words[i] + 4, words[i + 1]) << row.record;
    for (const std::size_t word : words) EXPECT_EQ(word % 4, 0u) << row.record;
  }
}

TEST(RecordWords, AreTurnedRoundAndTheBytesBetweenThemAreNot) {
  box::Bytes record(28);
  for (std::size_t i = 0; i < record.size(); ++i) record[i] = static_cast<std::uint8_t>(i);
  box::swap_words("current_psu_info", record);
  EXPECT_EQ(record, (box::Bytes{3,  2,  1,  0,  7,  6,  5,  4,  11, 10, 9,  8,  12, 13,
                                14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27}));
}

TEST(RecordWords, ThatARecordIsTooShortForStay) {
  box::Bytes record{1, 2, 3, 4, 5, 6, 7};
  box::swap_words("current_psu_info", record);
  EXPECT_EQ(record, (box::Bytes{4, 3, 2, 1, 5, 6, 7}));
  box::Bytes none;
  box::swap_words("current_psu_info", none);
  EXPECT_TRUE(none.empty());
}

}  // namespace
