#include "host/play/text.h"

#include <algorithm>
#include <sstream>

namespace play {

std::string joined(const std::vector<std::string> &words) {
  std::string line;
  for (const auto &word : words) line += (line.empty() ? "" : " ") + word;
  return line;
}

std::string indented(const std::string &text) {
  std::string result;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) result += "    " + line + "\n";
  return result;
}

std::string seconds_text(std::chrono::milliseconds time) {
  std::ostringstream text;
  text << static_cast<double>(time.count()) / 1000 << " s";
  return text.str();
}

std::string framed(const std::vector<std::string> &rows, std::string_view caption) {
  constexpr std::size_t kWidth = 78;
  auto end = rows.end();
  while (end != rows.begin() && (end - 1)->empty()) --end;
  std::string text = "+-- " + std::string(caption) + " ";
  text.resize(std::max(text.size(), kWidth), '-');
  text += '\n';
  for (auto row = rows.begin(); row != end; ++row) text += (row->empty() ? "|" : "| ") + *row + "\n";
  return text + '+' + std::string(kWidth - 1, '-') + "\n";
}

}  // namespace play
