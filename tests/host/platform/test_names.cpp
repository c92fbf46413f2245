#include <array>

#include "include/lmainte_platform.h"
#include "tests/host/platform/box_fixture.h"

namespace {

using PlatformNames = BoxTest;

// The name, or "refused" when the call failed and left the buffer alone.
std::string name_of(std::uint32_t word_0, std::uint32_t word_1, std::int32_t form = 0, std::int32_t unused_1 = 0,
                    std::int32_t unused_2 = 0) {
  const std::uint32_t id[2] = {word_0, word_1};
  std::array<char, 128> name{};
  name.fill('?');
  if (api_conv_unit_name_get(id, form, name.data(), unused_1, unused_2) == 0) return name.data();
  return std::string(name.data(), name.size()) == std::string(128, '?') ? "refused" : "refused, and the name changed";
}

TEST_F(PlatformNames, GivesTheWholeLocationOrItsLastComponent) {
  mark(".qe1");
  EXPECT_EQ(name_of(0x59012800, 0, 0), "/PSU#40");
  EXPECT_EQ(name_of(0x59012800, 0, 1), "PSU#40");
  EXPECT_EQ(name_of(0x13020300, 0, 0), "/CMU#3/MEM#03A");
  EXPECT_EQ(name_of(0x13020300, 0, 1), "MEM#03A");
}

TEST_F(PlatformNames, FollowsTheModelOfTheBox) {
  EXPECT_EQ(name_of(0xC3010000, 0), "refused") << "no model";
  mark(".qb2");
  EXPECT_EQ(name_of(0xC3010000, 0), "/PSU#0");
  EXPECT_EQ(name_of(0xA6030005, 0x08000000), "/MBU_B/MEMB#5/MEM#3A");
  EXPECT_EQ(name_of(0xA6030005, 0x08000000, 1), "MEM#3A");
  EXPECT_EQ(name_of(0x59010000, 0), "refused") << "another model's power supply";
}

TEST_F(PlatformNames, RefusesWhatHasNoName) {
  mark(".qe1");
  EXPECT_EQ(name_of(0, 0), "refused");
  EXPECT_EQ(name_of(0x01010400, 0), "refused");
  EXPECT_EQ(name_of(0x01010000, 0, 2), "refused");
  EXPECT_EQ(name_of(0x01010000, 0, -1), "refused");
  EXPECT_EQ(name_of(0x01010000, 0, 0, 1, 0), "refused");
  EXPECT_EQ(name_of(0x01010000, 0, 0, 0, 1), "refused");
  const std::uint32_t id[2] = {0x01010000, 0};
  std::array<char, 128> name{};
  EXPECT_NE(api_conv_unit_name_get(nullptr, 0, name.data(), 0, 0), 0);
  EXPECT_NE(api_conv_unit_name_get(id, 0, nullptr, 0, 0), 0);
}

}  // namespace
