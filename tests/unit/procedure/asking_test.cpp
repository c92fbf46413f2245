// What the operator is asked, and how often.

#include <gtest/gtest.h>

#include <string>

#include "include/lmainte_procedure.h"
#include "tests/unit/doubles/library_test.h"

namespace {

using doubles::machine;
using doubles::printed_by;

class Asking : public doubles::LibraryTest {};

TEST_F(Asking, ForNothingIsSaidToTheOperator) {
  for (const int32_t count : {0, -1}) {
    int32_t choice = 7;
    EXPECT_EQ(printed_by([&] {
                EXPECT_EQ(lmainte_choose(count, &choice, "Which?"), LMAINTE_OUTCOME_FAILED);
                EXPECT_EQ(lmainte_choose_behind_table(count, &choice, "Which?"), LMAINTE_OUTCOME_FAILED);
              }),
              "There is nothing to choose from.\nThere is nothing to choose from.\n");
    EXPECT_EQ(choice, 7);
  }
  EXPECT_TRUE(machine().asked.empty());
}

TEST_F(Asking, AgainRepeatsAllOfALongQuestion) {
  machine().meanwhile = [](const std::string & /*call*/) {
    machine().answer = machine().asked.empty() ? LMAINTE_ASK_INTERRUPTED : LMAINTE_ASK_CHOSEN;
  };
  std::string above;
  for (int i = 0; i < 20; ++i) above += std::string(70, 'a') + "\n";
  int32_t choice = 0;
  const std::string printed =
      printed_by([&] { EXPECT_EQ(lmainte_choose(2, &choice, "%sWhich? ", above.c_str()), LMAINTE_OUTCOME_DONE); });
  EXPECT_EQ(printed, above + "\n" + above + "\n");
  ASSERT_EQ(machine().asked.size(), 2u);
  for (const auto &asked : machine().asked) EXPECT_EQ(asked.prompt, "Which? ");
}

}  // namespace
