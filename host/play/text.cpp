#include "host/play/text.h"

#include <algorithm>
#include <sstream>

namespace play {
namespace {

std::string name_of_key(char key) {
  if (key == '\n' || key == '\r') return "Enter";
  if (key == '\033') return "Escape";
  if (key == ' ') return "Space";
  if (key == '\177') return "Backspace";
  return std::string("Ctrl-") + static_cast<char>(key + '@');
}

}  // namespace

std::string indented(const std::string &text) {
  std::string result;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) result += "    " + line + "\n";
  return result;
}

std::string describe_keys(std::string_view keys) {
  std::string text;
  bool in_quotes = false;
  for (const char key : keys) {
    const bool printable = key > ' ' && key < '\177';
    if (printable && in_quotes) {
      text.insert(text.size() - 1, 1, key);
      continue;
    }
    if (!text.empty()) text += ", ";
    text += printable ? std::string("\"") + key + "\"" : name_of_key(key);
    in_quotes = printable;
  }
  return text;
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
