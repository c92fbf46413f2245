// What the platform kept of its calls, in words.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "host/box/call_ring.h"

namespace trace_book {

struct CallLine {
  std::string
      party;  // who is called, or acts: "database", "program", "command", "operator", "log", "daemon", "file", "platform"
  std::string function;  // "scdb_get", or the name of the program
  std::string text;      // "record gen_system_info of general (0): 64 bytes"
  bool is_error = false;
};

CallLine words_of(const box::CallEntry &entry);

// What the platform keeps, a row for each kind.
struct CallRow {
  box::CallKind kind;
  std::string_view party, function;  // without a function: the name of the program
  std::string_view meaning;
};
std::span<const CallRow> call_rows();

// "current (2)"
std::string database_text(std::uint32_t db_id);

// A result of the databases by its name: "LMAINTE_HOST_DB_ABSENT (-4)".
std::string database_result_text(std::int32_t result);

// The name alone; empty for one that has none.
std::string database_result_name(std::int32_t result);

// The name of the program at the front of an argument line: "replace_unit" of "/srv/replace_unit cmu".
std::string name_of_program(const std::string &line);

}  // namespace trace_book
