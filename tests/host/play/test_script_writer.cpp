#include "host/play/script_writer.h"

#include <gtest/gtest.h>

#include "tests/host/play/play_test.h"

namespace {

using play::Words;

TEST(ScriptWriter, WritesAScriptAsAPersonWould) {
  play::ScriptWriter script;
  script.part();
  script.remark("A power supply is replaced.\n\nWith \x1b[2J in the remark.");
  script.part();
  script.part();
  script.step({"box", "qe1"});
  script.step({"spbox", "fault", "/PSU#3"});
  script.step({"start", "sh", "-c", "exec sleep 60"});
  script.step({"wait", "Type"});
  script.step({"wait", "like", "^\\$ [0-9]+"});
  script.step({"type", "3\n"});
  script.step({"take", "PID", "process ([0-9]+)"});
  script.step({"in_order", "but", "/PSU#3"});
  script.step({"in_order"});
  EXPECT_EQ(script.text(),
            "# A power supply is replaced.\n#\n# With \\x1b[2J in the remark.\n\nbox qe1\nspbox fault /PSU#3\n"
            "start sh -c \"exec sleep 60\"\nwait \"Type\"\nwait like \"^\\\\$$ [0-9]+\"\ntype \"3\\n\"\n"
            "take PID \"process ([0-9]+)\"\nin_order but /PSU#3\nin_order\n");
}

TEST(ScriptWriter, RefusesWhatIsNoStep) {
  play::ScriptWriter script;
  EXPECT_THROW(script.step({"jump"}), std::invalid_argument);
  EXPECT_THROW(script.step({"exit"}), std::invalid_argument);
  EXPECT_EQ(script.text(), "");
}

// What the words of a script may be, and hardest for the one who writes it.
class WordsThatAreReadAgain : public PlayTest, public testing::WithParamInterface<std::string> {};

TEST_P(WordsThatAreReadAgain, AreTheSame) {
  const bool is_argument = GetParam().find('\0') == std::string::npos;  // a program gets no zero byte
  play::ScriptWriter script;
  script.step({"box", "qa"});
  script.step({"start", "echo", is_argument ? GetParam() : "", "end"});
  script.step({"type", GetParam()});
  const auto steps = read(script.text());
  ASSERT_EQ(steps.size(), 3U);
  EXPECT_EQ(steps[1].words, (Words{"echo", is_argument ? GetParam() : "", "end"}));
  EXPECT_EQ(steps[2].words, (Words{GetParam()}));
}

// NOLINTBEGIN(misc-misleading-bidirectional): they are among what people write
INSTANTIATE_TEST_SUITE_P(Play, WordsThatAreReadAgain,
                         testing::Values("", "plain", "#", "a#b", "two words", "a;b", "\"", "a\"b", "\\", "\\n", "$",
                                         "$NAME", "$$", "\n\r\t\033", std::string("\0001", 2), "\0033", "\0011", "\177",
                                         "\xff", "\xffzz", "\xc3\xa9", "\xc2\x9b", "\xe2\x80\xae", " "));
// NOLINTEND(misc-misleading-bidirectional)

}  // namespace
