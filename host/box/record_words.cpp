#include "host/box/record_words.h"

#include <algorithm>
#include <set>

#include "host/box/kind_table.h"
#include "include/lmainte.h"

namespace box {
namespace {

constexpr std::size_t kWord = 4;

// Records begin with words, as far as anything is known of them, or have a run of them for each unit.
struct Run {
  std::string_view record;
  std::size_t words;
};
constexpr Run kRuns[] = {
    {"gen_system_info", 9},     {"setup_cmu_info_%02d", 2},    {"setup_xsb_info_%02d", 33},
    {"current_system_info", 9}, {"current_xsb_info_%02d", 15}, {"current_domain_info_%02d", 1},
    {"local_mgb_info", 5},
};

void add_run(std::size_t at, std::size_t words, std::set<std::size_t> &all) {
  for (std::size_t word = 0; word < words; ++word) all.insert(at + kWord * word);
}

void add_entries(const Kind &kind, std::set<std::size_t> &all) {
  for (std::size_t entry = 0; entry < kind.entries; ++entry) {
    const std::size_t at = kind.first_at + kind.stride * entry;
    add_run(at, kind.words, all);
    if (kind.type != LMAINTE_TYPE_FANTRAY) continue;
    for (std::size_t fan = 0; fan < kMostFans; ++fan) all.insert(at + kFansAt + kFanStride * fan);
  }
}

}  // namespace

std::vector<std::size_t> words_of(std::string_view record) {
  std::set<std::size_t> all;
  for (const Run &run : kRuns) {
    if (stands_for(run.record, record)) add_run(0, run.words, all);
  }
  for (const Kind &kind : kinds()) {
    if (stands_for(kind.record, record)) add_entries(kind, all);
  }
  return {all.begin(), all.end()};
}

void swap_words(std::string_view record, Bytes &bytes) {
  for (const std::size_t at : words_of(record)) {
    if (at + kWord > bytes.size()) return;
    std::reverse(bytes.begin() + static_cast<std::ptrdiff_t>(at),
                 bytes.begin() + static_cast<std::ptrdiff_t>(at + kWord));
  }
}

}  // namespace box
