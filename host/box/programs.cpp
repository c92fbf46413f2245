#include "host/box/programs.h"

#include <sstream>
#include <stdexcept>

#include "host/box/model.h"
#include "host/box/number.h"

namespace box {
namespace {

constexpr std::string_view kLed = "led", kFlag = "flag", kDetached = "detached", kLink = "link", kPower = "power",
                           kFan = "fan";
constexpr const char *kFlagSet = "start";

std::string key_of(std::string_view what, std::string_view unit) {
  return std::string(what) + " " + std::string(unit);
}

}  // namespace

std::map<std::string, std::string> after_power_on(std::uint32_t model) {
  std::map<std::string, std::string> state{{"maintenance", "unlock"}, {"fan", "low"}};
  if (!is_high_end(model)) return state;
  for (const char *expansion : {"/IOX@0A21", "/IOX@0A22"}) state[key_of(kPower, expansion)] = "on";
  return state;
}

void set_flag(std::map<std::string, std::string> &state, const std::string &unit) {
  state[key_of(kFlag, unit)] = kFlagSet;
}

Hardware::Hardware(const Place &place, bool create) : database_(place.hardware(), create) {}

std::optional<std::string> Hardware::get(const std::string &key) const {
  const std::optional<Bytes> record = database_.get(key);
  if (!record) return std::nullopt;
  return std::string(record->begin(), record->end());
}

void Hardware::set(const std::string &key, const std::string &value) {
  database_.put(key, {reinterpret_cast<const std::uint8_t *>(value.data()), value.size()});
}

void Hardware::clear(const std::string &key) {
  if (database_.get(key)) database_.remove(key);
}

std::map<std::string, std::string> Hardware::all() const {
  std::map<std::string, std::string> state;
  database_.each([&](std::string_view key, std::span<const std::uint8_t> value) {
    state.emplace(key, std::string(value.begin(), value.end()));
  });
  return state;
}

void Hardware::lock() {
  if (!database_.lock()) throw std::runtime_error("the box's own database is locked by another process");
}

void Hardware::unlock() {
  if (!database_.unlock()) throw std::runtime_error("the box's own database could not be written");
}

void Hardware::set_all(const std::map<std::string, std::string> &state) {
  lock();
  for (const auto &[key, value] : state) set(key, value);
  unlock();
}

std::string Hardware::exchange(const std::string &key, const std::string &value) {
  lock();
  std::string before = get(key).value_or("");
  if (value.empty()) {
    clear(key);
  } else if (value != before) {
    set(key, value);
  }
  unlock();
  return before;
}

// An empty value is none.
std::string Hardware::of_unit(std::string_view what, std::string_view unit) const {
  return get(key_of(what, unit)).value_or("");
}

void Hardware::set_of_unit(std::string_view what, std::string_view unit, const std::string &value) {
  const std::string key = key_of(what, unit);
  if (value.empty()) return clear(key);
  set(key, value);
}

std::string Hardware::led(const std::string &unit) const {
  const std::string light = of_unit(kLed, unit);
  return light.empty() ? "off" : light;
}

void Hardware::set_led(const std::string &unit, const std::string &light) {
  set_of_unit(kLed, unit, light);
}

std::string Hardware::flag(const std::string &unit) const {
  return of_unit(kFlag, unit);
}

void Hardware::set_flag(const std::string &unit, bool start) {
  set_of_unit(kFlag, unit, start ? kFlagSet : "");
}

bool Hardware::any_flag() const {
  const std::map<std::string, std::string> state = all();
  const auto first = state.lower_bound(key_of(kFlag, ""));
  return first != state.end() && first->first.starts_with(key_of(kFlag, ""));
}

bool Hardware::detached(const std::string &unit) const {
  return !of_unit(kDetached, unit).empty();
}

void Hardware::set_detached(const std::string &unit, bool detached) {
  set_of_unit(kDetached, unit, detached ? "yes" : "");
}

std::string Hardware::link(const std::string &unit) const {
  return of_unit(kLink, unit);
}

void Hardware::set_link(const std::string &unit, const std::string &link) {
  set_of_unit(kLink, unit, link);
}

std::string Hardware::power(const std::string &unit) const {
  return of_unit(kPower, unit);
}

void Hardware::set_power(const std::string &unit, const std::string &power) {
  set_of_unit(kPower, unit, power);
}

std::string Hardware::fan(const std::string &unit) const {
  return of_unit(kFan, unit);
}

void Hardware::set_fan(const std::string &unit, const std::string &speed) {
  set_of_unit(kFan, unit, speed);
}

bool Hardware::has_expansion(std::string_view unit) const {
  if (!unit.starts_with("/IOX@")) return false;
  return !of_unit(kPower, unit.substr(0, unit.find('/', 1))).empty();
}

Bend Hardware::bend(std::string_view program) const {
  Bend bend;
  std::istringstream lines(get("bend " + std::string(program)).value_or(""));
  for (std::string word; lines >> word;) {
    std::string value;
    if (word == "hang") bend.hang = true;
    if (word == "ignore-term") bend.ignore_term = true;
    if (word != "exit" && word != "delay" && word != "die") continue;
    lines >> value;
    if (word == "exit") bend.exit = number_in<int>(value).value_or(0);
    if (word == "delay") bend.delay = number_in<std::uint32_t>(value).value_or(0);
    if (word == "die") bend.die = number_in<int>(value).value_or(0);
  }
  return bend;
}

void Hardware::set_bend(std::string_view program, const Bend &bend) {
  const std::string key = "bend " + std::string(program);
  if (bend.straight()) return clear(key);
  std::ostringstream lines;
  if (bend.ignore_term) lines << "ignore-term\n";
  if (bend.delay) lines << "delay " << bend.delay << '\n';
  if (bend.hang) lines << "hang\n";
  if (bend.die) lines << "die " << *bend.die << '\n';
  if (bend.exit) lines << "exit " << *bend.exit << '\n';
  set(key, lines.str());
}

// One line: time, process, exit status or "-", and the argument line as it was.
std::optional<Run> Hardware::last_run(std::string_view program) const {
  const std::optional<std::string> text = get("ran " + std::string(program));
  if (!text) return std::nullopt;
  std::istringstream words(*text);
  std::string time, pid, status;
  Run run;
  words >> time >> pid >> status;
  words.get();
  std::getline(words, run.arguments);
  run.time_ns = number_in<std::int64_t>(time).value_or(0);
  run.pid = number_in<std::int32_t>(pid).value_or(0);
  if (status != "-") run.status = number_in<int>(status).value_or(0);
  return run;
}

void Hardware::set_last_run(std::string_view program, const Run &run) {
  const std::string status = run.status ? std::to_string(*run.status) : "-";
  set("ran " + std::string(program),
      std::to_string(run.time_ns) + " " + std::to_string(run.pid) + " " + status + " " + run.arguments);
}

}  // namespace box
