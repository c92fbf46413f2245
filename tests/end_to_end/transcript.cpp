#include "tests/end_to_end/transcript.h"

#include <charconv>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace end_to_end {
namespace {

std::vector<std::string> words_of(const std::string &line) {
  std::istringstream in(line);
  std::vector<std::string> words;
  for (std::string word; in >> word;) words.push_back(word);
  return words;
}

void strip_blank_end(std::vector<Step> &steps) {
  for (auto &step : steps) {
    while (!step.shown.empty() && step.shown.back().empty()) step.shown.pop_back();
  }
}

}  // namespace

std::vector<Step> read_transcript(const std::filesystem::path &file) {
  constexpr std::string_view kStatus = "(exit status ";
  std::ifstream in(file);
  if (!in) throw std::runtime_error(file.string() + " cannot be read");
  std::vector<Step> steps;
  std::string line;
  for (int number = 1; std::getline(in, line); ++number) {
    if (line.starts_with("# ")) continue;
    if (line.starts_with("! ") || line.starts_with("$ ")) {
      steps.push_back({number, line[0] == '!', words_of(line.substr(2)), {}});
    } else if (!steps.empty() && line.starts_with(kStatus)) {
      std::from_chars(line.data() + kStatus.size(), line.data() + line.size(), steps.back().exit_status);
    } else if (!steps.empty()) {
      steps.back().shown.push_back(line);
    }
  }
  strip_blank_end(steps);
  return steps;
}

}  // namespace end_to_end
