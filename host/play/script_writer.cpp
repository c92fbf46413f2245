#include "host/play/script_writer.h"

#include <algorithm>
#include <sstream>

#include "host/base/shown.h"
#include "host/base/signal_name.h"

namespace play {
namespace {

// A byte that is no part of a character that a terminal shows.
std::string escape_in_script(char byte) {
  constexpr std::string_view kControls = "\n\t\r\033", kLetters = "ntre";
  const auto known = kControls.find(byte);
  if (known != std::string_view::npos) return {'\\', kLetters[known]};
  const auto value = static_cast<unsigned char>(byte);
  if (value >= ' ') return base::escape_of(byte);
  const auto digit = [&](unsigned shift) { return static_cast<char>('0' + (value >> shift & 7U)); };
  return {'\\', digit(6), digit(3), digit(0)};
}

bool needs_quotes(std::string_view word) {
  if (word.empty() || word.front() == '#') return true;
  while (!word.empty()) {
    const std::size_t size = base::character_size(word);
    if (size == 0 || word[0] == ' ' || word[0] == '"' || word[0] == '\\') return true;
    word.remove_prefix(size);
  }
  return false;
}

std::string without_dollars(std::string_view word) {
  std::string text;
  for (const char c : word) text += c == '$' ? "$$" : std::string(1, c);
  return text;
}

// The rows say it by how they are written: "wait [like] "text"".
bool has_text_at_end(const StepRow &row) {
  return row.written.ends_with('"');
}

}  // namespace

std::string written_word(std::string_view word, Quotes quotes) {
  if (quotes == Quotes::kWhereNeeded && !needs_quotes(word)) return without_dollars(word);
  std::string text = "\"";
  while (!word.empty()) {
    const std::size_t size = base::character_size(word);
    if (word[0] == '"' || word[0] == '\\') text += '\\';
    text += size == 0 ? escape_in_script(word[0]) : without_dollars(word.substr(0, size));
    word.remove_prefix(std::max<std::size_t>(size, 1));
  }
  return text + '"';
}

std::string written_step(const Words &words) {
  Words behind = words;
  const StepRow &row = script::take_row(step_rows(), behind);
  std::string text(row.verb);
  for (std::size_t i = 0; i < behind.size(); ++i) {
    const bool is_text = has_text_at_end(row) && i + 1 == behind.size();
    text += ' ' + written_word(behind[i], is_text ? Quotes::kAlways : Quotes::kWhereNeeded);
  }
  return text;
}

Words step_of(const terminal::Ending &ending) {
  constexpr int kBySignal = 128, kLastSignal = 64;
  const int signal = ending.by_signal ? ending.number : ending.number - kBySignal;
  if (signal <= 0 || signal > kLastSignal) return {"exit", std::to_string(ending.number)};
  const std::string name = base::signal_name(signal);
  return {"dies", name.starts_with("SIG") ? name.substr(3) : std::to_string(signal)};
}

void ScriptWriter::step(const Words &words) {
  line(written_step(words));
}

void ScriptWriter::remark(std::string_view text) {
  std::istringstream lines{std::string(text)};
  for (std::string one; std::getline(lines, one);) line(one.empty() ? "#" : "# " + base::shown(one));
}

void ScriptWriter::part() {
  begins_part_ = !text_.empty();
}

void ScriptWriter::line(std::string_view text) {
  if (begins_part_) text_ += '\n';
  begins_part_ = false;
  text_.append(text) += '\n';
}

}  // namespace play
