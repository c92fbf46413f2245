#include "host/recorder/wording.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "host/base/shown.h"

namespace recorder {
namespace {

constexpr std::size_t kLongest = 60;          // characters of a piece
constexpr std::size_t kFewestDigits = 3;      // of a number that may be another one the next time
constexpr std::ptrdiff_t kFewestLetters = 3;  // of a piece that a reader knows again

bool is_digit(char c) {
  return c >= '0' && c <= '9';
}

bool is_letter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || static_cast<unsigned char>(c) >= 0x80;
}

// A number of several digits, a time, a date, a word of hexadecimal digits. The number of a unit stays what it is.
bool may_change(std::string_view word) {
  if (word.find('#') != std::string_view::npos) return false;
  std::size_t digits = 0;
  for (std::size_t i = 0; i < word.size(); ++i) {
    digits = is_digit(word[i]) ? digits + 1 : 0;
    const bool is_inside = i > 0 && i + 1 < word.size() && is_digit(word[i - 1]) && is_digit(word[i + 1]);
    if (digits >= kFewestDigits || (is_inside && (word[i] == ':' || word[i] == '.'))) return true;
  }
  return word.starts_with("0x") || word.find('%') != std::string_view::npos;
}

// What is no part of a sentence goes from its ends: an open parenthesis with what stands behind it, blanks.
std::string trimmed(std::string piece) {
  const auto open = piece.rfind('(');
  if (open != std::string::npos && piece.find(')', open) == std::string::npos) piece.erase(open);
  const auto first = piece.find_first_not_of(' ');
  if (first == std::string::npos) return "";
  return piece.substr(first, piece.find_last_not_of(' ') + 1 - first);
}

// A line without what may change, in pieces; more than one blank separates columns.
Lines pieces_of(const std::string &line) {
  Lines pieces{""};
  for (std::size_t at = 0; at < line.size();) {
    const auto end = std::min(line.find(' ', at), line.size());
    const std::string word = line.substr(at, end - at);
    if (word.empty() || may_change(word)) {
      pieces.emplace_back();
    } else {
      pieces.back() += (pieces.back().empty() ? "" : " ") + word;
    }
    at = end + 1;
  }
  for (std::string &piece : pieces) piece = trimmed(std::move(piece));
  std::erase(pieces, "");
  return pieces;
}

// A long one becomes its first sentence or, where that is long, its first words. Cut at a blank, a character stays whole.
std::string shortened(std::string piece) {
  constexpr std::string_view kEnds = ".?!:";
  for (std::size_t i = 0; i + 1 < piece.size() && i < kLongest; ++i) {
    const bool ends = kEnds.find(piece[i]) != std::string_view::npos && piece[i + 1] == ' ';
    if (ends && i + 1 >= kLongest / 6) return piece.substr(0, i + 1);
  }
  if (piece.size() <= kLongest) return piece;
  const auto blank = piece.rfind(' ', kLongest);
  return blank == std::string::npos || blank == 0 ? piece : trimmed(piece.substr(0, blank));
}

std::size_t count(const Lines &lines, const std::string &piece) {
  return static_cast<std::size_t>(
      std::ranges::count_if(lines, [&](const std::string &line) { return line.find(piece) != std::string::npos; }));
}

// A prompt of signs alone. A number, or a letter, is mostly what somebody typed.
bool is_of_signs(const std::string &piece) {
  return std::ranges::none_of(piece, [](char c) { return is_letter(c) || is_digit(c); });
}

bool has_word(const std::string &piece) {
  return std::ranges::count_if(piece, is_letter) >= kFewestLetters;
}

// What stands there once says more than what does not, and several words more than one.
constexpr std::size_t kWorst = 3;
std::size_t rank(const std::string &piece, const Lines &fresh) {
  return (count(fresh, piece) == 1 ? 0U : 2U) + (piece.find(' ') != std::string::npos ? 0U : 1U);
}

void keep_first(std::string &kept, const std::string &piece) {
  if (kept.empty()) kept = piece;
}

}  // namespace

std::string deciding_text(const Lines &fresh, const Lines &before) {
  std::string signs;
  for (auto line = fresh.rbegin(); line != fresh.rend(); ++line) {
    std::array<std::string, kWorst + 1> best;
    for (const std::string &whole : pieces_of(*line)) {
      for (const std::string &piece : {shortened(whole), whole}) {
        if (count(before, piece) > 0 || base::shown(piece) != piece) continue;
        if (has_word(piece)) keep_first(best.at(rank(piece, fresh)), piece);
        if (is_of_signs(piece)) keep_first(signs, piece);
      }
    }
    for (const std::string &piece : best) {
      if (!piece.empty()) return piece;
    }
  }
  return signs;
}

}  // namespace recorder
