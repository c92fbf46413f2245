// The trace book against what the library records in its unit tests, which leave every event that they saw in a file.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

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

// A trace point that a unit test saw, as the tests' doubles keep it.
struct Kept {
  std::uint32_t event, words, line, module;
};

std::vector<Kept> kept_by(const std::string &program) {
  const Scratch scratch;
  const fs::path file = scratch / "kept";
  std::ofstream(file).close();
  setenv("LMAINTE_KEPT_EVENTS", file.c_str(), 1);
  // The tests of the trace itself invent events.
  const Done done = run_to_end({program, "--gtest_brief=1", "--gtest_filter=-TraceTest.*"});
  unsetenv("LMAINTE_KEPT_EVENTS");
  EXPECT_LE(done.exit_status, 1) << program << " did not run to its end; that a test fails is told elsewhere";
  std::vector<Kept> all;
  std::ifstream in(file, std::ios::binary);
  for (Kept kept{}; in.read(reinterpret_cast<char *>(&kept), sizeof kept);) all.push_back(kept);
  return all;
}

void expect_words(const std::vector<Kept> &program) {
  for (const Kept &kept : program) {
    const trace_book::TraceLine line = trace_book::words_of(entry_of(kept.event, kept.words));
    EXPECT_TRUE(line.is_known) << line.function << ": " << line.event;
    for (const trace_book::TraceValue &value : line.values) {
      EXPECT_NE(value.meaning, "value") << line.function << ": " << line.event;
    }
  }
}

// One test, because the unit tests run once more for it.
TEST(TraceEvents, HaveAPhraseAndAMeaningForEachValue) {
  std::set<std::uint32_t> events;
  std::istringstream programs(UNIT_TESTS);
  for (std::string program; programs >> program;) {
    const std::vector<Kept> kept = kept_by(program);
    expect_words(kept);
    for (const Kept &one : kept) events.insert(one.event);
  }
  EXPECT_GT(events.size(), 300U);
}

}  // namespace
