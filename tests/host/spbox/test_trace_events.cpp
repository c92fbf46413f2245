// The trace book against what the library records: in its unit tests, which leave every event that they saw in a file, and
// in its sources, which declare a block for each function.
#include <gtest/gtest.h>
#include <regex.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/spbox/text.h"
#include "host/spbox/trace/phrases.h"
#include "host/spbox/trace_book.h"
#include "tests/host/box/scratch.h"
#include "tests/run.h"

namespace {

namespace fs = std::filesystem;
using spbox::hexadecimal;

constexpr std::uint32_t kErrorBits[] = {0x1000, 0x3000};  // of the plain and the second space

box::TraceEntry entry_of(std::uint32_t event, std::uint32_t words = 2) {
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

// A function's block in a source of the library: "second_block(0x022, 8)".
struct Block {
  fs::path file;
  std::uint32_t first;
};

std::string text_of(const fs::path &file) {
  std::ifstream in(file);
  return {std::istreambuf_iterator<char>(in), {}};
}

std::vector<fs::path> sources() {
  std::vector<fs::path> files;
  for (const auto &at : fs::recursive_directory_iterator(SOURCES)) {
    if (at.path().extension() == ".cpp") files.push_back(at.path());
  }
  return files;
}

// What a match of a pattern consists of: the whole, then its groups; empty where one has no part in it.
using Match = std::vector<std::string>;

std::vector<Match> matches(const std::string &text, const char *pattern) {
  regex_t compiled;
  if (regcomp(&compiled, pattern, REG_EXTENDED) != 0) throw std::runtime_error(std::string("no pattern: ") + pattern);
  std::vector<Match> all;
  std::array<regmatch_t, 5> groups{};
  for (const char *rest = text.c_str(); regexec(&compiled, rest, groups.size(), groups.data(), 0) == 0;
       rest += groups[0].rm_eo) {
    Match &match = all.emplace_back();
    for (const regmatch_t &group : groups)
      match.push_back(group.rm_so < 0 ? "" : std::string(rest + group.rm_so, rest + group.rm_eo));
  }
  regfree(&compiled);
  return all;
}

std::uint32_t number_in(const std::string &digits, int base = 10) {
  return static_cast<std::uint32_t>(std::stoul(digits, nullptr, base));
}

std::vector<Block> declared_in(const fs::path &file, const std::string &text) {
  constexpr char kPattern[] = R"((plain|second)_block\(0x([0-9A-F]{3})(, ([0-9]+))?\))";
  std::vector<Block> blocks;
  for (const Match &found : matches(text, kPattern)) {
    const std::uint32_t space = found[1] == "second" ? 0x8000 : 0;
    const std::uint32_t first = found[4].empty() ? 0 : number_in(found[4]);
    blocks.push_back({file, 0x110C0000 + space + number_in(found[2], 16) * 16 + first});
  }
  return blocks;
}

std::vector<Block> declared() {
  std::vector<Block> all;
  for (const fs::path &file : sources()) {
    const auto blocks = declared_in(file, text_of(file));
    all.insert(all.end(), blocks.begin(), blocks.end());
  }
  return all;
}

struct Number {
  std::uint32_t number;
  bool is_error;
};

// The numbers of events that stand in a source, whichever of its functions they are of.
std::vector<Number> numbers_in(const std::string &text) {
  constexpr char kPlain[] = R"(\b(point|error|system_error)\((Level::k[A-Za-z]+, )?([0-9]+))";
  constexpr char kOfFrames[] = R"(\.(open|lock|unlock|close|show|remove|name) = ([0-9]+)|is_given\(call, ([0-9]+))";
  constexpr char kJudged[] = R"(judge\(call, kOperation, ([0-9]+), ([0-9]+))";
  std::vector<Number> numbers;
  for (const Match &found : matches(text, kPlain)) numbers.push_back({number_in(found[3]), found[1] != "point"});
  for (const Match &found : matches(text, kOfFrames)) {
    numbers.push_back({number_in(found[2].empty() ? found[3] : found[2]), true});
  }
  for (const Match &found : matches(text, kJudged)) {
    numbers.push_back({number_in(found[1]), false});
    numbers.push_back({number_in(found[2]), true});
  }
  return numbers;
}

bool is_known(const Block &block, const Number &number) {
  const bool is_second = (block.first & 0x8000) != 0;
  const std::uint32_t bits = number.is_error ? kErrorBits[is_second ? 1 : 0] : 0;
  return spbox::words_of(entry_of(block.first + bits + number.number)).is_known;
}

std::vector<spbox::Function> all_functions() {
  std::vector<spbox::Function> all;
  for (const spbox::Functions room :
       {spbox::frame_functions(), spbox::db_functions(), spbox::model_functions(), spbox::inventory_functions(),
        spbox::ops_functions(), spbox::dialogue_functions(), spbox::state_functions()}) {
    all.insert(all.end(), room.begin(), room.end());
  }
  return all;
}

std::uint32_t event_of(const spbox::Function &function, const spbox::Phrase &phrase, std::uint32_t from) {
  const std::uint32_t number = function.block * 16 + function.first + phrase.number + from;
  const std::uint32_t error = phrase.is_error ? kErrorBits[function.space == spbox::Space::kSecond ? 1 : 0] : 0;
  return 0x110C0000 + static_cast<std::uint32_t>(function.space) + error + number;
}

TEST(TraceEvents, EveryFunctionOfTheLibraryIsInTheBook) {
  const auto blocks = declared();
  ASSERT_GT(blocks.size(), 80U);
  for (const Block &block : blocks) {
    const auto entry = spbox::words_of(entry_of(block.first));
    EXPECT_EQ(entry.event, "entry") << block.file << ": no function of the book begins at " << hexadecimal(block.first);
    EXPECT_EQ(spbox::words_of(entry_of(block.first + 1)).event, "exit") << block.file;
  }
}

TEST(TraceEvents, EveryFunctionOfTheBookIsInTheLibrary) {
  std::set<std::uint32_t> firsts;
  for (const Block &block : declared()) firsts.insert(block.first);
  for (const spbox::Function &function : all_functions()) {
    EXPECT_TRUE(firsts.contains(event_of(function, spbox::point(0, ""), 0))) << function.name;
  }
}

TEST(TraceEvents, EveryEventHasAPhraseAndEveryValueAMeaning) {
  ASSERT_GT(recorded().size(), 100U);
  for (const auto &[event, words] : recorded()) {
    const spbox::TraceLine line = spbox::words_of(entry_of(event, words));
    EXPECT_TRUE(line.is_known) << line.function << ": " << line.event;
    for (const spbox::TraceValue &value : line.values) {
      EXPECT_NE(value.meaning, "value") << line.function << ": " << line.event;
    }
  }
}

// What no unit test brings about stands in a source all the same.
TEST(TraceEvents, EveryNumberInASourceHasAPhraseInOneOfItsFunctions) {
  std::size_t seen = 0;
  for (const fs::path &file : sources()) {
    const std::string text = text_of(file);
    const auto blocks = declared_in(file, text);
    if (blocks.empty()) continue;  // helpers of several functions
    for (const Number &number : numbers_in(text)) {
      EXPECT_TRUE(std::ranges::any_of(blocks, [&](const Block &block) { return is_known(block, number); }))
          << file << ": " << (number.is_error ? "error " : "point ") << number.number;
      ++seen;
    }
  }
  EXPECT_GT(seen, 200U);
}

}  // namespace
