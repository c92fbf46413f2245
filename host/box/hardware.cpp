#include "host/box/hardware.h"

#include <algorithm>
#include <iterator>

#include "host/box/model.h"

namespace box {
namespace {

// A key is a word and, where it is not the server's, what it is of.
struct Word {
  Setting setting;
  std::string_view text;
};
constexpr Word kWords[] = {
    {Setting::kMaintenance, "maintenance"},
    {Setting::kReport, "report"},
    {Setting::kFan, "fan"},
    {Setting::kLed, "led"},
    {Setting::kFlag, "flag"},
    {Setting::kDetached, "detached"},
    {Setting::kLink, "link"},
    {Setting::kPower, "power"},
    {Setting::kMirror, "mirror"},
};

constexpr const char *kFlagSet = "start", *kDetachedSet = "yes", *kModeOn = "lock", *kModeOff = "unlock",
                     *kUsualSpeed = "low", *kDark = "off", *kBlinking = "blink", *kLinkUp = "up", *kLinkDown = "down",
                     *kReportStarted = "start", *kReportEnded = "end";

std::string key_of(Setting setting, std::string_view of) {
  const auto *const word =
      std::find_if(std::begin(kWords), std::end(kWords), [&](const Word &row) { return row.setting == setting; });
  return std::string(word->text) + (of.empty() ? "" : " ") + std::string(of);
}

}  // namespace

std::string SettingValue::key() const {
  return key_of(setting, of);
}

bool SettingValue::is_usual() const {
  return (setting == Setting::kMaintenance && value == kModeOff) ||
         (setting == Setting::kFan && value == kUsualSpeed) || (setting == Setting::kLed && value == kDark) ||
         (setting == Setting::kLink && value == kLinkUp) || (setting == Setting::kReport && value == kReportEnded);
}

bool SettingValue::is_blinking() const {
  return setting == Setting::kLed && value == kBlinking;
}

std::vector<SettingValue> Hardware::settings() const {
  std::vector<SettingValue> settings;
  for (const auto &entry : all()) {
    const std::string &key = entry.first;
    const std::size_t space = std::min(key.find(' '), key.size());
    const auto *const word = std::find_if(std::begin(kWords), std::end(kWords),
                                          [&](const Word &row) { return key.compare(0, space, row.text) == 0; });
    if (word == std::end(kWords)) continue;
    settings.push_back({word->setting, key.substr(std::min(space + 1, key.size())), entry.second});
  }
  return settings;
}

std::string Hardware::text(Setting setting, std::string_view of) const {
  return get(key_of(setting, of)).value_or("");
}

// An empty value is none.
void Hardware::set_text(Setting setting, std::string_view of, const std::string &value) {
  if (value.empty()) return clear(key_of(setting, of));
  set(key_of(setting, of), value);
}

bool Hardware::maintenance_mode() const {
  return text(Setting::kMaintenance, "") == kModeOn;
}

bool Hardware::set_maintenance_mode(bool on) {
  return exchange(key_of(Setting::kMaintenance, ""), on ? kModeOn : kModeOff) == kModeOn;
}

void Hardware::set_report(bool started) {
  set_text(Setting::kReport, "", started ? kReportStarted : kReportEnded);
}

std::string Hardware::fan_speed() const {
  const std::string speed = fan("");
  return speed.empty() ? kUsualSpeed : speed;
}

void Hardware::set_fan_speed(const std::string &speed) {
  set_fan("", speed);
}

void Hardware::set_mirrored(std::uint32_t board, bool mirrored) {
  set_text(Setting::kMirror, std::to_string(board), mirrored ? "y" : "n");
}

std::string Hardware::led(const std::string &unit) const {
  const std::string light = text(Setting::kLed, unit);
  return light.empty() ? kDark : light;
}

void Hardware::set_led(const std::string &unit, const std::string &light) {
  set_text(Setting::kLed, unit, light);
}

bool Hardware::flag(const std::string &unit) const {
  return !text(Setting::kFlag, unit).empty();
}

void Hardware::set_flag(const std::string &unit, bool start) {
  set_text(Setting::kFlag, unit, start ? kFlagSet : "");
}

bool Hardware::any_flag() const {
  const std::vector<SettingValue> all_of_them = settings();
  return std::any_of(all_of_them.begin(), all_of_them.end(),
                     [](const SettingValue &row) { return row.setting == Setting::kFlag; });
}

bool Hardware::detached(const std::string &unit) const {
  return !text(Setting::kDetached, unit).empty();
}

void Hardware::set_detached(const std::string &unit, bool detached) {
  set_text(Setting::kDetached, unit, detached ? kDetachedSet : "");
}

std::string Hardware::link(const std::string &unit) const {
  return text(Setting::kLink, unit);
}

bool Hardware::is_linked_down(const std::string &unit) const {
  return link(unit) == kLinkDown;
}

void Hardware::set_linked(const std::string &unit, bool up) {
  set_text(Setting::kLink, unit, up ? kLinkUp : kLinkDown);
}

std::string Hardware::power(const std::string &unit) const {
  return text(Setting::kPower, unit);
}

void Hardware::set_power(const std::string &unit, const std::string &power) {
  set_text(Setting::kPower, unit, power);
}

std::string Hardware::fan(const std::string &unit) const {
  return text(Setting::kFan, unit);
}

void Hardware::set_fan(const std::string &unit, const std::string &speed) {
  set_text(Setting::kFan, unit, speed);
}

bool Hardware::has_expansion(std::string_view unit) const {
  if (!unit.starts_with("/IOX@")) return false;
  return !text(Setting::kPower, unit.substr(0, unit.find('/', 1))).empty();
}

std::map<std::string, std::string> after_power_on(std::uint32_t model) {
  std::map<std::string, std::string> state{{key_of(Setting::kMaintenance, ""), kModeOff},
                                           {key_of(Setting::kFan, ""), kUsualSpeed}};
  if (!is_high_end(model)) return state;
  for (const char *expansion : {"/IOX@0A21", "/IOX@0A22"}) state[key_of(Setting::kPower, expansion)] = "on";
  return state;
}

void set_flag(std::map<std::string, std::string> &state, const std::string &unit) {
  state[key_of(Setting::kFlag, unit)] = kFlagSet;
}

}  // namespace box
