#include "host/script/script.h"

#include <fcntl.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>

#include "host/base/descriptor.h"
#include "host/base/read_all.h"
#include "host/base/shown.h"
#include "host/script/values.h"

namespace script {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kBlanks = " \t\r\v\f";
constexpr std::size_t kLongestQuote = 200;  // of a statement's text in an error

constexpr const char *kNoText = R"(the byte \x00 stands there, which is no text)";

struct Escape {
  char letter, value;
};
constexpr std::array<Escape, 6> kEscapes{
    {{'n', '\n'}, {'t', '\t'}, {'r', '\r'}, {'e', '\033'}, {'"', '"'}, {'\\', '\\'}}};

constexpr bool is_octal(char c) {
  return c >= '0' && c <= '7';
}

Error unreadable(const std::string &name, int error) {
  return Error(name + ": it cannot be read: " + std::generic_category().message(error));
}

}  // namespace

Error Statement::error(const std::string &reason) const {
  const bool is_long = text.size() > kLongestQuote;
  std::string shown;
  for (const char c : text.substr(0, kLongestQuote)) shown += c == '\0' ? base::escape_of(c) : std::string(1, c);
  return Error(place + ": `" + shown + (is_long ? "..." : "") + "`: " + reason);
}

std::optional<Statement> Reader::next() {
  skip_blanks();
  while (rest_.empty() || at_semicolon()) {
    if (!rest_.empty()) {
      rest_.remove_prefix(1);
    } else if (!take_line()) {
      return {};
    }
    skip_blanks();
  }
  const char *begin = rest_.data(), *end = begin;
  Statement statement;
  statement.place =
      name_.empty() ? "step " + std::to_string(++count_) : base::shown(name_) + ":" + std::to_string(line_);
  try {
    for (; !rest_.empty() && !at_semicolon(); skip_blanks()) {
      statement.words.push_back(take_word());
      end = rest_.data();
    }
  } catch (const std::invalid_argument &wrong) {
    statement.text = {begin, rest_.data() + rest_.size()};
    throw statement.error(wrong.what());
  }
  statement.text = {begin, end};
  return statement;
}

bool Reader::line_is_cut() const {
  return next_line_ > text_.size();
}

bool Reader::at_semicolon() const {
  return grammar_.has_semicolons && rest_.front() == ';';
}

bool Reader::take_line() {
  if (next_line_ >= text_.size()) return false;
  const auto end = std::min(text_.find('\n', next_line_), text_.size());
  rest_ = std::string_view(text_).substr(next_line_, end - next_line_);
  next_line_ = end + 1;
  ++line_;
  return true;
}

// To the next word; behind the last one, and at a comment, nothing of the line is left.
void Reader::skip_blanks() {
  rest_.remove_prefix(std::min(rest_.find_first_not_of(kBlanks), rest_.size()));
  if (!rest_.empty() && rest_.front() == '#') rest_ = rest_.substr(rest_.size());
}

std::string Reader::take_word() {
  if (grammar_.has_quotes && rest_.front() == '"') {
    if (auto word = take_good_quoted()) return *word;
  }
  const auto end = rest_.find_first_of(std::string(kBlanks) + (grammar_.has_semicolons ? ";" : ""));
  std::string word(rest_.substr(0, end));
  if (word.find('\0') != std::string::npos) throw std::invalid_argument(kNoText);
  rest_.remove_prefix(word.size());
  return word;
}

// Nothing where the word is none in quotes; then nothing is taken.
std::optional<std::string> Reader::take_good_quoted() {
  const std::string_view before = rest_;
  try {
    return take_quoted();
  } catch (const std::invalid_argument &) {
    if (!grammar_.keeps_bad_quotes) throw;
    rest_ = before;
    return {};
  }
}

std::string Reader::take_quoted() {
  std::string word;
  take();
  for (char c = take(); c != '"'; c = take()) word.push_back(c == '\\' ? take_escaped() : c);
  return word;
}

char Reader::take_escaped() {
  const char letter = take();
  for (const Escape &escape : kEscapes) {
    if (escape.letter == letter) return escape.value;
  }
  if (letter == 'x') return take_hexadecimal();
  if (!is_octal(letter)) {
    throw std::invalid_argument(std::string("there is no escape \\") + letter +
                                R"(; there are \n, \t, \r, \e, \", \\, \003 and \x03)");
  }
  int value = letter - '0';
  for (int digits = 1; digits < 3 && !rest_.empty() && is_octal(rest_.front()); ++digits) {
    value = value * 8 + (take() - '0');
  }
  return static_cast<char>(value);
}

char Reader::take_hexadecimal() {
  const std::array<std::optional<int>, 2> digits{hexadecimal_digit(take()), hexadecimal_digit(take())};
  if (!digits[0] || !digits[1]) throw std::invalid_argument(R"(two hexadecimal digits stand behind \x, as in \x03)");
  return static_cast<char>(*digits[0] * 16 + *digits[1]);
}

char Reader::take() {
  if (rest_.empty()) throw std::invalid_argument("the closing \" is missing");
  const char c = rest_.front();
  if (c == '\0') throw std::invalid_argument(kNoText);
  rest_.remove_prefix(1);
  return c;
}

std::string joined(const Words &words, std::size_t from) {
  std::string line;
  for (std::size_t i = from; i < words.size(); ++i) line += (i == from ? "" : " ") + words[i];
  return line;
}

std::string as_word(const std::string &word, std::string_view plain) {
  const auto is_plain = [&](char c) {
    const bool is_usual = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
    return is_usual || plain.find(c) != std::string_view::npos;
  };
  if (!word.empty() && word.front() != '#' && std::all_of(word.begin(), word.end(), is_plain)) return word;
  std::string quoted = "\"";
  for (const char c : word) {
    if (c == '"' || c == '\\') quoted += '\\';
    if (c >= ' ' && c <= '~') {
      quoted += c;
    } else {
      quoted += base::escape_of(c);
    }
  }
  return quoted + "\"";
}

std::string as_line(const Words &words) {
  std::string line;
  for (const std::string &word : words) line += (line.empty() ? "" : " ") + as_word(word);
  return line;
}

std::string text_of(int fd, const std::string &name, std::size_t longest) {
  std::string text;
  const int error = base::read_all(fd, text, longest);
  if (error != 0) throw unreadable(name, error);
  if (text.size() > longest) throw Error(name + ": it is longer than " + std::to_string(longest >> 20U) + " MiB");
  return text;
}

std::string text_of_file(const fs::path &file, std::size_t longest) {
  std::error_code error;
  if (fs::is_directory(file, error)) throw Error(file.string() + ": this is a folder, not a file");
  const base::Descriptor fd(open(file.c_str(), O_RDONLY | O_CLOEXEC));
  if (fd.get() >= 0) return text_of(fd.get(), file.string(), longest);
  if (errno == ENOENT) throw Error(file.string() + ": there is no such file");
  throw unreadable(file.string(), errno);
}

}  // namespace script
