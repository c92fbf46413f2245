#include "host/trace_book/trace_book.h"

#include <gtest/gtest.h>

#include <map>

#include "host/trace_book/pages.h"

namespace {

struct EntryRow {
  std::uint32_t event, level;
  std::vector<std::uint32_t> values;
  const char *function, *what, *words, *level_word;
  bool known, error;
};

box::TraceEntry entry_of(std::uint32_t event, std::uint32_t level, const std::vector<std::uint32_t> &values = {}) {
  box::TraceEntry entry{};
  entry.level = level;
  entry.event = event;
  entry.words[0] = 4711;
  entry.words[1] = 123;
  entry.word_count = 2;
  for (const std::uint32_t value : values) entry.words.at(entry.word_count++) = value;
  return entry;
}

TEST(TraceBook, PutsEventsIntoWords) {
  const std::vector<EntryRow> rows{
      {0x110C0020, 256, {}, "lmainte_exec", "entry", "", "progress", true, false},
      {0x110C0021, 256, {}, "lmainte_exec", "exit", "", "progress", true, false},
      {0x110C0022,
       2053,
       {5, 4},
       "lmainte_exec",
       "run a control program",
       "command 5 (ctlled), arguments 4",
       "error",
       true,
       false},
      {0x110C0024,
       32769,
       {10, 4711},
       "lmainte_exec",
       "a child was started",
       "time limit 10, child 4711",
       "process",
       true,
       false},
      {0x110C1025,
       32778,
       {0xFFFFFFFF, 10},
       "lmainte_exec",
       "the wait for the child failed",
       "result -1, errno 10 (No child processes)",
       "system error",
       true,
       true},
      {0x110C1027,
       2053,
       {9},
       "lmainte_exec",
       "the program was killed",
       "wait status 9 (signal 9, Killed)",
       "error",
       true,
       true},
      {0x110C02E1, 256, {0}, "lmainte_show_file", "exit", "result 0 (LMAINTE_OK)", "progress", true, false},
      {0x110C0011, 256, {8}, "lmainte_tty_control", "exit", "result 8 (LMAINTE_FAILED)", "progress", true, false},
      {0x110C8012, 256, {1}, "lmainte_scdb_open", "one user more", "users 1", "progress", true, false},
      {0x110CB034,
       32778,
       {0xFFFFFFFF, 2},
       "lmainte_scdb_lock",
       "the client did not lock it",
       "client's result -1 (LMAINTE_HOST_DB_ARGUMENT), database 2 (current)",
       "system error",
       true,
       true},
      {0x110C0442, 256, {5}, "lmainte_get_model_data", "the model is known", "model 5 (qe3)", "progress", true, false},
      {0x110C1323,
       2053,
       {205},
       "lmainte_detach_fru",
       "the unit was not detached",
       "exit status 205",
       "error",
       true,
       true},
      {0x110C1363, 2053, {208}, "lmainte_test_fru", "the test failed", "exit status 208", "error", true, true},
      {0x110C1151,
       2053,
       {},
       "lmainte_show_iox_list or lmainte_show_ioxpsu_list",
       "the lines are null",
       "",
       "error",
       true,
       true},
      {0x110C12F3,
       2053,
       {1, 200},
       "lmainte_control_mainte",
       "maintenance mode was not switched",
       "mode 1 (LMAINTE_MAINTE_LOCK), exit status 200",
       "error",
       true,
       true},
  };
  for (const EntryRow &row : rows) {
    const trace_book::TraceLine line = trace_book::words_of(entry_of(row.event, row.level, row.values));
    std::string words;
    for (const trace_book::TraceValue &value : line.values) {
      words += (words.empty() ? "" : ", ") + value.meaning + " " + value.text;
    }
    EXPECT_EQ(line.pid, 4711u);
    EXPECT_EQ(line.line, 123u);
    EXPECT_EQ(line.function, row.function);
    EXPECT_EQ(line.event, row.what);
    EXPECT_EQ(words, row.words);
    EXPECT_EQ(line.level, row.level_word);
    EXPECT_EQ(line.is_known, row.known);
    EXPECT_EQ(line.is_error, row.error) << line.event;
  }
}

// An errno that is called so, but is shown as a plain number, would be a slip in one of the pages.
TEST(TraceBook, ShowsValuesOfTheSameMeaningAlike) {
  std::map<std::string, trace_book::Form> forms;
  for (const trace_book::Function &function : trace_book::all_functions()) {
    for (const trace_book::Event &event : function.events) {
      for (const trace_book::Value &value : {event.first, event.second}) {
        // Each operation has modes of its own, and a system call other results than a function of the library.
        if (value.meaning == nullptr || value.meaning == std::string_view("mode")) continue;
        if (value.meaning == std::string_view("result")) continue;
        EXPECT_EQ(forms.try_emplace(value.meaning, value.form).first->second, value.form)
            << function.name << " " << event.name << ": " << value.meaning;
      }
    }
  }
  EXPECT_EQ(forms.at("higher database"), trace_book::Form::kDatabase);
  EXPECT_EQ(forms.at("attempt"), trace_book::Form::kNumber);
}

TEST(TraceBook, ShowsHonestlyWhatItDoesNotHave) {
  const trace_book::TraceLine nowhere = trace_book::words_of(entry_of(0x110CBFF3, 7, {0xFFFFFFFE}));
  EXPECT_FALSE(nowhere.is_known);
  EXPECT_EQ(nowhere.function, "?");
  EXPECT_EQ(nowhere.event, "event 110CBFF3 (block 0FF, error 3)");
  ASSERT_EQ(nowhere.values.size(), 1u);
  EXPECT_EQ(nowhere.values[0].text, "-2");
  EXPECT_EQ(nowhere.level, "level 0x7");
  const trace_book::TraceLine between = trace_book::words_of(entry_of(0x110C002F, 256));
  EXPECT_FALSE(between.is_known);
  EXPECT_EQ(between.function, "lmainte_exec");
  EXPECT_EQ(between.event, "event 110C002F (block 002, point 15)");
  EXPECT_FALSE(trace_book::words_of(entry_of(0x00000020, 256)).is_known);
  EXPECT_FALSE(trace_book::words_of(entry_of(0x220C0020, 256)).is_known);
}

}  // namespace
