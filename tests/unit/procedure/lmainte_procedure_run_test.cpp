// The words on the command line of a procedure.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdio_ext.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "include/lmainte_procedure.h"
#include "tests/unit/doubles/library_test.h"

namespace {

const lmainte_step kNoSteps[] = {nullptr};
constexpr char kKinds[] = "usage: try_unit [KIND], where KIND is one of: cmu iou fan psu ddc\n";

int32_t run(const char *kind, std::vector<std::string> words) {
  const lmainte_procedure procedure = {.name = "try_unit",
                                       .verb = "try",
                                       .done = "tried",
                                       .action = LMAINTE_ACTION_NONE,
                                       .steps = kNoSteps,
                                       .kind = kind};
  std::vector<char *> argv;
  for (std::string &word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  return lmainte_procedure_run(&procedure, static_cast<int>(words.size()), argv.data());
}

TEST(ProcedureRun, SaysHowItIsCalled) {
  EXPECT_EQ(doubles::printed_by([] {
              EXPECT_EQ(run(nullptr, {"./try_unit", "--help"}), LMAINTE_OUTCOME_DONE);
            }),
            kKinds);
  EXPECT_EQ(doubles::printed_by([] {
              EXPECT_EQ(run("fan", {"./try_unit", "--help"}), LMAINTE_OUTCOME_DONE);
            }),
            "usage: try_unit\n");
}

TEST(ProcedureRun, FailsWhereNobodyCanReadHowItIsCalled) {
  const int before = dup(STDOUT_FILENO);
  const int full = open("/dev/full", O_WRONLY);
  fflush(stdout);
  dup2(full, STDOUT_FILENO);
  testing::internal::CaptureStderr();
  EXPECT_EQ(run(nullptr, {"try_unit", "--help"}), LMAINTE_OUTCOME_FAILED);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "try_unit: the output cannot be written: No space left on device.\n");
  __fpurge(stdout);
  dup2(before, STDOUT_FILENO);
  for (const int fd : {before, full}) close(fd);
}

TEST(ProcedureRun, RefusesWordsThatMakeNoSense) {
  const struct {
    const char *kind;
    std::vector<std::string> words;
    const char *usage;
  } rows[] = {{nullptr, {"try_unit", "panel"}, kKinds},
              {nullptr, {"try_unit", ""}, kKinds},
              {nullptr, {"try_unit", "psu", "fan"}, kKinds},
              {"fan", {"try_unit", "fan"}, "usage: try_unit\n"},
              {"wing", {"try_unit"}, "try_unit: its kind of unit is none of them.\n"}};
  for (const auto &row : rows) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(run(row.kind, row.words), LMAINTE_OUTCOME_FAILED) << row.words.back();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), row.usage) << row.words.back();
  }
}

TEST(ProcedureRun, RefusesAProcedureThatLacksSomething) {
  constexpr char kSentence[] = "a procedure has a name, a verb, a word for done, and steps.\n";
  const lmainte_procedure whole = {
      .name = "try_unit", .verb = "try", .done = "tried", .action = LMAINTE_ACTION_NONE, .steps = kNoSteps};
  std::vector<lmainte_procedure> lacking(6, whole);
  lacking[0].name = nullptr;
  lacking[1].verb = nullptr;
  lacking[2].done = nullptr;
  lacking[3].steps = nullptr;
  lacking[4].verb = "";
  lacking[5].done = "";
  char word[] = "try_unit";
  char *argv[] = {word, nullptr};
  for (const lmainte_procedure &procedure : lacking) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(lmainte_procedure_run(&procedure, 1, argv), LMAINTE_OUTCOME_FAILED);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              std::string(procedure.name == nullptr ? "lmainte_procedure_run: " : "try_unit: ") + kSentence);
  }
}

TEST(ProcedureRun, RefusesWhatItCannotKnow) {
  lmainte_procedure later = {
      .name = "try_unit", .verb = "try", .done = "tried", .action = LMAINTE_ACTION_NONE, .steps = kNoSteps};
  later.reserved[7] = "a field of a later version";
  char word[] = "try_unit";
  char *argv[] = {word, nullptr};
  testing::internal::CaptureStderr();
  EXPECT_EQ(lmainte_procedure_run(&later, 1, argv), LMAINTE_OUTCOME_FAILED);
  EXPECT_EQ(lmainte_procedure_run(nullptr, 1, argv), LMAINTE_OUTCOME_FAILED);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "try_unit: what is reserved in it is not cleared.\nlmainte_procedure_run: there is no procedure.\n");
}

TEST(ProcedureRun, KeepsTheSizeOfAProcedure) {
  EXPECT_EQ(sizeof(lmainte_procedure), sizeof(void *) == 4 ? 60u : 120u);
}

}  // namespace
