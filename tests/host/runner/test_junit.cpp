#include <gtest/gtest.h>

#include <fstream>

#include "host/runner/junit.h"
#include "tests/host/box/scratch.h"
#include "tests/run.h"

namespace {

using namespace std::chrono_literals;
using runner::Result;
using runner::Verdict;

constexpr std::chrono::system_clock::time_point kBegin{std::chrono::seconds{1'700'000'000}};

std::string report_of(const std::vector<Result> &results) {
  return runner::junit("spbox test", results, 61'005ms, kBegin);
}

// What is wrong with a report for its readers; empty: nothing.
std::string wrong_for_readers(const std::string &report) {
  const Scratch scratch;
  const auto file = (scratch / "report.xml").string();
  std::ofstream(file) << report;
  const Done done = run_to_end({XMLLINT, "--noout", "--nonet", "--schema", JUNIT, file});
  return done.exit_status == 0 ? "" : done.output;
}

std::vector<Result> one_of_each() {
  return {{"a.play", Verdict::kPassed, 1234ms, "", {}, ""},
          {"models/qa.play",
           Verdict::kFailed,
           5ms,
           "models/qa.play:3: `wait \"x\"`: it did not\n| a <screen> & more\n",
           {},
           "/tmp/qa.txt"},
          {"models/qb.play", Verdict::kUnreadable, 0ms, "models/qb.play:1: no\n", {}, ""},
          {"models/old/qc.play", Verdict::kHung, 600s, "hung\n", {}, ""},
          {"../d.play", Verdict::kDied, 1ms, "died\n", {}, ""},
          {"e.play", Verdict::kUnplayed, 0ms, "", {}, ""}};
}

TEST(Junit, HasAllPlaysInTheFormThatReadersTake) {
  EXPECT_EQ(wrong_for_readers(report_of(one_of_each())), "");
  EXPECT_EQ(wrong_for_readers(report_of({})), "");
}

TEST(Junit, IsRefusedByTheSchemaWhereItIsWrong) {
  const std::string good = report_of(one_of_each());
  for (const auto &[from, to] : {std::pair("time=\"1.234\"", "time=\"1,234\""),
                                 {"<failure ", "<failing "},
                                 {"classname=", "class="},
                                 {"a.play", "e.play"},
                                 {"&amp;", "&"}}) {
    std::string bad = good;
    bad.replace(bad.find(from), std::string(from).size(), to);
    EXPECT_NE(wrong_for_readers(bad), "") << from;
  }
}

TEST(Junit, CountsAndTells) {
  const std::string report = report_of(one_of_each());
  for (const char *part :
       {R"(<testsuites name="spbox test" tests="6" failures="1" errors="3" time="61.005">)",
        R"(errors="3" time="61.005" skipped="1" timestamp="2023-11-14T22:13:20">)",
        R"(<testcase classname="plays" name="a.play" time="1.234"/>)",
        R"(<testcase classname="models" name="qa.play" time="0.005">)",
        R"(<failure message="models/qa.play:3: `wait &quot;x&quot;`: it did not" type="failed">models/qa.play:3)",
        "\n| a &lt;screen&gt; &amp; more\nThe transcript: /tmp/qa.txt\n</failure>",
        R"(<testcase classname="models.old" name="qc.play" time="600.000">)",
        R"(<skipped message="interrupted before it began"/>)"}) {
    EXPECT_NE(report.find(part), std::string::npos) << part << "\n" << report;
  }
}

TEST(Junit, TakesAnyByte) {
  std::string bytes;
  for (int byte = 0; byte < 256; ++byte) bytes += static_cast<char>(byte);
  EXPECT_EQ(wrong_for_readers(report_of({{bytes, Verdict::kFailed, 1ms, bytes + "\xef\xbf\xbf", {}, "a\x01"}})), "");
}

}  // namespace
