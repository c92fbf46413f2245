// What a real service processor keeps in its hardware: LEDs, maintenance flags, links, power, fan speeds.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "host/box/text_database.h"

namespace box {

enum class Setting {
  kMaintenance,  // the server's maintenance mode
  kReport,       // whether the start of maintenance was reported to the remote notification service
  kFan,          // fan speed, of the server or of one unit
  kLed,
  kFlag,      // the unit is under maintenance
  kDetached,  // the unit is out of operation
  kLink,
  kPower,
  kMirror  // whether a board's memory is mirrored
};

struct SettingValue {
  Setting setting;
  std::string of;  // a unit's location or a board's number; empty: of the server
  std::string value;

  std::string key() const;  // as people read it: "led /PSU#0"
  bool is_usual()
      const;  // as of a server at rest: no mode and none reported, the usual fan speed, a dark LED, a link that is up
  bool is_blinking() const;
};

class Hardware : private TextDatabase {
 public:
  using TextDatabase::database;
  using TextDatabase::lock;
  using TextDatabase::TextDatabase;
  using TextDatabase::unlock;

  // All that is set, by key. How the box is bent is no part of it.
  std::vector<SettingValue> settings() const;

  bool maintenance_mode() const;
  bool set_maintenance_mode(bool on);  // returns whether it was on, in one step
  void set_report(bool started);
  std::string fan_speed() const;  // of the server: "low" or "high"
  void set_fan_speed(const std::string &speed);
  void set_mirrored(std::uint32_t board, bool mirrored);

  // What belongs to one unit, by its location.
  std::string led(const std::string &unit) const;  // "off", "on" or "blink"
  void set_led(const std::string &unit, const std::string &light);
  bool flag(const std::string &unit) const;
  void set_flag(const std::string &unit, bool start);  // here alone; Inventory::set_flag lets the databases follow
  bool any_flag() const;
  bool detached(const std::string &unit) const;
  void set_detached(const std::string &unit, bool detached);
  std::string link(const std::string &unit) const;  // of a board: "up" or "down", empty while it was never linked
  bool is_linked_down(const std::string &unit) const;
  void set_linked(const std::string &unit, bool up);
  std::string power(const std::string &unit) const;  // of an I/O expansion unit: "on" or "off", else empty
  void set_power(const std::string &unit, const std::string &power);
  std::string fan(const std::string &unit) const;  // its own fan speed, empty where it has none
  void set_fan(const std::string &unit, const std::string &speed);

  // True for an I/O expansion unit of the server and for what is in one.
  bool has_expansion(std::string_view unit) const;

 private:
  std::string text(Setting setting, std::string_view of) const;
  void set_text(Setting setting, std::string_view of, const std::string &value);
};

// The state of a model's hardware after power-on, as a TextDatabase has it.
std::map<std::string, std::string> after_power_on(std::uint32_t model);

// Sets a unit's maintenance flag in such a state.
void set_flag(std::map<std::string, std::string> &state, const std::string &unit);

}  // namespace box
