#include "host/spbox/trace_book.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <optional>
#include <span>

#include "host/box/inventory_kinds.h"
#include "host/box/programs.h"
#include "host/box/signal_name.h"
#include "host/spbox/text.h"
#include "host/spbox/trace/phrases.h"

namespace spbox {
namespace {

// An event code taken apart: 0x110C0000, the space, the block, the point in it; errors have bits of their own.
struct Code {
  Space space;
  std::uint32_t block;
  std::uint32_t number;
  bool is_error;
};

constexpr std::uint32_t kFirstEvent = 0x110C0000;

std::optional<Code> code_of(std::uint32_t event) {
  constexpr std::uint32_t kSecondSpace = 0x8000;
  if (event < kFirstEvent || event > kFirstEvent + 0xFFFF) return std::nullopt;
  std::uint32_t rest = event - kFirstEvent;
  const Space space = (rest & kSecondSpace) != 0 ? Space::kSecond : Space::kPlain;
  const std::uint32_t error_bits = space == Space::kSecond ? 0x3000 : 0x1000;
  const bool is_error = (rest & error_bits) == error_bits;
  rest &= ~(kSecondSpace | (is_error ? error_bits : 0));
  return Code{space, rest / 16, rest % 16, is_error};
}

// Of two functions in a block the one whose points begin last before the event.
const Function *function_of(const Code &code) {
  const Function *found = nullptr;
  for (const Functions room : {frame_functions(), db_functions(), model_functions(), inventory_functions(),
                               ops_functions(), dialogue_functions(), state_functions()}) {
    for (const Function &function : room) {
      if (function.space != code.space || function.block != code.block || function.first > code.number) continue;
      if (found == nullptr || function.first > found->first) found = &function;
    }
  }
  return found;
}

const Phrase *find(std::span<const Phrase> phrases, bool is_error, std::uint32_t number) {
  for (const Phrase &phrase : phrases) {
    if (phrase.is_error == is_error && phrase.number == number) return &phrase;
  }
  return nullptr;
}

const Phrase *phrase_of(const Function &function, const Code &code) {
  const std::uint32_t number = code.number - function.first;
  const Phrase *own = find(function.own, code.is_error, number);
  return own != nullptr ? own : find(function.shared.phrases, code.is_error, number - function.shared.from);
}

std::string format(const char *pattern, auto... values) {
  char text[128];
  std::snprintf(text, sizeof text, pattern, values...);
  return text;
}

std::string level_text(std::uint32_t level) {
  switch (level) {
    case 0x100:
      return "progress";
    case 0x805:
      return "error";
    case 0x8001:
      return "process";
    case 0x800A:
      return "system error";
    default:
      return format("level %#x", level);
  }
}

std::string wait_status_text(std::uint32_t status) {
  const std::uint32_t signal = status & 0x7F;
  if (signal != 0) return format("%u (signal %u, %s)", status, signal, strsignal(static_cast<int>(signal)));
  return format("%u (exit status %u)", status, status >> 8 & 0xFF);
}

std::string named(std::uint32_t word, std::string_view name) {
  const std::string number = std::to_string(static_cast<int>(word));
  return name.empty() ? number : number + " (" + std::string(name) + ")";
}

template <std::size_t Size>
std::string_view name_in(const std::array<std::string_view, Size> &names, std::uint32_t word) {
  return word < Size ? names[word] : std::string_view();
}

constexpr std::array<std::string_view, 6> kDatabases{"general", "setup", "current", "local", "FRU", "reserved"};

std::string value_text(const std::string &meaning, std::uint32_t word) {
  const int number = static_cast<int>(word);
  // NOLINTNEXTLINE(concurrency-mt-unsafe): one thread
  if (meaning.ends_with("errno")) return named(word, std::strerror(number));
  if (meaning == "wait status") return wait_status_text(word);
  if (meaning == "signal") return named(word, box::signal_name(number));
  if (meaning == "unit id") return format("%08X", word);
  if (meaning == "model") return named(word, box::model_name(word));
  if (meaning.ends_with("database")) return named(word, name_in(kDatabases, word));
  if (meaning == "command") return named(word, word < box::kPrograms.size() ? box::kPrograms[word].name : "");
  return named(word, "");
}

TraceValue value_of(const char *meaning, std::uint32_t word) {
  return {meaning, value_text(meaning, word), word};
}

void add_values(const box::TraceEntry &entry, std::span<const char *const> meanings, TraceLine &line) {
  constexpr std::uint32_t kHeadWords = 2;  // process id and source line
  for (std::uint32_t i = kHeadWords; i < entry.word_count; ++i) {
    const std::uint32_t place = i - kHeadWords;
    const bool has_meaning = place < meanings.size() && meanings[place] != nullptr;
    line.values.push_back(value_of(has_meaning ? meanings[place] : "value", entry.words[i]));
  }
}

constexpr Phrase kEntry = point(0, "entry");
constexpr Phrase kExit = point(1, "exit", "result");

// The first two points of every function need no words of its own.
const Phrase *bound_of(const Function &function, const Code &code) {
  if (code.is_error || code.number > function.first + 1) return nullptr;
  return code.number == function.first ? &kEntry : &kExit;
}

void describe(const box::TraceEntry &entry, const Code &code, TraceLine &line) {
  const Function *function = function_of(code);
  line.is_error = code.is_error;
  const Phrase *phrase = nullptr;
  if (function != nullptr) {
    line.function = function->name;
    phrase = bound_of(*function, code);
    if (phrase == nullptr) phrase = phrase_of(*function, code);
  }
  line.is_known = phrase != nullptr;
  if (line.is_known) {
    line.event = phrase->text;
    const char *const meanings[] = {phrase->first, phrase->second};
    add_values(entry, meanings, line);
    return;
  }
  line.event =
      format("event %08X (block %03X, %s %u)", entry.event, code.block, code.is_error ? "error" : "point", code.number);
  add_values(entry, {}, line);
}

}  // namespace

TraceLine words_of(const box::TraceEntry &entry) {
  TraceLine line{"?", "", level_text(entry.level), {}, false, false};
  const auto code = code_of(entry.event);
  if (code) {
    describe(entry, *code, line);
  } else {
    line.event = format("event %08X", entry.event);
    add_values(entry, {}, line);
  }
  return line;
}

}  // namespace spbox
