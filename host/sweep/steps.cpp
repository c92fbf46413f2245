#include "host/sweep/steps.h"

#include <algorithm>
#include <array>
#include <system_error>

#include "host/play/script_writer.h"
#include "host/technician/changes.h"

namespace sweep {
namespace {

namespace fs = std::filesystem;
using play::Step;

std::string from(const fs::path &folder, const fs::path &file) {
  const fs::path path =
      fs::absolute(file).lexically_normal().lexically_relative(fs::absolute(folder).lexically_normal());
  return path.has_parent_path() ? path.string() : "./" + path.string();
}

}  // namespace

bool is_verb(const Step &step, std::initializer_list<std::string_view> verbs) {
  return std::ranges::find(verbs, step.row->verb) != verbs.end();
}

bool ends_command(const Step &step) {
  return is_verb(step, {"exit", "dies"});
}

bool is_check(const Step &step) {
  if (is_verb(step, {"in_order", "says", "takesaid", "absent", "patience", "pause"})) return true;
  constexpr std::array<std::string_view, 4> kLooks{"units", "show", "log", "trace"};
  return step.row->verb == "spbox" && std::ranges::find(kLooks, step.words[0]) != kLooks.end();
}

bool is_giving_up(const Step &answer) {
  constexpr std::array<std::string_view, 4> kKeys{"q", "q\n", "\003", "\004"};
  return std::ranges::find(kKeys, answer.words[0]) != kKeys.end();
}

bool changes_units(const Step &step) {
  const auto &rows = technician::kChanges;
  return step.row->verb == "spbox" &&
         std::ranges::any_of(rows, [&](const auto &row) { return row.verb == step.words[0]; });
}

bool is_for_people(const Step &step) {
  return is_verb(step, {"screen", "say"});
}

Words words_of(const Step &step, const fs::path &folder) {
  Words words = step.words;
  if (step.row->traits.starts_command) {
    std::error_code error;
    const fs::path beside = step.folder / words[0];
    const bool is_path = words[0].find('/') != std::string::npos && fs::path(words[0]).is_relative();
    if (is_path && fs::is_regular_file(beside, error)) words[0] = from(folder, beside);
  }
  if (step.row->traits.makes_box && words.size() > 1) words[1] = from(folder, step.folder / words[1]);
  words.insert(words.begin(), std::string(step.row->verb));
  return words;
}

// FNV-1a
std::uint64_t number_of_script(const std::vector<Step> &steps) {
  std::uint64_t number = 14695981039346656037U;
  for (const Step &step : steps) {
    for (const char byte : step.place + '\n' + play::written_step(words_of(step, {})) + '\n') {
      number = (number ^ static_cast<unsigned char>(byte)) * 1099511628211U;
    }
  }
  return number;
}

}  // namespace sweep
