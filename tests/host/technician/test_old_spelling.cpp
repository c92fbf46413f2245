#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "host/technician/trace_condition.h"

namespace {

// Each event as `spbox trace` worded it when events had no names: "110C0693 lmainte_exec (termination) a signal was sent".
// No line of this list ever changes. Where the trace book gets a better phrase, host/technician/old_spelling.cpp takes the old one.
TEST(OldSpelling, IsUnderstoodForEachEventOfTheTrace) {
  std::ifstream list(OLD_SPELLING);
  std::size_t count = 0;
  for (std::string line; std::getline(list, line); ++count) {
    std::istringstream words(line);
    std::uint32_t event = 0;
    words >> std::hex >> event;
    const script::Words condition{std::istream_iterator<std::string>(words), {}};
    try {
      EXPECT_TRUE(technician::TraceCondition(condition).is_met_by(event)) << line;
    } catch (const std::invalid_argument &wrong) {
      ADD_FAILURE() << line << ": " << wrong.what();
    }
  }
  EXPECT_EQ(count, 649U);
}

TEST(OldSpelling, TakesAStepInBracketsAlone) {
  const technician::TraceCondition condition({"lmainte_exec", "(termination)"});
  EXPECT_TRUE(condition.is_met_by(0x110C0690));
  EXPECT_TRUE(condition.is_met_by(0x110C0693));
  EXPECT_FALSE(condition.is_met_by(0x110C0020)) << "of lmainte_exec itself";
}

TEST(OldSpelling, DoesNotTakeAStepThatNeverWas) {
  EXPECT_THROW(technician::TraceCondition({"lmainte_exec", "(start)"}), std::invalid_argument);
  EXPECT_THROW(technician::TraceCondition({"lmainte_exec", "(termination"}), std::invalid_argument);
}

}  // namespace
