#include "host/runner/junit.h"

#include <array>
#include <cstdio>
#include <ctime>

#include "host/base/shown.h"
#include "host/base/xml.h"

namespace runner {
namespace {

using std::chrono::milliseconds;

std::string attribute(const std::string &name, const std::string &value) {
  return " " + name + "=\"" + base::xml(base::shown(value)) + "\"";
}

std::string attribute(const std::string &name, std::size_t value) {
  return attribute(name, std::to_string(value));
}

// Readers take a decimal point, whatever the language.
std::string seconds(milliseconds time) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%lld.%03lld", static_cast<long long>(time.count() / 1000),
                static_cast<long long>(time.count() % 1000));
  return text.data();
}

// UTC, without a zone: the schemas have no place for one.
std::string time_stamp(std::chrono::system_clock::time_point time) {
  const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
  std::tm parts{};
  std::array<char, 32> text{};
  if (gmtime_r(&seconds, &parts) == nullptr) return "1970-01-01T00:00:00";
  std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S", &parts);
  return text.data();
}

std::string totals(std::span<const Result> results, milliseconds time) {
  const auto errors =
      count(results, Verdict::kUnreadable) + count(results, Verdict::kHung) + count(results, Verdict::kDied);
  return attribute("tests", results.size()) + attribute("failures", count(results, Verdict::kFailed)) +
         attribute("errors", errors) + attribute("time", seconds(time));
}

// "models" for "models/qa.play": readers group by what stands before the last point.
std::string class_of(const std::filesystem::path &name) {
  std::string text;
  for (const auto &part : name.parent_path().relative_path()) text += (text.empty() ? "" : ".") + part.string();
  return text.empty() ? "plays" : text;
}

std::string element(const Result &result) {
  const auto &row = row_of(result.verdict);
  if (row.element == nullptr) return "/>\n";
  const std::string reason = result.reason.empty() ? "interrupted before it began" : headline_of(result);
  std::string text = ">\n      <" + std::string(row.element) + attribute("message", reason);
  if (!is_wrong(result.verdict)) return text + "/>\n    </testcase>\n";
  std::string content = result.reason;
  if (!result.transcript.empty()) content += "The transcript: " + base::shown(result.transcript.string()) + "\n";
  return text + attribute("type", row.word) + ">" + base::xml(base::shown_lines(content)) + "</" + row.element +
         ">\n    </testcase>\n";
}

}  // namespace

std::string junit(const std::string &suite, std::span<const Result> results, milliseconds time,
                  std::chrono::system_clock::time_point begin) {
  std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites" + attribute("name", suite) +
                     totals(results, time) + ">\n  <testsuite" + attribute("name", suite) + totals(results, time) +
                     attribute("skipped", count(results, Verdict::kUnplayed)) +
                     attribute("timestamp", time_stamp(begin)) + ">\n";
  for (const Result &result : results) {
    const std::filesystem::path name(result.name);
    text += "    <testcase" + attribute("classname", class_of(name)) + attribute("name", name.filename().string()) +
            attribute("time", seconds(result.time)) + element(result);
  }
  return text + "  </testsuite>\n</testsuites>\n";
}

}  // namespace runner
