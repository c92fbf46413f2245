// What a script gets that gives --json: one object, whatever the verb, and however it ends.
#include <algorithm>
#include <set>

#include "host/spbox/verbs.h"
#include "tests/host/spbox/read_json.h"
#include "tests/host/spbox/spbox_test.h"

namespace {

struct Row {
  Words words;
  int status;
  const char *answer;
};

class Answer : public SpboxTest {};

TEST_F(Answer, HasWhatWasSaidOrShown) {
  const Row rows[] = {
      {{"create", "box", "--model", "qa"},
       0,
       R"({"exit_status":0,"said":["Made box: model qa, 20 units, all healthy. `spbox units box` lists them."],"verb":"create"})"},
      {{"pull", "box", "/PSU#0", "/PSU#1"},
       0,
       R"({"exit_status":0,"said":[],"units":[{"name":"/PSU#0","state":"Not installed"},{"name":"/PSU#1","state":"Not installed"}],"verb":"pull"})"},
      {{"log", "box"}, 0, R"({"entries":[],"exit_status":0,"said":[],"verb":"log"})"},
      {{"trace", "box"}, 0, R"({"exit_status":0,"records":[],"said":[],"verb":"trace"})"},
      {{"points", "box", "--count"},
       0,
       R"({"exit_status":0,"said":["The points of commands are counted from now on."],"verb":"points"})"},
      {{"deviate", "box", "log", "--refused"},
       0,
       R"({"exit_status":0,"said":["At log 1 this happens: refused.","`spbox points box --forget` lets all happen as usual."],"verb":"deviate"})"},
      {{"edit", "box", "current_psu_info", "0:80"}, 0, R"({"exit_status":0,"said":[],"verb":"edit"})"},
      {{"dump", "box", "box.dump"}, 0, R"({"exit_status":0,"said":[],"verb":"dump"})"},
  };
  for (const Row &row : rows) {
    Words words = row.words;
    words.emplace_back("--json");
    const Done done = spbox(words);
    EXPECT_EQ(done.exit_status, row.status) << done.output;
    EXPECT_EQ(ReadJson(done.output).text(), row.answer);
  }
  EXPECT_EQ(ReadJson(done({"model", "box", "unknown", "--json"})).text(),
            R"({"exit_status":0,"model":null,"said":[],"verb":"model"})");
  done({"model", "box", "qa"});
  EXPECT_TRUE(ReadJson(done({"dump", "box", "--json"}))["dump"].string().ends_with("\nend\n"));
  EXPECT_TRUE(ReadJson(done({"edit", "box", "current_psu_info", "--print", "--json"}))["dump"].string().find(
                  "record") != std::string::npos);
}

// Where standard error goes elsewhere.
TEST_F(Answer, TellsWhatFailedAsStandardErrorDoes) {
  make_box("qa");
  const Row rows[] = {
      {{"pull", "box", "/NIX#0"},
       1,
       R"({"exit_status":1,"said":["box has no unit /NIX#0 (model qa). `spbox units box` lists them."],"verb":"pull"})"},
      {{"pull", "box"},
       2,
       R"({"exit_status":2,"said":["UNIT is missing, as in `spbox pull [OPTIONS] [DIR] UNIT...`. `spbox help pull` says more."],"verb":"pull"})"},
      {{"technician", "box", "none.hands"},
       2,
       R"({"exit_status":2,"said":["none.hands: there is no such file"],"verb":"technician"})"},
      {{"create", "box", "--model", "qa"},
       1,
       R"({"exit_status":1,"said":["box is a box already. --force makes it anew, and all that it holds is lost."],"verb":"create"})"},
  };
  for (const Row &row : rows) {
    std::string line = "cd " + scratch_.path().string() + " && exec " SPBOX;
    for (const std::string &word : row.words) line += " " + word;
    const Done done = run_to_end({"/bin/sh", "-c", line + " --json 2>errors"});
    EXPECT_EQ(done.exit_status, row.status) << done.output;
    EXPECT_EQ(ReadJson(done.output).text(), row.answer);
    const Done errors = run_to_end({"/bin/cat", scratch_ / "errors"});
    EXPECT_EQ("spbox: " + ReadJson(done.output)["said"][0].string() + "\n", errors.output);
  }
}

TEST_F(Answer, IsOfEveryVerbThatDoesNotGiveItsOutputToACommand) {
  std::set<std::string> without;
  for (const spbox::Verb &verb : spbox::all_verbs()) {
    const auto is_answer = [](const spbox::Word &word) { return word.name == "--json" && word.value.empty(); };
    if (std::ranges::none_of(verb.words, is_answer)) without.insert(verb.name);
  }
  EXPECT_EQ(without, (std::set<std::string>{"play", "record", "run", "sweep", "test", "watch"}));
}

}  // namespace
