#include "host/play/layout.h"

#include <algorithm>
#include <sstream>

#include "host/base/quoted.h"
#include "host/base/shown.h"
#include "host/box/advice.h"

namespace play {
namespace {

std::string name_of_key(char key) {
  if (key == '\n' || key == '\r') return "Enter";
  if (key == '\033') return "Escape";
  if (key == ' ') return "Space";
  if (key == '\177') return "Backspace";
  return key >= 0 ? std::string("Ctrl-") + static_cast<char>(key + '@') : base::escape_of(key);
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
  while (!keys.empty()) {
    const std::size_t size = std::max<std::size_t>(base::character_size(keys), 1);
    const std::string name = keys[0] == ' ' || base::character_size(keys) == 0 ? name_of_key(keys[0]) : "";
    if (name.empty() && in_quotes) {
      text.insert(text.size() - 1, keys.substr(0, size));
    } else {
      text += (text.empty() ? "" : ", ") + (name.empty() ? "\"" + std::string(keys.substr(0, size)) + "\"" : name);
      in_quotes = name.empty();
    }
    keys.remove_prefix(size);
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

std::string as_steps(std::string text, const std::string &box) {
  const std::string called = "`" + box::spbox_called("spbox") + " ", step = "`spbox", folder = " " + base::quoted(box);
  for (auto at = text.find(called); at != std::string::npos; at = text.find(called, at + step.size())) {
    text.replace(at, called.size() - 1, step);
    const auto behind_verb = text.find_first_of(" `", at + step.size() + 1);
    if (behind_verb == std::string::npos) break;
    const auto behind_folder = behind_verb + folder.size();
    const bool names_box = text.compare(behind_verb, folder.size(), folder) == 0 && behind_folder < text.size() &&
                           (text[behind_folder] == ' ' || text[behind_folder] == '`');
    if (names_box) text.erase(behind_verb, folder.size());
  }
  return text;
}

}  // namespace play
