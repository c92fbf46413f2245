#include "host/box/hardware.h"

#include <gtest/gtest.h>

namespace {

using box::Setting;

TEST(SettingOfTheHardware, IsUsualWhereTheServerIsAtRest) {
  const struct {
    const char *what;
    box::SettingValue setting;
    bool is_usual;
  } rows[] = {
      {"no maintenance mode", {Setting::kMaintenance, "", "unlock"}, true},
      {"maintenance mode", {Setting::kMaintenance, "", "lock"}, false},
      {"fans that are slow", {Setting::kFan, "", "low"}, true},
      {"fans that are fast", {Setting::kFan, "", "high"}, false},
      {"a dark LED", {Setting::kLed, "/PSU#0", "off"}, true},
      {"a lit LED", {Setting::kLed, "/PSU#0", "on"}, false},
      {"a board whose link is up", {Setting::kLink, "/CMU#0", "up"}, true},
      {"a board whose link is down", {Setting::kLink, "/CMU#0", "down"}, false},
      {"an end of maintenance that was reported", {Setting::kReport, "", "end"}, true},
      {"a start of maintenance that was reported", {Setting::kReport, "", "start"}, false},
      {"a unit that is powered off", {Setting::kPower, "/IOX#0", "off"}, false},
  };
  for (const auto &row : rows) EXPECT_EQ(row.setting.is_usual(), row.is_usual) << row.what;
}

TEST(SettingOfTheHardware, BlinksWhereItIsALed) {
  EXPECT_TRUE((box::SettingValue{Setting::kLed, "/PSU#0", "blink"}).is_blinking());
  EXPECT_FALSE((box::SettingValue{Setting::kLed, "/PSU#0", "on"}).is_blinking());
  EXPECT_FALSE((box::SettingValue{Setting::kPower, "/PSU#0", "blink"}).is_blinking());
}

}  // namespace
