#include "host/runner/selection.h"

#include <fnmatch.h>

#include <algorithm>
#include <numeric>
#include <set>
#include <stdexcept>

#include "host/base/number.h"

namespace runner {

namespace fs = std::filesystem;

std::vector<Play> plays_among(const std::vector<Script> &scripts,
                              const std::function<Reading(const fs::path &)> &read) {
  std::vector<Reading> readings;
  std::set<fs::path> parts;
  for (const Script &script : scripts) {
    readings.push_back(read(script.file));
    for (const fs::path &part : readings.back().plays) parts.insert(fs::weakly_canonical(part));
  }
  std::vector<Play> plays;
  for (std::size_t i = 0; i < scripts.size(); ++i) {
    const bool is_part =
        !scripts[i].was_named && !readings[i].wrong.empty() && parts.contains(fs::weakly_canonical(scripts[i].file));
    if (!is_part) plays.push_back({scripts[i].file, scripts[i].name, readings[i].steps, readings[i].wrong});
  }
  return plays;
}

std::vector<Play> fitting(std::vector<Play> plays, const std::string &glob) {
  std::erase_if(plays, [&](const Play &play) { return fnmatch(glob.c_str(), play.name.c_str(), 0) != 0; });
  return plays;
}

Shard shard_in(const std::string &text) {
  constexpr std::size_t kMost = 10'000;
  const auto slash = std::min(text.find('/'), text.size());
  const auto number = base::number_in<std::size_t>(std::string_view(text).substr(0, slash));
  const auto shares = base::number_in<std::size_t>(std::string_view(text).substr(std::min(slash + 1, text.size())));
  if (number && shares && *number >= 1 && *number <= *shares && *shares <= kMost) return {*number, *shares};
  throw std::invalid_argument("`" + text + "` is no share: write 2/8 for the second one of eight");
}

// The longest ones first, each to the share that has least.
std::vector<Play> share_of(const std::vector<Play> &plays, const Shard &shard) {
  std::vector<std::size_t> order(plays.size()), steps(shard.shares);
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::ranges::stable_sort(order, std::greater(), [&](std::size_t i) { return plays[i].steps; });
  std::vector<std::size_t> mine;
  for (const std::size_t i : order) {
    const auto share = std::ranges::min_element(steps);
    *share += plays[i].steps + 1;  // also one that cannot be read takes a moment
    if (share - steps.begin() + 1 == static_cast<std::ptrdiff_t>(shard.number)) mine.push_back(i);
  }
  std::ranges::sort(mine);
  std::vector<Play> share;
  for (const std::size_t i : mine) share.push_back(plays[i]);
  return share;
}

}  // namespace runner
