// The trace book against what the library records in its unit tests, which leave every event that they saw in a file.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <string>

#include "host/trace_book/trace_book.h"
#include "tests/host/box/scratch.h"
#include "tests/run.h"

namespace {

namespace fs = std::filesystem;

box::TraceEntry entry_of(std::uint32_t event, std::uint32_t words) {
  box::TraceEntry entry{};
  entry.level = 256;
  entry.event = event;
  entry.word_count = words;
  return entry;
}

// The events that the unit tests record, each with the most words that it had.
const std::map<std::uint32_t, std::uint32_t> &recorded() {
  static const auto all = [] {
    const Scratch scratch;
    const fs::path kept = scratch / "kept";
    std::ofstream(kept).close();
    setenv("LMAINTE_KEPT_EVENTS", kept.c_str(), 1);
    std::istringstream programs(UNIT_TESTS);
    for (std::string program; programs >> program;) {
      // The tests of the trace itself invent events.
      const Done done = run_to_end({program, "--gtest_brief=1", "--gtest_filter=-TraceTest.*"});
      EXPECT_LE(done.exit_status, 1) << program << " did not run to its end; that a test fails is told elsewhere";
    }
    unsetenv("LMAINTE_KEPT_EVENTS");
    std::map<std::uint32_t, std::uint32_t> events;
    std::ifstream in(kept, std::ios::binary);
    std::array<std::uint32_t, 2> pair{};
    while (in.read(reinterpret_cast<char *>(pair.data()), sizeof pair)) {
      events[pair[0]] = std::max(events[pair[0]], pair[1]);
    }
    return events;
  }();
  return all;
}

TEST(TraceEvents, EveryEventHasAPhraseAndEveryValueAMeaning) {
  ASSERT_GT(recorded().size(), 100U);
  for (const auto &[event, words] : recorded()) {
    const trace_book::TraceLine line = trace_book::words_of(entry_of(event, words));
    EXPECT_TRUE(line.is_known) << line.function << ": " << line.event;
    for (const trace_book::TraceValue &value : line.values) {
      EXPECT_NE(value.meaning, "value") << line.function << ": " << line.event;
    }
  }
}

}  // namespace
