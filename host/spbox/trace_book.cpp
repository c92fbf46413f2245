#include "host/spbox/trace_book.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <span>

#include "host/box/inventory_kinds.h"
#include "host/box/programs.h"

namespace spbox {
namespace {

constexpr std::uint32_t kFirstEvent = 0x110C0000;
constexpr std::uint32_t kErrorBit = 0x1000;
constexpr std::uint32_t kSecondSpace = 0x8000;
constexpr std::uint32_t kSecondErrorBits = 0x3000;

// A function of the library: where its events begin in its block, and how many points they may take.
struct Function {
  const char *name;
  std::uint32_t space;
  std::uint32_t block;
  std::uint32_t first = 0;
  std::uint32_t points = 16;
};

constexpr std::uint32_t kPlain = 0;

constexpr Function kFunctions[] = {
    {"lmainte_ask_select", kPlain, 0x000},
    {"lmainte_tty_control", kPlain, 0x001},
    {"lmainte_exec", kPlain, 0x002},
    {"lmainte_exec (termination)", kPlain, 0x069},
    {"lmainte_show_psu_list", kPlain, 0x013},
    {"lmainte_show_psu_status", kPlain, 0x023},
    {"lmainte_show_file", kPlain, 0x02E},
    {"lmainte_control_mainte", kPlain, 0x02F},
    {"lmainte_report_vanta", kPlain, 0x030},
    {"lmainte_control_fan", kPlain, 0x031},
    {"lmainte_control_led", kPlain, 0x033},
    {"lmainte_set_mainteflag", kPlain, 0x034},
    {"lmainte_db_get_data", kPlain, 0x03A},
    {"lmainte_db_make_access_table", kPlain, 0x03B},
    {"lmainte_db_free_access_table", kPlain, 0x03C},
    {"lmainte_get_psu_data", kPlain, 0x040},
    {"lmainte_get_psu_data (fetch)", kPlain, 0x048},
    {"lmainte_get_psu_data (read)", kPlain, 0x049},
    {"lmainte_get_model_data", kPlain, 0x044},
    {"lmainte_get_model_data (find model)", kPlain, 0x045},
    {"lmainte_get_model_data (read time file)", kPlain, 0x046},
    {"lmainte_scdb_open", kSecondSpace, 0x001},
    {"lmainte_scdb_close", kSecondSpace, 0x002},
    {"lmainte_scdb_lock", kSecondSpace, 0x003},
    {"lmainte_scdb_unlock", kSecondSpace, 0x004},
    {"lmainte_scdb_find_session", kSecondSpace, 0x005},
    {"lmainte_scdb_check_lock_order", kSecondSpace, 0x006},
    {"lmainte_show_menu", kSecondSpace, 0x017},
};

// An event between entry and exit: what happened, and what its values are.
struct Phrase {
  std::uint32_t event;
  const char *text;
  const char *first = nullptr;
  const char *second = nullptr;
};

constexpr std::uint32_t point(std::uint32_t block, std::uint32_t number) {
  return kFirstEvent + block * 16 + number;
}
constexpr std::uint32_t error(std::uint32_t block, std::uint32_t number) {
  return point(block, number) + kErrorBit;
}
constexpr std::uint32_t point_2(std::uint32_t block, std::uint32_t number) {
  return point(block, number) + kSecondSpace;
}
constexpr std::uint32_t error_2(std::uint32_t block, std::uint32_t number) {
  return point_2(block, number) + kSecondErrorBits;
}

// The meaning of a value also says how it is shown: see value_text.
constexpr Phrase kPhrases[] = {
    {point(0x000, 2), "the prompt returned", "result"},
    {error(0x000, 1), "the second argument is null"},
    {error(0x000, 2), "the format is null"},
    {error(0x000, 3), "typed-ahead input was not discarded", "result"},
    {error(0x000, 4), "echo was not switched on", "result"},
    {error(0x000, 5), "echo was not switched off: the answer does not count", "result"},

    {point(0x001, 2), "change the terminal", "mode", "setting"},
    {error(0x001, 1), "the terminal's attributes cannot be read", "result", "errno"},
    {error(0x001, 2), "no such mode", "mode", "setting"},
    {error(0x001, 3), "the terminal's queue was not discarded", "result", "errno"},
    {error(0x001, 4), "the terminal's attributes cannot be set", "result", "errno"},

    {point(0x002, 2), "run a control program", "command", "arguments"},
    {point(0x002, 3), "the child runs the program", "command", "arguments"},
    {point(0x002, 4), "a child was started", "time limit", "child"},
    {point(0x002, 5), "the time limit is spent", "seconds waited"},
    {point(0x002, 6), "the child was stopped", "result", "wait status"},
    {point(0x002, 7), "the program ended", "exit status"},
    {error(0x002, 1), "an argument is refused"},
    {error(0x002, 2), "no memory for the arguments", "errno"},
    {error(0x002, 3), "no child could be made", "errno"},
    {error(0x002, 4), "the program cannot be run", "errno"},
    {error(0x002, 5), "the wait for the child failed", "result", "errno"},
    {error(0x002, 6), "the child could not be stopped", "result"},
    {error(0x002, 7), "the program was killed", "wait status"},
    {point(0x069, 2), "stop the child", "child"},
    {point(0x069, 3), "a signal was sent", "attempt"},
    {error(0x069, 1), "the wait after SIGTERM failed", "result", "errno"},
    {error(0x069, 2), "the wait after SIGKILL failed", "result", "errno"},

    {error(0x013, 1), "the records are null"},
    {error(0x013, 2), "the lines are null"},
    {error(0x013, 3), "the list file cannot be created", "errno"},
    {error(0x013, 4), "a unit has no name", "result"},
    {error(0x013, 5), "the pager failed", "result"},
    {error(0x013, 6), "the list file cannot be removed", "result", "errno"},
    {error(0x023, 1), "the record is null"},
    {error(0x023, 2), "the lines are null"},
    {error(0x023, 3), "the list file cannot be created", "errno"},
    {error(0x023, 4), "the unit has no name", "result"},
    {error(0x023, 5), "the pager failed", "result"},
    {error(0x023, 6), "the list file cannot be removed", "result", "errno"},

    {point(0x02E, 2), "the child runs the pager"},
    {error(0x02E, 1), "the path is null"},
    {error(0x02E, 2), "no child could be made", "errno"},
    {error(0x02E, 3), "the pager cannot be run", "errno"},
    {error(0x02E, 4), "the wait for the pager failed", "result", "errno"},
    {error(0x02E, 5), "the pager was killed", "wait status"},
    {error(0x02E, 6), "the pager could not be started", "wait status"},

    {point(0x02F, 2), "switch maintenance mode", "command", "mode"},
    {point(0x02F, 3), "the program ended", "exit status"},
    {error(0x02F, 1), "the time limit is not positive"},
    {error(0x02F, 2), "no such mode", "mode"},
    {error(0x02F, 3), "maintenance mode was not switched", "mode", "exit status"},
    {point(0x030, 2), "report the maintenance", "command", "mode"},
    {point(0x030, 3), "the program ended", "exit status"},
    {error(0x030, 1), "the time limit is not positive"},
    {error(0x030, 2), "no such mode", "mode"},
    {error(0x030, 3), "the maintenance was not reported", "mode", "exit status"},
    {point(0x031, 2), "set the fans' speed", "command", "mode"},
    {point(0x031, 3), "the program ended", "exit status"},
    {error(0x031, 1), "the time limit is not positive"},
    {error(0x031, 2), "no such mode", "mode"},
    {error(0x031, 3), "full speed needs a unit", "mode"},
    {error(0x031, 4), "the fans' speed was not set", "mode", "exit status"},
    {point(0x033, 2), "switch the LED", "command", "mode"},
    {point(0x033, 3), "of the unit", "type", "number"},
    {point(0x033, 4), "the program ended", "exit status"},
    {error(0x033, 1), "the time limit is not positive"},
    {error(0x033, 2), "the unit is null"},
    {error(0x033, 3), "no such mode", "mode"},
    {error(0x033, 4), "the LED was not switched", "mode", "exit status"},
    {point(0x034, 2), "set the maintenance flag", "command", "mode"},
    {point(0x034, 3), "of the unit", "type", "number"},
    {point(0x034, 4), "the program ended", "exit status"},
    {error(0x034, 1), "the time limit is not positive"},
    {error(0x034, 2), "the unit is null"},
    {error(0x034, 3), "no such mode", "mode"},
    {error(0x034, 4), "the maintenance flag was not set", "mode", "exit status"},

    {error(0x03A, 1), "the table is null"},
    {error(0x03A, 2), "the database was not opened", "result", "database"},
    {error(0x03A, 3), "the database was not locked", "result", "database"},
    {error(0x03A, 4), "the record was not read", "client's result", "index"},
    {error(0x03A, 5), "the record has another size", "bytes expected", "bytes found"},
    {error(0x03A, 6), "the database was not unlocked", "result", "database"},
    {error(0x03A, 7), "the database was not closed", "result", "database"},
    {error(0x03B, 1), "an argument is refused", "first", "count"},
    {error(0x03B, 2), "an argument is refused, or the name is null", "size"},
    {error(0x03B, 3), "no memory for the table", "errno"},
    {error(0x03C, 1), "the table is null"},
    {error(0x03C, 2), "the record was never read", "index"},

    {error(0x040, 1), "an argument is refused", "count", "model"},
    {error(0x040, 2), "the power supplies were not read", "first", "count"},
    {error(0x048, 1), "the current record was not read"},
    {error(0x048, 2), "the FRU records were not read", "first", "count"},
    {error(0x048, 3), "the current record is missing"},
    {error(0x049, 1), "no such power supply", "number"},
    {error(0x049, 2), "an installed power supply has no FRU record", "number"},

    {point(0x044, 2), "the model is known", "model"},
    {error(0x044, 1), "both arguments are null"},
    {error(0x044, 2), "the current system record was not read"},
    {error(0x044, 3), "the setup system record was not read"},
    {error(0x044, 4), "the general system record was not read"},
    {error(0x044, 5), "no count for this model", "model"},
    {error(0x044, 6), "no such model", "model"},
    {error(0x046, 1), "the time file cannot be opened", "result", "errno"},
    {error(0x046, 2), "the time file was not read in full", "bytes read", "errno"},
    {error(0x046, 3), "the time file was not closed", "result", "errno"},

    {point_2(0x001, 2), "one user more", "users"},
    {error_2(0x001, 1), "no such database", "database"},
    {error_2(0x001, 2), "the count of users is wrong", "database", "users"},
    {error_2(0x001, 3), "the client did not open it", "client's result", "database"},
    {point_2(0x002, 2), "one user less", "users"},
    {error_2(0x002, 1), "no such database", "database"},
    {error_2(0x002, 2), "it is not open", "database", "users"},
    {error_2(0x002, 3), "the client did not close it", "client's result", "database"},
    {error_2(0x003, 1), "no such database", "database"},
    {error_2(0x003, 2), "the count of locks is wrong", "database", "locks"},
    {error_2(0x003, 3), "out of order", "result", "database"},
    {error_2(0x003, 4), "the client did not lock it", "client's result", "database"},
    {error_2(0x004, 1), "no such database", "database"},
    {error_2(0x004, 2), "it is not locked", "database", "locks"},
    {error_2(0x004, 3), "out of order", "result", "database"},
    {error_2(0x004, 4), "the client did not unlock it", "client's result", "database"},
    {error_2(0x005, 1), "no such database", "database"},
    {error_2(0x006, 1), "a higher database is locked", "database", "higher database"},

    {error_2(0x017, 1), "the lines are null"},
    {error_2(0x017, 2), "the list file cannot be created", "errno"},
    {error_2(0x017, 3), "the pager failed", "result"},
    {error_2(0x017, 4), "the list file cannot be removed", "result", "errno"},
};

// An event code taken apart.
struct Place {
  std::uint32_t space;
  std::uint32_t block;
  std::uint32_t number;
  bool is_error;
};

Place place_of(std::uint32_t event) {
  std::uint32_t rest = event - kFirstEvent;
  const std::uint32_t space = rest & kSecondSpace;
  const std::uint32_t error_bits = space != 0 ? kSecondErrorBits : kErrorBit;
  const bool is_error = (rest & error_bits) == error_bits;
  rest &= ~(space | (is_error ? error_bits : 0));
  return {space, rest / 16, rest % 16, is_error};
}

const Function *function_of(const Place &place) {
  const auto *found = std::find_if(std::begin(kFunctions), std::end(kFunctions), [&](const Function &function) {
    return function.space == place.space && function.block == place.block && place.number >= function.first &&
           place.number < function.first + function.points;
  });
  return found == std::end(kFunctions) ? nullptr : found;
}

const Phrase *phrase_of(std::uint32_t event) {
  const auto *found = std::find_if(std::begin(kPhrases), std::end(kPhrases),
                                   [event](const Phrase &phrase) { return phrase.event == event; });
  return found == std::end(kPhrases) ? nullptr : found;
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

}  // namespace

TraceLine words_of(const box::TraceEntry &entry) {
  TraceLine line;
  line.level = level_text(entry.level);
  const Place place = place_of(entry.event);
  const Function *function = entry.event >= kFirstEvent ? function_of(place) : nullptr;
  const Phrase *phrase = phrase_of(entry.event);
  const bool is_bound = function != nullptr && !place.is_error && place.number < function->first + 2;
  line.is_error = place.is_error;
  line.is_known = function != nullptr && (phrase != nullptr || is_bound);
  line.function = function != nullptr ? function->name : "?";
  if (phrase != nullptr) {
    line.event = phrase->text;
    const char *const meanings[] = {phrase->first, phrase->second};
    add_values(entry, meanings, line);
    return line;
  }
  const char *const result[] = {"result"};
  if (is_bound)
    line.event = place.number == function->first ? "entry" : "exit";
  else
    line.event = format("event %08X (block %03X, %s %u)", entry.event, place.block, place.is_error ? "error" : "point",
                        place.number);
  add_values(entry, result, line);
  return line;
}

}  // namespace spbox
