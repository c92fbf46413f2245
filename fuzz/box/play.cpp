// Scripts of plays. One that makes no sense is refused in words that name it; of one that is taken, each step has the words
// that its row asks for, and its text stands for the same words again.
#include "fuzz/box/targets.h"
#include "host/play/plan.h"

namespace fuzz {
namespace {

void check_step(const play::Step &step) {
  if (step.row == nullptr || step.row->perform == nullptr) return require(false, "every step can be played");
  require(step.words.size() >= step.row->fewest && step.words.size() <= step.row->most,
          "a step has as many words as its row asks for: " + step.text);
}

// The statements of a script of quotes, read again from their texts.
void check_statements(const std::string &script) {
  script::Reader statements(script, "input", {.has_quotes = true, .has_semicolons = false});
  refusal_of<script::Error>("a script", [&] {
    while (const auto statement = statements.next()) {
      script::Reader again(statement->text, "again", {.has_quotes = true, .has_semicolons = false});
      const auto same = again.next();
      require(same && same->words == statement->words && !again.next(),
              "the text of a statement stands for its words: " + statement->text);
    }
  });
}

}  // namespace

void run_play(Input input) {
  const auto file = scratch() / "input.play";
  write_file(file, text_of(input));
  std::vector<play::Step> steps;
  const std::string refusal = refusal_of<script::Error>("a play", [&] {
    const play::Verbs verbs{{"pull", "insert", "show", "log", "trace"}, [](const play::Words &) {}};
    steps = play::read_plan(file, {{"A", "1"}, {"unit", "/PSU#0"}}, verbs);
  });
  require(refusal.empty() || refusal.find(file.string()) != std::string::npos,
          "a refusal names the script: " + refusal);
  for (const play::Step &step : steps) check_step(step);
  check_statements(text_of(input));
}

}  // namespace fuzz
