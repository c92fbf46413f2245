// The lists and status tables of what the database holds, on each model, on a terminal, through the pager, word for word.

#include <charconv>

#include "host/box/database.h"
#include "host/box/inventory_records.h"
#include "host/box/place.h"
#include "host/box/records.h"
#include "tests/end_to_end/box_test.h"
#include "tests/end_to_end/transcript.h"

namespace end_to_end {
namespace {

std::uint32_t number(std::string_view text) {
  std::uint32_t value = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  if (result.ec != std::errc{} || result.ptr != text.data() + text.size()) {
    throw std::runtime_error("\"" + std::string(text) + "\" is no number");
  }
  return value;
}

struct Range {
  std::uint32_t first, last;
};

// "4-7", or "4" for 4 to 4.
Range range(const std::string &text) {
  const auto dash = text.find('-');
  if (dash == std::string::npos) return {number(text), number(text)};
  return {number(text.substr(0, dash)), number(text.substr(dash + 1))};
}

std::string text_of(const std::vector<std::string> &lines) {
  std::string text;
  for (const auto &line : lines) text += line + "\n";
  return text;
}

class Transcripts : public BoxTest, public testing::WithParamInterface<const char *> {
 protected:
  void edit(std::uint32_t db_id, const char *pattern, Range numbers, const std::function<void(box::Bytes &)> &change) {
    box::Database database(box::Place(box()).database(db_id));
    ASSERT_TRUE(database.lock());
    for (std::uint32_t n = numbers.first; n <= numbers.last; ++n) {
      const auto name = box::numbered(pattern, n);
      auto record = database.get(name);
      ASSERT_TRUE(record) << name;
      change(*record);
      database.put(name, *record);
    }
    ASSERT_TRUE(database.unlock());
  }

  void set_xsbs(const Words &words) {
    const auto numbers = range(words.at(1));
    edit(1, "setup_xsb_info_%02d", numbers, [&](auto &record) { box::put_word(record, 128, number(words.at(3))); });
    edit(2, "current_xsb_info_%02d", numbers, [&](auto &record) {
      box::put_word(record, 56, number(words.at(2)));
      record.at(61) = static_cast<std::uint8_t>(number(words.at(4)));
    });
  }

  void divide(const Words &words) {
    edit(2, "current_cmu_info_%02d", range(words.at(1)),
         [&](auto &record) { box::put_word(record, 36, number(words.at(2))); });
  }

  void do_as_technician(const Words &words) {
    if (words.at(0) == "xsb") return set_xsbs(words);
    if (words.at(0) == "board") return divide(words);
    spbox(words);
  }

  // The operator turns page after page.
  void expect_shown(const Step &step) {
    Words command = step.words;
    if (command.at(0) == "show_units") command[0] = SHOW_UNITS;
    terminal::Terminal terminal;
    const auto mode = terminal.mode();
    terminal.start(in_box(command));
    while (terminal.wait_for("--More--", kSoon)) terminal.type(" ");
    EXPECT_EQ(terminal.wait_for_exit(kLater), (terminal::Ending{false, step.exit_status}));
    auto lines = terminal.everything_shown();
    while (!lines.empty() && lines.back().empty()) lines.pop_back();
    EXPECT_EQ(text_of(lines), text_of(step.shown));
    EXPECT_EQ(terminal.mode(), mode);
    EXPECT_TRUE(terminal.processes().empty());
    expect_no_list_file();
  }
};

TEST_P(Transcripts, AreWhatTheOperatorSees) {
  const auto file = std::filesystem::path(TRANSCRIPTS) / (std::string(GetParam()) + ".txt");
  make_box(GetParam());
  int commands = 0;
  for (const auto &step : read_transcript(file)) {
    SCOPED_TRACE(file.filename().string() + ":" + std::to_string(step.line));
    if (step.by_technician) {
      do_as_technician(step.words);
    } else {
      expect_shown(step);
      ++commands;
    }
  }
  EXPECT_GT(commands, 10);
}

INSTANTIATE_TEST_SUITE_P(Of, Transcripts, testing::Values("qa", "qb1", "qb2", "qe1", "qe2", "qe3"),
                         [](const auto &model) { return std::string(model.param); });

}  // namespace
}  // namespace end_to_end
