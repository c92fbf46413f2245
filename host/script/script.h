// Scripts: statements of words, as plays, technicians and dumps have them.
#pragma once

#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace script {

using Words = std::vector<std::string>;

// A script that makes no sense. The text says where, and what is wrong there.
class Error : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Blanks separate words; a word that begins with '#' begins a comment, which goes to the line's end.
struct Grammar {
  // A word in double quotes keeps its blanks and knows these escapes: \n \t \r \e \" \\, a byte in octal digits as in
  // \003 and one in hexadecimal digits as in \x03.
  bool has_quotes;
  bool has_semicolons;  // They separate statements, as line ends do.

  // A quote that is not closed, or has an unknown escape, is a part of its word: such scripts knew no quotes once.
  bool keeps_bad_quotes = false;
};

struct Statement {
  std::string place;  // "walk.play:12"; "step 3" where the script is no file
  std::string text;   // as it was written
  Words words;        // one at least

  // "walk.play:12: `exit soon`: REASON"
  Error error(const std::string &reason) const;
};

class Reader {
 public:
  // `name` names the script to people. Where it is empty, they count the statements.
  Reader(std::string text, std::string name, Grammar grammar)
      : text_(std::move(text)), name_(std::move(name)), grammar_(grammar) {}
  ~Reader() = default;
  Reader(const Reader &) = delete;
  Reader &operator=(const Reader &) = delete;

  // The next statement; nothing at the end. Throws Error.
  std::optional<Statement> next();

  int line() const { return line_; }  // of the last statement, counted from 1
  bool line_is_cut() const;           // The last statement's line is the last one, and has no end.

 private:
  bool at_semicolon() const;
  bool take_line();
  void skip_blanks();
  std::string take_word();
  std::optional<std::string> take_good_quoted();
  std::string take_quoted();
  char take_escaped();
  char take_hexadecimal();
  char take();

  std::string text_, name_;
  Grammar grammar_;
  std::string_view rest_;  // of the line
  std::size_t next_line_ = 0;
  int line_ = 0, count_ = 0;
};

// Words with a blank between two, from one of them on.
std::string joined(const Words &words, std::size_t from = 0);

// A word as a reader that has quotes takes it: in quotes where it has other characters than letters, digits, _ and those that are
// named to be plain, too.
std::string as_word(const std::string &word, std::string_view plain = {});
std::string as_line(const Words &words);  // all of them, with a blank between two

// All of a file, or of a descriptor that `name` names to people, up to this length. Throws Error: "walk.play: there is no such
// file".
inline constexpr std::size_t kLongestText = std::size_t{64} << 20U;
std::string text_of_file(const std::filesystem::path &file, std::size_t longest = kLongestText);
std::string text_of(int fd, const std::string &name, std::size_t longest = kLongestText);

}  // namespace script
