#include "host/box/program_list.h"

#include <sstream>

#include "host/base/number.h"

namespace box {
namespace {

constexpr bool are_in_order() {
  for (std::size_t i = 0; i < kPrograms.size(); ++i) {
    const Program &row = kPrograms[i];
    if (row.number != i || row.path.substr(row.path.rfind('/') + 1) != row.name) return false;
  }
  return true;
}
static_assert(are_in_order(), "a row has another number than its place, or another name than its path");

std::string bend_key(std::string_view program) {
  return "bend " + std::string(program);
}
constexpr std::string_view kRan = "ran ";
std::string run_key(std::string_view program) {
  return std::string(kRan) + std::string(program);
}

}  // namespace

std::vector<std::string> program_names() {
  std::vector<std::string> names;
  for (const Program &row : kPrograms) names.emplace_back(row.name);
  return names;
}

bool is_last_run(std::string_view key) {
  return key.starts_with(kRan);
}

Bend bend_of(const TextDatabase &box, std::string_view program) {
  Bend bend;
  std::istringstream lines(box.get(bend_key(program)).value_or(""));
  for (std::string word; lines >> word;) {
    std::string value;
    if (word == "hang") bend.hang = true;
    if (word == "ignore-term") bend.ignore_term = true;
    if (word != "exit" && word != "delay" && word != "die") continue;
    lines >> value;
    if (word == "exit") bend.exit = base::number_in<int>(value).value_or(0);
    if (word == "delay") bend.delay = base::number_in<std::uint32_t>(value).value_or(0);
    if (word == "die") bend.die = base::number_in<int>(value).value_or(0);
  }
  return bend;
}

void set_bend(TextDatabase &box, std::string_view program, const Bend &bend) {
  if (bend.straight()) return box.clear(bend_key(program));
  std::string lines;
  if (bend.ignore_term) lines += "ignore-term\n";
  if (bend.delay > 0) lines += "delay " + std::to_string(bend.delay) + "\n";
  if (bend.hang) lines += "hang\n";
  if (bend.die) lines += "die " + std::to_string(*bend.die) + "\n";
  if (bend.exit) lines += "exit " + std::to_string(*bend.exit) + "\n";
  box.set(bend_key(program), lines);
}

// One line: time, process, exit status or "-", and the argument line as it was.
std::optional<Run> last_run(const TextDatabase &box, std::string_view program) {
  const std::optional<std::string> text = box.get(run_key(program));
  if (!text) return std::nullopt;
  std::istringstream words(*text);
  std::string time, pid, status;
  Run run;
  words >> time >> pid >> status;
  words.get();
  std::getline(words, run.arguments);
  run.time_ns = base::number_in<std::int64_t>(time).value_or(0);
  run.pid = base::number_in<std::int32_t>(pid).value_or(0);
  if (status != "-") run.status = base::number_in<int>(status).value_or(0);
  return run;
}

void set_last_run(TextDatabase &box, std::string_view program, const Run &run) {
  const std::string status = run.status ? std::to_string(*run.status) : "-";
  box.set(run_key(program),
          std::to_string(run.time_ns) + " " + std::to_string(run.pid) + " " + status + " " + run.arguments);
}

}  // namespace box
