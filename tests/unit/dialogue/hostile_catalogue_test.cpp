// What a message catalogue can do that means harm: its texts are used as they are.

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "tests/unit/dialogue/show_test.h"
#include "tests/unit/doubles/system_calls.h"

namespace {

using doubles::foot;
using doubles::head;
using doubles::machine;

constexpr char kListLine[] = "%2d. %-16s%s\n";

class HostileCatalogue : public doubles::ShowTest {
 protected:
  int32_t list() {
    auto psu = unit<PsuData>("/PSU#0", kInstalled, 0);
    psu.flags = 0;
    return lmainte_show_psu_list(-1, 1, &psu, lines_);
  }
  // The lines of units where this is the translation.
  std::string units_by(const std::string &translation) {
    machine().catalogue = {{kListLine, translation}};
    const std::string page = page_of([this] { return list(); });
    return page.substr(5, page.size() - 10);
  }
  static std::string last_word_by(const std::string &translation) {
    machine().catalogue = {{"done\n", translation}};
    machine().children_are_real = true;
    const DotParam request = {1, nullptr, 1};
    return doubles::printed_by([&] { lmainte_dot_end(lmainte_dot_start(&request)); }).substr(4);
  }
  // Whether the command survives a list in these words.
  bool survives(const std::string &translation) {
    machine().catalogue = {{kListLine, translation}};
    const pid_t command = __real_fork();
    if (command == 0) {
      dup2(open("/dev/null", O_WRONLY | O_CLOEXEC), STDERR_FILENO);  // a sanitizer tells what it thinks of it
      list();
      doubles::leave(0);
    }
    int status = 0;
    EXPECT_EQ(__real_waitpid(command, &status, 0), command);
    machine().forget_records();  // of a call that may have had no end
    return status == 0;
  }

  const ListLine lines_[3] = {head("Head\n"), foot("Foot\n"), doubles::end_mark()};
};

struct WordingRow {
  const char *says;
  std::string translation, shown;
};

TEST_F(HostileCatalogue, WordsALineAsItLikes) {
  const WordingRow rows[] = {
      {"conversions in another order keep their values", "%3$s|%2$s|%1$d\n", "Normal|PSU#0|1\n"},
      {"a conversion that is missing hides its value", "%2d. %s\n", " 1. PSU#0\n"},
      {"a text without conversions hides all", "no unit here\n", "no unit here\n"},
      {"lines may be added", "%d\n%s\n2. PSU#1 %s\n", "1\nPSU#0\n2. PSU#1 Normal\n"},
      {"escape sequences arrive", "\033[2J%d %s %s\n", "\033[2J1 PSU#0 Normal\n"},
      {"what is no UTF-8 arrives", "\xC3%d\xFF %s %s\n",
       "\xC3"
       "1\xFF PSU#0 Normal\n"},
      {"a long line is cut, also its end", std::string(200, 'x') + "\n", std::string(127, 'x')},
      {"a wide column is cut", "%2000d\n", std::string(127, ' ')},
  };
  for (const auto &row : rows) EXPECT_EQ(units_by(row.translation), row.shown) << row.says;
}

TEST_F(HostileCatalogue, LastWordOfTheIndicatorIsShownHoweverLong) {
  EXPECT_EQ(last_word_by("\033]2;x\a" + std::string(3000, 'x')), "\033]2;x\a" + std::string(3000, 'x') + "\n");
}

TEST_F(HostileCatalogue, OtherConversionsEndTheCommand) {
  EXPECT_TRUE(survives(kListLine));
  EXPECT_FALSE(survives("%s %s %s\n")) << "a text in place of a number";
  EXPECT_FALSE(survives("%n%s %s\n")) << "a count of characters in place of a number";
  EXPECT_FALSE(survives("%2$d %1$s\n")) << "other types by number";
}

}  // namespace
