#include "host/trace_book/call_words.h"

#include <array>
#include <string_view>

#include "host/box/place.h"
#include "host/include/lmainte_host.h"
#include "include/lmainte.h"

namespace trace_book {
namespace {

using box::CallEntry;
using box::CallKind;

struct ResultName {
  std::int32_t result;
  std::string_view name;
};

constexpr std::array<ResultName, 5> kDatabaseResults{{
    {LMAINTE_HOST_DB_ARGUMENT, "LMAINTE_HOST_DB_ARGUMENT"},
    {LMAINTE_HOST_DB_SESSION, "LMAINTE_HOST_DB_SESSION"},
    {LMAINTE_HOST_DB_BUSY, "LMAINTE_HOST_DB_BUSY"},
    {LMAINTE_HOST_DB_ABSENT, "LMAINTE_HOST_DB_ABSENT"},
    {LMAINTE_HOST_DB_STORAGE, "LMAINTE_HOST_DB_STORAGE"},
}};

constexpr std::array<ResultName, 6> kAnswers{{
    {LMAINTE_ASK_GAVE_UP, "gives up (LMAINTE_ASK_GAVE_UP)"},
    {LMAINTE_ASK_END_OF_INPUT, "is gone: the input has ended (LMAINTE_ASK_END_OF_INPUT)"},
    {LMAINTE_ASK_INTERRUPTED, "is interrupted by a signal (LMAINTE_ASK_INTERRUPTED)"},
    {LMAINTE_ASK_FAILED, "could not be asked (LMAINTE_ASK_FAILED)"},
    {box::kNoAnswer, "is asked again: this is no answer"},
}};

std::string named(const auto &names, std::int32_t result, const std::string &other) {
  for (const ResultName &row : names) {
    if (row.result == result && !row.name.empty()) return std::string(row.name);
  }
  return other;
}

std::string text_in(const CallEntry &entry) {
  return entry.whole_text + (entry.is_cut() ? " ..." : "");
}

// A text of several lines on one, without the blanks around it.
std::string on_one_line(std::string text) {
  for (char &byte : text) {
    if (byte == '\n' || byte == '\t' || byte == '\r') byte = ' ';
  }
  const std::size_t first = text.find_first_not_of(' ');
  if (first == std::string::npos) return "";
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

std::string bytes_text(std::uint32_t count) {
  return std::to_string(count) + (count == 1 ? " byte" : " bytes");
}

std::string database_of(const CallEntry &entry, const std::string &done) {
  return "database " + database_text(entry.first) +
         (entry.result == 0 ? done : ": " + database_result_text(entry.result));
}

std::string record_of(const CallEntry &entry) {
  return "record " + text_in(entry) + " of " + database_text(entry.first) + ": " +
         (entry.result == 0 ? bytes_text(entry.second) : database_result_text(entry.result));
}

std::string answer_of(const CallEntry &entry) {
  const std::string typed = "the operator types \"" + text_in(entry) + "\"";
  if (entry.result == LMAINTE_ASK_CHOSEN) return typed + ": choice " + std::to_string(entry.first);
  const std::string what = named(kAnswers, entry.result, "result " + std::to_string(entry.result));
  return entry.text_size == 0 ? "the operator " + what : typed + ", and " + what;
}

std::string descriptor_of(const CallEntry &entry) {
  return "descriptor " + std::to_string(static_cast<std::int32_t>(entry.first));
}

std::string moved(const CallEntry &entry) {
  if (entry.result < 0) return descriptor_of(entry) + ": failed";
  return descriptor_of(entry) + ": " + bytes_text(static_cast<std::uint32_t>(entry.result)) + " of " +
         std::to_string(entry.second);
}

std::string message_of(const CallEntry &entry, const char *what) {
  if (entry.result < 0) return std::string(what) + ": failed";
  return what + (" " + std::to_string(entry.second)) + " of daemon " + std::to_string(entry.first) + ": " +
         bytes_text(static_cast<std::uint32_t>(entry.result));
}

std::string exit_text(const CallEntry &entry) {
  return "ends with exit status " + std::to_string(entry.result);
}

std::string unit_id_text(const CallEntry &entry) {
  std::array<char, 24> text{};
  std::snprintf(text.data(), text.size(), "%08X %08X", entry.first, entry.second);
  return text.data();
}

CallLine line_of(const CallEntry &entry) {
  const bool is_refused = entry.result < 0;
  switch (entry.kind) {
    case CallKind::kMore:
      break;
    case CallKind::kBegin:
      return {"command", name_of_program(entry.whole_text),
              "begins as run " + std::to_string(entry.second) + ": " + text_in(entry)};
    case CallKind::kEnd:
      return {"command", name_of_program(entry.whole_text), exit_text(entry)};
    case CallKind::kProgram:
      return {"program", name_of_program(entry.whole_text), "starts: " + text_in(entry)};
    case CallKind::kProgramEnd:
      return {"program", name_of_program(entry.whole_text), exit_text(entry)};
    case CallKind::kOpen:
      return {"database", "scdb_open", database_of(entry, " is open"), is_refused};
    case CallKind::kLock:
      return {"database", "scdb_lock", database_of(entry, " is locked"), is_refused};
    case CallKind::kRead:
      return {"database", "scdb_get", record_of(entry), is_refused};
    case CallKind::kWrite:
      return {"database", "lcmn_scdb_put", record_of(entry), is_refused};
    case CallKind::kUnlock:
      return {"database", "scdb_unlock", database_of(entry, " is unlocked"), is_refused};
    case CallKind::kClose:
      return {"database", "scdb_close", database_of(entry, " is closed"), is_refused};
    case CallKind::kQuestion:
      return {"operator", "cli_ask_select", "\"" + on_one_line(text_in(entry)) + "\"", is_refused};
    case CallKind::kAnswer:
      return {"operator", "cli_ask_select", answer_of(entry), entry.result == LMAINTE_ASK_FAILED};
    case CallKind::kLog:
      return {"log", "mgblog_save", is_refused ? "an event was not saved" : "an event is saved", is_refused};
    case CallKind::kName:
      return {"platform", "api_conv_unit_name_get",
              "unit id " + unit_id_text(entry) + ": " + (is_refused ? "no name" : text_in(entry)), is_refused};
    case CallKind::kFileOpen:
      return {"file", "lcmn_lopen", text_in(entry) + ": " + (is_refused ? "not opened" : descriptor_of(entry)),
              is_refused};
    case CallKind::kFileRead:
      return {"file", "lcmn_read", moved(entry), is_refused};
    case CallKind::kFileWrite:
      return {"file", "lcmn_write", moved(entry), is_refused};
    case CallKind::kFileClose:
      return {"file", "lcmn_close", descriptor_of(entry) + (is_refused ? ": failed" : ": closed"), is_refused};
    case CallKind::kSend:
      return {"daemon", "lcmn_send", message_of(entry, "request"), is_refused};
    case CallKind::kReceive:
      return {"daemon", "lcmn_receive", message_of(entry, "reply to request"), is_refused};
    case CallKind::kWaitForReply:
      return {"daemon", "lcmn_select",
              is_refused          ? "the wait for a reply failed"
              : entry.result == 0 ? "no reply came in time"
                                  : "a reply has come",
              entry.result <= 0};
  }
  return {"platform", "?", ""};
}

}  // namespace

CallLine words_of(const CallEntry &entry) {
  CallLine line = line_of(entry);
  if (entry.deviated) line.text += " (a deviation)";
  return line;
}

std::string database_text(std::uint32_t db_id) {
  const std::string number = std::to_string(db_id);
  return db_id < box::kDatabaseNames.size() ? std::string(box::kDatabaseNames.at(db_id)) + " (" + number + ")" : number;
}

std::string database_result_text(std::int32_t result) {
  const std::string number = std::to_string(result), name = named(kDatabaseResults, result, "");
  return name.empty() ? "result " + number : name + " (" + number + ")";
}

std::string name_of_program(const std::string &line) {
  const std::string first = line.substr(0, line.find(' '));
  return first.substr(first.rfind('/') + 1);
}

}  // namespace trace_book
