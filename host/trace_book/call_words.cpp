#include "host/trace_book/call_words.h"

#include <algorithm>
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
  if (entry.result < 0) return "is killed by signal " + std::to_string(-std::int64_t{entry.result});
  return "ends with exit status " + std::to_string(entry.result);
}

std::string unit_id_text(const CallEntry &entry) {
  std::array<char, 24> text{};
  std::snprintf(text.data(), text.size(), "%08X %08X", entry.first, entry.second);
  return text.data();
}

std::string name_text(const CallEntry &entry) {
  return "unit id " + unit_id_text(entry) + ": " + (entry.result < 0 ? "no name" : text_in(entry));
}

std::string opened(const CallEntry &entry) {
  return text_in(entry) + ": " + (entry.result < 0 ? "not opened" : descriptor_of(entry));
}

std::string waited(const CallEntry &entry) {
  if (entry.result < 0) return "the wait for a reply failed";
  return entry.result == 0 ? "no reply came in time" : "a reply has come";
}

std::string text_of(const CallEntry &entry) {
  switch (entry.kind) {
    case CallKind::kMore:
      break;
    case CallKind::kBegin:
      return "begins as run " + std::to_string(entry.second) + ": " + text_in(entry);
    case CallKind::kProgram:
      return "starts: " + text_in(entry);
    case CallKind::kEnd:
    case CallKind::kProgramEnd:
      return exit_text(entry);
    case CallKind::kOpen:
      return database_of(entry, " is open");
    case CallKind::kLock:
      return database_of(entry, " is locked");
    case CallKind::kUnlock:
      return database_of(entry, " is unlocked");
    case CallKind::kClose:
      return database_of(entry, " is closed");
    case CallKind::kRead:
    case CallKind::kWrite:
      return record_of(entry);
    case CallKind::kQuestion:
      return "\"" + on_one_line(text_in(entry)) + "\"";
    case CallKind::kAnswer:
      return answer_of(entry);
    case CallKind::kLog:
      return entry.result < 0 ? "an event was not saved" : "an event is saved";
    case CallKind::kName:
      return name_text(entry);
    case CallKind::kFileOpen:
      return opened(entry);
    case CallKind::kFileRead:
    case CallKind::kFileWrite:
      return moved(entry);
    case CallKind::kFileClose:
      return descriptor_of(entry) + (entry.result < 0 ? ": failed" : ": closed");
    case CallKind::kSend:
      return message_of(entry, "request");
    case CallKind::kReceive:
      return message_of(entry, "reply to request");
    case CallKind::kWaitForReply:
      return waited(entry);
  }
  return "";
}

bool is_error(const CallEntry &entry) {
  switch (entry.kind) {
    case CallKind::kBegin:
    case CallKind::kEnd:
    case CallKind::kProgram:
      return false;
    case CallKind::kAnswer:
      return entry.result == LMAINTE_ASK_FAILED;
    case CallKind::kWaitForReply:
      return entry.result <= 0;
    default:
      return entry.result < 0;
  }
}

constexpr std::array<CallRow, box::kCallKinds - 1> kRows{{
    {CallKind::kBegin, "command", "", "a command begins, with its number in the box and its words"},
    {CallKind::kEnd, "command", "", "it ends, with its exit status"},
    {CallKind::kProgram, "program", "", "a control program starts, with its argument line"},
    {CallKind::kProgramEnd, "program", "", "it ends by itself, with its exit status"},
    {CallKind::kOpen, "database", "scdb_open", "a database is opened"},
    {CallKind::kLock, "database", "scdb_lock", "it is locked"},
    {CallKind::kRead, "database", "scdb_get", "a record is read, with its name and its bytes"},
    {CallKind::kWrite, "database", "lcmn_scdb_put", "a record is written"},
    {CallKind::kUnlock, "database", "scdb_unlock", "the database is unlocked"},
    {CallKind::kClose, "database", "scdb_close", "it is closed"},
    {CallKind::kQuestion, "operator", "cli_ask_select", "the operator is asked"},
    {CallKind::kAnswer, "operator", "cli_ask_select", "what they type, and the choice that it is"},
    {CallKind::kLog, "log", "mgblog_save", "an event goes into the log"},
    {CallKind::kName, "platform", "api_conv_unit_name_get", "a unit gets its name; a list of units is one line"},
    {CallKind::kFileOpen, "file", "lcmn_lopen", "a file is opened"},
    {CallKind::kFileRead, "file", "lcmn_read", "so many bytes of it are read"},
    {CallKind::kFileWrite, "file", "lcmn_write", "so many bytes are written"},
    {CallKind::kFileClose, "file", "lcmn_close", "it is closed"},
    {CallKind::kSend, "daemon", "lcmn_send", "a request goes to the daemon"},
    {CallKind::kReceive, "daemon", "lcmn_receive", "its reply is taken"},
    {CallKind::kWaitForReply, "daemon", "lcmn_select", "the wait for a reply ends"},
}};

}  // namespace

std::span<const CallRow> call_rows() {
  return kRows;
}

CallLine words_of(const CallEntry &entry) {
  const auto *const row = std::ranges::find(kRows, entry.kind, &CallRow::kind);
  if (row == kRows.end()) return {"platform", "?", ""};
  const std::string function = row->function.empty() ? name_of_program(entry.whole_text) : std::string(row->function);
  CallLine line{std::string(row->party), function, text_of(entry), is_error(entry)};
  if (entry.deviated) line.text += " (a deviation)";
  return line;
}

std::string database_text(std::uint32_t db_id) {
  const std::string number = std::to_string(db_id);
  return db_id < box::kDatabaseNames.size() ? std::string(box::kDatabaseNames.at(db_id)) + " (" + number + ")" : number;
}

std::string database_result_text(std::int32_t result) {
  const std::string number = std::to_string(result), name = database_result_name(result);
  return name.empty() ? "result " + number : name + " (" + number + ")";
}

std::string database_result_name(std::int32_t result) {
  return named(kDatabaseResults, result, "");
}

std::string name_of_program(const std::string &line) {
  const std::string first = line.substr(0, line.find(' '));
  return first.substr(first.rfind('/') + 1);
}

}  // namespace trace_book
