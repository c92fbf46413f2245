#include "tests/unit/dialogue/golden.h"

#include <fstream>
#include <map>

#include <gtest/gtest.h>

namespace doubles {

namespace {

using Cases = std::map<std::string, std::string>;

// What stands between the bars of a line, with its newline.
std::string between_bars(const std::string &line) {
  if (line.size() >= 2 && line.front() == '|' && line.back() == '|') return line.substr(1, line.size() - 2) + "\n";
  ADD_FAILURE() << "not a line of a golden file: " << line;
  return "";
}

Cases read_cases(const std::string &path) {
  std::ifstream file(path);
  EXPECT_TRUE(file.is_open()) << "no golden file " << path;
  Cases cases;
  std::string *text = nullptr;
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line.front() == '#') continue;
    if (line.rfind("== ", 0) == 0) {
      const auto [place, is_new] = cases.try_emplace(line.substr(3));
      EXPECT_TRUE(is_new) << "twice in " << path << ": " << line;
      text = &place->second;
    } else if (text != nullptr) {
      *text += between_bars(line);
    }
  }
  return cases;
}

}  // namespace

void expect_golden(const std::string &name, const Worlds &worlds) {
  const std::string path = std::string(GOLDEN_FOLDER) + "/" + name + ".txt";
  auto cases = read_cases(path);
  EXPECT_FALSE(cases.empty()) << path;
  for (const auto &[says, text_of] : worlds) {
    const auto found = cases.find(says);
    if (found == cases.end()) {
      ADD_FAILURE() << "no case in " << path << ": " << says;
      continue;
    }
    EXPECT_EQ(text_of(), found->second) << path << ": " << says;
    cases.erase(found);
  }
  for (const auto &[says, text] : cases) ADD_FAILURE() << "no world for the case of " << path << ": " << says;
}

}  // namespace doubles
