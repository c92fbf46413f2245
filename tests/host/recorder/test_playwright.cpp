#include "host/recorder/playwright.h"

#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;
using recorder::Playwright;
using recorder::ToldDeed;
using recorder::Typing;

constexpr Typing kLines{true, true}, kKeys{false, true};

Playwright begun() {
  Playwright play(std::vector<play::Words>{play::Words{"box", "qa"}});
  play.starts({"cat"});
  return play;
}

// What stands behind the first lines of such a play.
std::string behind_start(const Playwright &play) {
  const std::string text = play.text(), head = "\nstart cat\n";
  const auto at = text.find(head);
  return at == std::string::npos ? text : text.substr(at + head.size());
}

TEST(Playwright, WaitsForWhatStandsThereAndTypesLineByLine) {
  Playwright play = begun();
  EXPECT_TRUE(play.types("4", {{"Which one?"}}, kLines));
  EXPECT_FALSE(play.types("2\177", {{"4"}}, kLines));
  EXPECT_FALSE(play.types("\r", {{"4"}}, kLines));
  EXPECT_TRUE(play.types("no\025yes\r", {{"Sure?"}}, kLines));
  EXPECT_EQ(behind_start(play), "wait \"Which one?\"\ntype \"4\\n\"\nwait \"Sure?\"\ntype \"yes\\n\"\n");
}

TEST(Playwright, ErasesACharacterWithAllItsBytes) {
  Playwright play = begun();
  play.types("a\xc3\xa9\177\177\177z\n", {}, kLines);
  EXPECT_EQ(behind_start(play), "type \"z\\n\"\n");
}

TEST(Playwright, TypesKeyByKeyWhereTheCommandTakesThemSo) {
  Playwright play = begun();
  play.types(" ", {{"--More-- (12%)"}}, kKeys);
  play.types("\177q", {{"--More-- (69%)"}}, kKeys);
  EXPECT_EQ(behind_start(play), "wait \"--More--\"\ntype \" \"\nwait \"--More--\"\ntype \"\\x7f\"\ntype \"q\"\n");
}

TEST(Playwright, TypesOnWithoutWaitingWhereNothingCame) {
  Playwright play = begun();
  play.types("1\n2\n", {{"Which one?"}}, kLines);
  EXPECT_EQ(behind_start(play), "wait \"Which one?\"\ntype \"1\\n\"\ntype \"2\\n\"\n");
}

TEST(Playwright, PutsADeedBeforeWhatCameOfIt) {
  Playwright play = begun();
  play.does({7, ToldDeed::What::kBegins, {"spbox", "pull", "/PSU#0"}}, {{"Pull it out"}});
  EXPECT_TRUE(play.awaits_deeds());
  play.types("1\n", {{"Pull it out", "It is gone"}}, kLines);
  play.does({7, ToldDeed::What::kDone}, {});
  EXPECT_FALSE(play.awaits_deeds());
  EXPECT_EQ(behind_start(play), "wait \"Pull it out\"\nspbox pull /PSU#0\nwait \"It is gone\"\ntype \"1\\n\"\n");
}

TEST(Playwright, WaitsOnceForADeedAndKeysAtOneText) {
  Playwright play = begun();
  play.does({7, ToldDeed::What::kBegins, {"spbox", "pull", "/PSU#0"}}, {{"Pull it out"}});
  play.types("1\n", {{"Pull it out"}}, kLines);
  EXPECT_EQ(behind_start(play), "wait \"Pull it out\"\nspbox pull /PSU#0\ntype \"1\\n\"\n");
}

TEST(Playwright, LeavesOutADeedThatFailed) {
  Playwright play = begun();
  play.does({7, ToldDeed::What::kBegins, {"spbox", "pull", "/PSU#99"}}, {});
  play.does({8, ToldDeed::What::kBegins, {"spbox", "pull", "/PSU#0"}}, {});
  play.does({7, ToldDeed::What::kFailed}, {});
  play.does({9, ToldDeed::What::kFailed}, {});
  EXPECT_EQ(behind_start(play), "spbox pull /PSU#0\n");
}

TEST(Playwright, EndsAsTheCommandEnded) {
  const struct {
    terminal::Ending ending;
    const char *step;
  } rows[] = {{{false, 0}, "exit 0"},     {{false, 3}, "exit 3"},     {{false, 130}, "dies INT"},
              {{false, 255}, "exit 255"}, {{false, 128}, "exit 128"}, {{true, 9}, "dies KILL"}};
  for (const auto &row : rows) {
    Playwright play = begun();
    play.ends(row.ending, {{"All done."}});
    play.is_in_order({"/PSU#0"});
    EXPECT_EQ(behind_start(play), std::string("wait \"All done.\"\n") + row.step + "\nin_order but /PSU#0\n");
  }
}

TEST(Playwright, SaysEachEntryOfTheLogOnce) {
  Playwright play = begun();
  play.logs({});
  EXPECT_EQ(behind_start(play), "");
  play.logs({"unit replaced", "LED left", "unit replaced"});
  EXPECT_EQ(behind_start(play), "spbox log\nsays \"unit replaced\"\nsays \"LED left\"\n");
}

TEST(Playwright, IsAsPatientAsTheCommandIsSlow) {
  const struct {
    std::chrono::milliseconds waited;
    const char *step;
  } rows[] = {{3s, ""}, {5s, "patience 30\n"}, {40s, "patience 120\n"}, {2h, "patience 86400\n"}};
  for (const auto &row : rows) {
    Playwright play = begun();
    play.types("1\n", {{"Which one?"}, row.waited}, kLines);
    EXPECT_EQ(play.text(), std::string("box qa\n") + row.step + "\nstart cat\nwait \"Which one?\"\ntype \"1\\n\"\n");
  }
}

TEST(Playwright, KeepsHalfALineWhereTheLineIsCut) {
  Playwright play = begun();
  play.types("12", {{"Which one?"}}, kLines);
  play.line_is_cut({{"12"}});
  EXPECT_EQ(behind_start(play), "wait \"Which one?\"\ntype \"12\"\nhangup\n");
}

}  // namespace
