#include "host/play/script.h"

#include <array>
#include <optional>

namespace play {
namespace {

struct Escape {
  char letter;
  char value;
};
constexpr std::array<Escape, 6> kEscapes{
    {{'n', '\n'}, {'t', '\t'}, {'r', '\r'}, {'e', '\033'}, {'"', '"'}, {'\\', '\\'}}};

constexpr bool is_octal(char c) {
  return c >= '0' && c <= '7';
}

class LineReader {
 public:
  explicit LineReader(std::string_view line) : rest_(line) {}

  // Nothing at the end of the line, or where its comment begins. Throws std::invalid_argument with what is wrong.
  std::optional<std::string> next_word() {
    rest_.remove_prefix(std::min(rest_.find_first_not_of(" \t\r"), rest_.size()));
    if (rest_.empty() || rest_.front() == '#') return {};
    if (rest_.front() == '"') return quoted();
    const auto end = std::min(rest_.find_first_of(" \t\r"), rest_.size());
    std::string word(rest_.substr(0, end));
    rest_.remove_prefix(end);
    return word;
  }

 private:
  char take() {
    if (rest_.empty()) throw std::invalid_argument("the closing \" is missing");
    const char c = rest_.front();
    rest_.remove_prefix(1);
    return c;
  }

  std::string quoted() {
    std::string word;
    take();
    for (char c = take(); c != '"'; c = take()) word.push_back(c == '\\' ? escaped() : c);
    return word;
  }

  char escaped() {
    const char letter = take();
    for (const auto &escape : kEscapes) {
      if (escape.letter == letter) return escape.value;
    }
    if (!is_octal(letter)) throw std::invalid_argument(std::string("unknown escape \\") + letter);
    int value = letter - '0';
    for (int digits = 1; digits < 3 && !rest_.empty() && is_octal(rest_.front()); ++digits) {
      value = value * 8 + (take() - '0');
    }
    return static_cast<char>(value);
  }

  std::string_view rest_;
};

std::string trimmed(const std::string &line) {
  const auto first = line.find_first_not_of(" \t\r");
  return line.substr(first, line.find_last_not_of(" \t\r") + 1 - first);
}

std::string name_of_key(char key) {
  if (key == '\n' || key == '\r') return "Enter";
  if (key == '\033') return "Escape";
  if (key == ' ') return "Space";
  if (key == '\177') return "Backspace";
  return std::string("Ctrl-") + static_cast<char>(key + '@');
}

}  // namespace

std::vector<Line> read_script(std::istream &script, std::string_view name) {
  std::vector<Line> lines;
  std::string line;
  for (int number = 1; std::getline(script, line); ++number) {
    LineReader reader(line);
    try {
      const auto verb = reader.next_word();
      if (!verb) continue;
      Line read{number, trimmed(line), *verb, {}};
      while (const auto word = reader.next_word()) read.words.push_back(*word);
      lines.push_back(std::move(read));
    } catch (const std::invalid_argument &wrong) {
      throw ScriptError(name, number, wrong.what());
    }
  }
  return lines;
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

}  // namespace play
