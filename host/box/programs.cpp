#include "host/box/programs.h"

#include <charconv>
#include <sstream>
#include <stdexcept>

#include "host/box/model.h"

namespace box {
namespace {

template <typename Number>
Number number(const std::string &text) {
  Number value{};
  std::from_chars(text.data(), text.data() + text.size(), value);
  return value;
}

}  // namespace

std::map<std::string, std::string> after_power_on(std::uint32_t model) {
  std::map<std::string, std::string> state{{"maintenance", "unlock"}, {"fan", "low"}};
  if (!is_high_end(model)) return state;
  for (const char *expansion : {"/IOX@0A21", "/IOX@0A22"}) state["power " + std::string(expansion)] = "on";
  return state;
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

void Hardware::set_all(const std::map<std::string, std::string> &state) {
  if (!database_.lock()) throw std::runtime_error("the box's own database is locked by another process");
  for (const auto &[key, value] : state) set(key, value);
  if (!database_.unlock()) throw std::runtime_error("the box's own database could not be written");
}

std::string Hardware::led(const std::string &unit) const {
  return get("led " + unit).value_or("off");
}

std::string Hardware::flag(const std::string &unit) const {
  return get("flag " + unit).value_or("");
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
    if (word == "exit") bend.exit = number<int>(value);
    if (word == "delay") bend.delay = number<std::uint32_t>(value);
    if (word == "die") bend.die = number<int>(value);
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
  run.time_ns = number<std::int64_t>(time);
  run.pid = number<std::int32_t>(pid);
  if (status != "-") run.status = number<int>(status);
  return run;
}

void Hardware::set_last_run(std::string_view program, const Run &run) {
  const std::string status = run.status ? std::to_string(*run.status) : "-";
  set("ran " + std::string(program),
      std::to_string(run.time_ns) + " " + std::to_string(run.pid) + " " + status + " " + run.arguments);
}

}  // namespace box
