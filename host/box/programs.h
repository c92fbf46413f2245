// What the control programs of a box share: their names, how they are bent for a test, and the hardware that they move.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "host/box/database.h"
#include "host/box/place.h"

namespace box {

// Where every control program is, seen by a command in the box; the program's own paths are links to it.
inline constexpr std::string_view kControlProgram = "/mgb/lib/control_program";

struct Program {
  std::string_view name;
  std::string_view path;
};

// In the order of their numbers (LMAINTE_CMD_...).
inline constexpr std::array<Program, 16> kPrograms{{
    {"ctlmainte", "/mgb/bin/ctlmainte"},
    {"ctlfan", "/mgb/bin/ctlfan"},
    {"judgectlfru", "/mgb/bin/judgectlfru"},
    {"testfru", "/mgb/bin/testfru"},
    {"detachfru", "/mgb/bin/detachfru"},
    {"ctlled", "/mgb/bin/ctlled"},
    {"waitmgbready", "/mgb/bin/waitmgbready"},
    {"setmainteflag", "/mgb/bin/setmainteflag"},
    {"setupfru", "/mgb/cli/usr/bin/setupfru"},
    {"ioadm", "/mgb/cli/usr/bin/ioadm"},
    {"clearpci", "/mgb/bin/clearpci"},
    {"vantamainte", "/mgb/bin/vantamainte"},
    {"testsb", "/mgb/cli/usr/bin/testsb"},
    {"deleteboard", "/mgb/cli/usr/bin/deleteboard"},
    {"chkfanspeed", "/mgb/bin/chkfanspeed"},
    {"linkboard", "/mgb/bin/linkboard"},
}};

// How a control program is bent, in the order in which it acts.
struct Bend {
  bool ignore_term = false;
  std::uint32_t delay = 0;    // seconds before the program does anything
  bool hang = false;          // does nothing for ever; with an exit status, until SIGTERM
  std::optional<int> die{};   // dies by this signal instead of acting
  std::optional<int> exit{};  // ends with this exit status instead of acting

  bool straight() const { return !ignore_term && delay == 0 && !hang && !die && !exit; }
};

// The last run of a control program.
struct Run {
  std::int64_t time_ns = 0;
  std::int32_t pid = 0;
  std::optional<int> status;  // none: it has not ended, or it was killed
  std::string arguments;
};

// The state of a model's hardware after power-on, by the keys of Hardware.
std::map<std::string, std::string> after_power_on(std::uint32_t model);

// As if setmainteflag had put this unit under maintenance.
void set_flag(std::map<std::string, std::string> &state, const std::string &unit);

// The hardware of a box, in a database of its own.
class Hardware {
 public:
  explicit Hardware(const Place &place, bool create = false);

  // Readable keys with readable values, such as "led /PSU#0" and "blink". Throws.
  std::optional<std::string> get(const std::string &key) const;
  void set(const std::string &key, const std::string &value);
  void clear(const std::string &key);

  // Sets a key and returns what it was, in one step: of several processes that do this at a time, each gets what the one
  // before it has set. An empty value is none. Throws.
  std::string exchange(const std::string &key, const std::string &value);

  // From lock to unlock no other process changes any of it, and what is not unlocked is undone with the object. Whoever
  // takes the lock of a configuration database too takes that one first. Both throw.
  void lock();
  void unlock();

  // All of it, and all of it at once.
  std::map<std::string, std::string> all() const;
  void set_all(const std::map<std::string, std::string> &state);

  // What belongs to one unit, by its location.
  std::string led(const std::string &unit) const;  // "off", "on" or "blink"
  void set_led(const std::string &unit, const std::string &light);
  std::string flag(const std::string &unit) const;     // "start" while the unit is under maintenance, else empty
  void set_flag(const std::string &unit, bool start);  // here alone; Inventory::set_flag lets the databases follow
  bool any_flag() const;                               // a unit is under maintenance
  bool detached(const std::string &unit) const;        // out of operation
  void set_detached(const std::string &unit, bool detached);
  std::string link(const std::string &unit) const;  // of a board: "up" or "down", empty while it was never linked
  void set_link(const std::string &unit, const std::string &link);
  std::string power(const std::string &unit) const;  // of an I/O expansion unit: "on" or "off", else empty
  void set_power(const std::string &unit, const std::string &power);
  std::string fan(const std::string &unit) const;  // its own fan speed, empty where it has none
  void set_fan(const std::string &unit, const std::string &speed);

  // True for an I/O expansion unit of the server and for what is in one.
  bool has_expansion(std::string_view unit) const;

  Bend bend(std::string_view program) const;
  void set_bend(std::string_view program, const Bend &bend);
  std::optional<Run> last_run(std::string_view program) const;
  void set_last_run(std::string_view program, const Run &run);

 private:
  std::string of_unit(std::string_view what, std::string_view unit) const;
  void set_of_unit(std::string_view what, std::string_view unit, const std::string &value);

  Database database_;
};

}  // namespace box
