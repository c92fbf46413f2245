// What is to be seen of a box: the server with its units, and what happens there. It knows nothing of files.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace watch {

enum class State : std::uint8_t { kNormal, kDegraded, kFaulted, kOut, kUnreadable };
enum class Led : std::uint8_t { kOff, kOn, kBlinks };

inline constexpr std::uint32_t kNobody = UINT32_MAX;

struct Unit {
  std::string name;                 // "/CMU#0/MEM#03A"
  std::uint32_t carrier = kNobody;  // the place in the list of the unit on which it sits
  State state = State::kNormal;
  Led led = Led::kOff;
  bool maintenance = false;  // its flag is set
  bool detached = false;     // out of operation
  bool link_down = false;
  std::string fan;   // a fan speed of its own
  std::string note;  // its name in the identity record, or why its record cannot be read
};

// An extended system board. Numbers of domains above kLastDomain are of none.
struct Part {
  static constexpr std::uint32_t kLastDomain = 23;

  std::uint32_t board = 0, part = 0, domain = 0;
  bool active = false, readable = false;
};

struct Server {
  std::string model;
  bool in_maintenance_mode = false;
  std::string fan_speed;  // empty: nobody knows what the server does as a whole
  std::string note;       // on which service processor it runs, or why that cannot be read
  std::vector<Unit> units;
  std::vector<Part> parts;
  std::vector<std::string> bent;      // what is bent, broken, deviated, or set where no unit shows it; a line each
  std::vector<std::string> programs;  // how each control program is bent
};

struct Scene {
  Server server;
  std::vector<std::string> trace, log;  // the newest last
  std::vector<std::string> at_work;
  std::string trouble;  // why the box cannot be read; what was read before stays
};

inline bool is_in_order(const Unit &unit) {
  return unit.state == State::kNormal && !unit.detached && !unit.maintenance && !unit.link_down &&
         unit.led == Led::kOff;
}

// Whether something is wrong with it, or with a unit that it carries.
bool is_troubled(const Unit &unit);
bool carries_trouble(const Server &server, std::size_t unit);
std::optional<std::size_t> find_unit(const Server &server, std::string_view name);

// "Faulted, LED blinks, under maintenance, out of operation"
std::string condition_of(const Unit &unit);

}  // namespace watch
