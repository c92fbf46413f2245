#include "host/box/record_words.h"

#include <algorithm>

#include "host/box/records.h"
#include "host/box/unit_records.h"
#include "include/lmainte.h"

namespace box {
namespace {

constexpr std::size_t kWord = 4;

// These begin with words; those of units have a run of them for each.
constexpr RecordLayout kBegunByWords[] = {
    kGeneralSystem, kSetupCmu, kSetupXsb, kCurrentSystem, kCurrentXsb, kCurrentDomain, kLocalServiceProcessor,
};

void add_run(std::size_t at, std::size_t words, std::vector<std::size_t> &all) {
  for (std::size_t word = 0; word < words; ++word) all.push_back(at + kWord * word);
}

void add_entries(const Kind &kind, std::vector<std::size_t> &all) {
  for (std::size_t entry = 0; entry < kind.entries; ++entry) {
    const std::size_t at = kind.first_at + kind.stride * entry;
    add_run(at, kind.words, all);
    if (kind.type != LMAINTE_TYPE_FANTRAY) continue;
    for (std::size_t fan = 0; fan < kMostFans; ++fan) all.push_back(at + kFansAt + kFanStride * fan);
  }
}

}  // namespace

std::vector<std::size_t> words_of(std::string_view record) {
  std::vector<std::size_t> all;
  for (const RecordLayout &layout : kBegunByWords) {
    if (stands_for(layout.name, record)) add_run(0, layout.words, all);
  }
  for (const Kind &kind : kinds()) {
    if (stands_for(kind.record, record)) add_entries(kind, all);
  }
  std::ranges::sort(all);  // a word may be in two runs
  all.erase(std::unique(all.begin(), all.end()), all.end());
  return all;
}

void swap_words(std::string_view record, Bytes &bytes) {
  for (const std::size_t at : words_of(record)) {
    if (at + kWord > bytes.size()) return;
    std::reverse(bytes.begin() + static_cast<std::ptrdiff_t>(at),
                 bytes.begin() + static_cast<std::ptrdiff_t>(at + kWord));
  }
}

}  // namespace box
