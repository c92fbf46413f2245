#include "host/script/script.h"

#include <gtest/gtest.h>

#include <fstream>

#include "tests/host/box/scratch.h"

namespace {

using script::Words;

constexpr script::Grammar kQuotes{.has_quotes = true, .has_semicolons = false};
constexpr script::Grammar kSemicolons{.has_quotes = false, .has_semicolons = true};

std::vector<script::Statement> read(const std::string &text, script::Grammar grammar = kQuotes,
                                    const std::string &name = "walk.play") {
  script::Reader reader(text, name, grammar);
  std::vector<script::Statement> statements;
  while (auto statement = reader.next()) statements.push_back(*statement);
  return statements;
}

std::string error_of(const std::string &text) {
  try {
    read(text);
  } catch (const script::Error &error) {
    return error.what();
  }
  return "no error";
}

struct WordsRow {
  const char *says;
  const char *text;
  Words words;
};

TEST(Script, HasWords) {
  const WordsRow rows[] = {
      {"blanks separate words", "start  ls\t-l /tmp \r", {"start", "ls", "-l", "/tmp"}},
      {"a comment begins with a word", "spbox pull /PSU#3 # the #3", {"spbox", "pull", "/PSU#3"}},
      {"and with no word in quotes", "say \"# not one\"", {"say", "# not one"}},
      {"a comment may stand close to a word in quotes", "say \"one\"#two", {"say", "one"}},
      {"a word in quotes keeps its blanks", "type \"a b\"", {"type", "a b"}},
      {"and knows escapes", R"(type "\n\t\r\e\"\\\003x\101\7\x1bB")", {"type", "\n\t\r\033\"\\\003xA\a\033B"}},
      {"a word in quotes may be empty", "type \"\"", {"type", ""}},
      {"and ends where the next one begins", R"(type "a""b"c)", {"type", "a", "b", "c"}},
      {"quotes within a word are a part of it", "type a\"b c\"", {"type", "a\"b", "c\""}},
      {"semicolons are, too", "start a;b ;c ;", {"start", "a;b", ";c", ";"}},
  };
  for (const WordsRow &row : rows) {
    const auto statements = read(row.text);
    ASSERT_EQ(statements.size(), 1U) << row.says;
    EXPECT_EQ(statements[0].words, row.words) << row.says;
  }
}

TEST(Script, HasStatementsBetweenSemicolonsToo) {
  const auto statements = read("; a b;;c\"d e\"  ;# no; more\n# none\n\t#; none\n f#1;g#", kSemicolons, "");
  ASSERT_EQ(statements.size(), 4U);
  EXPECT_EQ(statements[0].words, (Words{"a", "b"}));
  EXPECT_EQ(statements[1].words, (Words{"c\"d", "e\""}));
  EXPECT_EQ(statements[1].text, "c\"d e\"");
  EXPECT_EQ(statements[2].words, (Words{"f#1"}));
  EXPECT_EQ(statements[3].words, (Words{"g#"}));
  EXPECT_EQ(statements[3].place, "step 4");
}

TEST(Script, TellsWhereAStatementStandsAndHowItIsWritten) {
  const auto statements = read("\n# the walk\n  \n  say  \"a\\n b\" # and that is all\n");
  ASSERT_EQ(statements.size(), 1U);
  EXPECT_EQ(statements[0].place, "walk.play:4");
  EXPECT_EQ(statements[0].text, "say  \"a\\n b\"");
  EXPECT_STREQ(statements[0].error("nobody listens").what(), "walk.play:4: `say  \"a\\n b\"`: nobody listens");
}

TEST(Script, TellsWhereAStatementStandsInOneLineWhateverTheNameOfTheFileIs) {
  script::Reader reader("one", "a\nb.play", kQuotes);
  EXPECT_EQ(reader.next().value().place, "a\\x0ab.play:1");
}

TEST(Script, QuotesTheBeginningOfALongStatementOnly) {
  const auto statements = read("say " + std::string(300, 'x'));
  EXPECT_EQ(statements[0].error("why").what(), "walk.play:1: `say " + std::string(196, 'x') + "...`: why");
}

TEST(Script, RefusesQuotesThatMakeNoSense) {
  const struct {
    const char *says, *text, *error;
  } rows[] = {
      {"an open quote", "exit 0\nwait \"List", "walk.play:2: `wait \"List`: the closing \" is missing"},
      {"an escape at the end", R"(wait "List\)", R"(walk.play:1: `wait "List\`: the closing " is missing)"},
      {"an unknown escape", R"(wait "\q")",
       R"(walk.play:1: `wait "\q"`: there is no escape \q; there are \n, \t, \r, \e, \", \\, \003 and \x03)"},
      {"half a byte", R"(wait "\x3")",
       R"(walk.play:1: `wait "\x3"`: two hexadecimal digits stand behind \x, as in \x03)"},
  };
  for (const auto &row : rows) EXPECT_EQ(error_of(row.text), row.error) << row.says;
}

TEST(Script, TellsThatItsLastLineHasNoEnd) {
  script::Reader reader("one\ntwo", "walk.play", kQuotes);
  reader.next();
  EXPECT_FALSE(reader.line_is_cut());
  reader.next();
  EXPECT_EQ(reader.line(), 2);
  EXPECT_TRUE(reader.line_is_cut());
}

TEST(Script, SaysWhyAFileCannotBeRead) {
  const Scratch scratch;
  const std::string folder = scratch.path().string();
  std::ofstream(scratch / "walk.play") << "exit 0\n";
  EXPECT_EQ(script::text_of_file(scratch / "walk.play"), "exit 0\n");
  const auto error_of_file = [](const std::string &file) {
    try {
      script::text_of_file(file);
    } catch (const script::Error &error) {
      return std::string(error.what());
    }
    return std::string("no error");
  };
  EXPECT_EQ(error_of_file(folder + "/nowhere"), folder + "/nowhere: there is no such file");
  EXPECT_EQ(error_of_file(folder), folder + ": this is a folder, not a file");
  EXPECT_EQ(error_of_file("/proc/self/mem"), "/proc/self/mem: it cannot be read: Input/output error");
  EXPECT_EQ(error_of_file(folder + "/walk.play/x"), folder + "/walk.play/x: it cannot be read: Not a directory");
}

}  // namespace
