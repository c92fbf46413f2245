#include "host/trace_book/trace_book.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <span>

#include "host/base/signal_name.h"
#include "host/box/inventory_kinds.h"
#include "host/box/place.h"
#include "host/box/program_list.h"
#include "host/trace_book/call_words.h"
#include "host/trace_book/pages.h"
#include "include/lmainte.h"

namespace trace_book {
namespace {

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

constexpr std::array<std::string_view, 3> kFanModes{"LMAINTE_FAN_LOW", "LMAINTE_FAN_HIGH", "LMAINTE_FAN_FULL"};
constexpr std::array<std::string_view, 2> kFlagModes{"LMAINTE_FLAG_START", "LMAINTE_FLAG_END"};
constexpr std::array<std::string_view, 4> kLedModes{"LMAINTE_LED_OFF", "LMAINTE_LED_ON", "LMAINTE_LED_BLINK",
                                                    "LMAINTE_LED_SYNC"};
constexpr std::array<std::string_view, 2> kMainteModes{"LMAINTE_MAINTE_UNLOCK", "LMAINTE_MAINTE_LOCK"};
constexpr std::array<std::string_view, 7> kTerminalModes{"LMAINTE_TTY_ECHO", "LMAINTE_TTY_VMIN",  "LMAINTE_TTY_FLUSH",
                                                         "LMAINTE_TTY_ISIG", "LMAINTE_TTY_VQUIT", "LMAINTE_TTY_VERASE",
                                                         "LMAINTE_TTY_IXON"};
constexpr std::array<std::string_view, 2> kReportModes{"LMAINTE_REPORT_START", "LMAINTE_REPORT_END"};

struct ResultRow {
  std::int32_t result;
  std::string_view name;
};

// By the names of lmainte.h.
#define RESULT(name) \
  ResultRow {        \
    name, #name      \
  }
constexpr std::array kResults{RESULT(LMAINTE_OK),
                              RESULT(LMAINTE_FAILED),
                              RESULT(LMAINTE_NOT_RUN),
                              RESULT(LMAINTE_BUSY),
                              RESULT(LMAINTE_MODE_REFUSED),
                              RESULT(LMAINTE_REPORT_FAILED),
                              RESULT(LMAINTE_FRU_REFUSED),
                              RESULT(LMAINTE_FLAG_REFUSED),
                              RESULT(LMAINTE_DETACH_FAILED),
                              RESULT(LMAINTE_LED_FAILED),
                              RESULT(LMAINTE_TEST_FAILED),
                              RESULT(LMAINTE_SETUP_FAILED),
                              RESULT(LMAINTE_CLEAR_FAILED),
                              RESULT(LMAINTE_IOXLED_FAILED),
                              RESULT(LMAINTE_IOXPOWER_FAILED),
                              RESULT(LMAINTE_FAN_FAILED),
                              RESULT(LMAINTE_STATUS_NOT_CLEARED),
                              RESULT(LMAINTE_POSITION_UNKNOWN),
                              RESULT(LMAINTE_NOT_REACHED),
                              RESULT(LMAINTE_FANSPEED_FAILED),
                              RESULT(LMAINTE_LINK_FAILED),
                              RESULT(LMAINTE_FRU_REFUSED_2)};
constexpr std::array kAnswersOfOperators{RESULT(LMAINTE_ASK_CHOSEN), RESULT(LMAINTE_ASK_GAVE_UP),
                                         RESULT(LMAINTE_ASK_END_OF_INPUT), RESULT(LMAINTE_ASK_INTERRUPTED),
                                         RESULT(LMAINTE_ASK_FAILED)};
#undef RESULT

std::string result_text(const auto &rows, std::uint32_t word) {
  const auto row = std::ranges::find(rows, static_cast<std::int32_t>(word), &ResultRow::result);
  return named(word, row == rows.end() ? "" : row->name);
}

std::string value_text(Form form, std::uint32_t word) {
  const int number = static_cast<int>(word);
  switch (form) {
    case Form::kNumber:
      break;
    case Form::kAnswer:
      return result_text(kAnswersOfOperators, word);
    case Form::kClientResult:
      return named(word, database_result_name(number));
    case Form::kCommand:
      return named(word, word < box::kPrograms.size() ? box::kPrograms[word].name : "");
    case Form::kDatabase:
      return named(word, name_in(box::kDatabaseNames, word));
    case Form::kErrno:
      return named(word, std::strerror(number));  // NOLINT(concurrency-mt-unsafe): one thread
    case Form::kFanMode:
      return named(word, name_in(kFanModes, word));
    case Form::kFlagMode:
      return named(word, name_in(kFlagModes, word));
    case Form::kLedMode:
      return named(word, name_in(kLedModes, word));
    case Form::kMainteMode:
      return named(word, name_in(kMainteModes, word));
    case Form::kModel:
      return named(word, box::model_name(word));
    case Form::kResult:
      return result_text(kResults, word);
    case Form::kTerminalMode:
      return named(word, name_in(kTerminalModes, word));
    case Form::kReportMode:
      return named(word, name_in(kReportModes, word));
    case Form::kSignal:
      return named(word, base::signal_name(number));
    case Form::kUnitId:
      return format("%08X", word);
    case Form::kWaitStatus:
      return wait_status_text(word);
  }
  return named(word, "");
}

void add_values(const box::TraceEntry &entry, std::span<const Value> known, TraceLine &line) {
  for (std::uint32_t i = kFirstValueWord; i < entry.word_count; ++i) {
    const std::uint32_t place = i - kFirstValueWord;
    const bool has_meaning = place < known.size() && known[place].meaning != nullptr;
    const Value value = has_meaning ? known[place] : Value{"value"};
    line.values.push_back({value.meaning, value_text(value.form, entry.words[i]), entry.words[i]});
  }
}

// "event 110C002F (block 002, point 15)": an event that no function of the library writes.
std::string unknown_text(std::uint32_t event, std::uint32_t block, bool is_error, std::uint32_t number) {
  return format("event %08X (block %03X, %s %u)", event, block, is_error ? "error" : "point", number);
}

void describe(const box::TraceEntry &entry, Code code, TraceLine &line) {
  const Function *function = function_of(code);
  const Event *event = function == nullptr ? nullptr : event_of(*function, code);
  line.is_error = trace_events::is_error(code);
  if (function != nullptr) line.function = function->title();
  line.is_known = event != nullptr;
  if (event != nullptr) {
    line.name = event->name;
    line.event = event->text;
    const Value known[] = {event->first, event->second};
    add_values(entry, known, line);
    return;
  }
  const BlockNumber at = block_number_of(code);
  line.event = unknown_text(entry.event, at.block, line.is_error, at.number);
  add_values(entry, {}, line);
}

}  // namespace

TraceLine words_of(const box::TraceEntry &entry) {
  TraceLine line{.pid = entry.words[kPidWord],
                 .line = entry.words[kLineWord],
                 .function = "?",
                 .name = "",
                 .event = "",
                 .level = level_text(entry.level),
                 .values = {},
                 .is_known = false,
                 .is_error = false};
  const auto code = code_of(entry.event);
  if (code) {
    describe(entry, *code, line);
  } else {
    line.event = format("event %08X", entry.event);
    add_values(entry, {}, line);
  }
  return line;
}

}  // namespace trace_book
