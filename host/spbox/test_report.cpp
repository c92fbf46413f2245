#include "host/spbox/test_report.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <iterator>
#include <system_error>

#include "host/base/descriptor.h"
#include "host/base/told.h"
#include "host/runner/junit.h"
#include "host/spbox/json.h"
#include "host/spbox/standard_output.h"
#include "host/spbox/verb.h"
#include "host/spbox/whole_file.h"

namespace spbox {
namespace {

namespace fs = std::filesystem;
using std::chrono::milliseconds;

Json json_of_screens(const runner::Result &result) {
  Json::List screens;
  for (const auto &screen : result.account.screens) {
    auto end = screen.rows.end();
    while (end != screen.rows.begin() && std::prev(end)->empty()) --end;
    screens.emplace_back(Json::Object{{"caption", screen.caption}, {"rows", Json::List(screen.rows.begin(), end)}});
  }
  return screens;
}

// Of what passed, there is no more to tell.
Json json_of_result(const runner::Result &result) {
  Json::Object members{{"name", result.name},
                       {"result", row_of(result.verdict).word},
                       {"milliseconds", result.time.count()},
                       {"transcript", result.transcript.empty() ? Json() : Json(result.transcript.string())}};
  if (!result.reason.empty()) {
    const auto &left = result.account.left;
    members.push_back({"place", result.account.place});
    members.push_back({"step", result.account.step});
    members.push_back({"reason", result.reason});
    members.push_back({"left", Json::List(left.begin(), left.end())});
    members.push_back({"screens", json_of_screens(result)});
  }
  return members;
}

Json json_report(std::span<const runner::Result> results, milliseconds time) {
  Json::List plays;
  for (const runner::Result &result : results) plays.push_back(json_of_result(result));
  const Json::Object report{{"plays", plays},
                            {"passed", count(results, runner::Verdict::kPassed)},
                            {"wrong", std::ranges::count_if(results, runner::is_wrong, &runner::Result::verdict)},
                            {"unplayed", count(results, runner::Verdict::kUnplayed)},
                            {"milliseconds", time.count()}};
  return report;
}

// Rights alone do not tell: nobody makes a file in /proc.
int error_of_new_file_in(const fs::path &folder) {
  std::string name = (folder / ".spbox.XXXXXX").string();
  const base::Descriptor file(mkostemp(name.data(), O_CLOEXEC));
  if (file.get() < 0) return errno;
  unlink(name.c_str());
  return 0;
}

// As write_whole_file does it: a new file beside it takes its place.
int error_at(const fs::path &file) {
  std::error_code error;
  const fs::path folder = file.has_parent_path() ? file.parent_path() : fs::path(".");
  if (fs::is_directory(file, error)) return EISDIR;
  if (fs::exists(file, error) && access(file.c_str(), W_OK) != 0) return errno;
  const bool needs_folder = !fs::exists(file, error) || fs::is_regular_file(file, error);
  return needs_folder ? error_of_new_file_in(folder) : 0;
}

void check_report(const char *option, const fs::path &file) {
  const int error = file.empty() ? 0 : error_at(file);
  if (error == 0) return;
  throw UsageError(std::string(option) + ": " + file.string() +
                   " cannot be written: " + std::generic_category().message(error) + ". Nothing was played.");
}

// Each would take the other's place. What is no file, such as a pipe, takes both.
bool is_one_file(const fs::path &one, const fs::path &other) {
  std::error_code error;
  if (one.empty() || other.empty() || (fs::exists(one, error) && !fs::is_regular_file(one, error))) return false;
  const auto name_of = [&](const fs::path &file) { return fs::weakly_canonical(fs::absolute(file), error); };
  return (name_of(one) == name_of(other) && !error) || fs::equivalent(one, other, error);
}

void refuse_folder(const char *option, const fs::path &folder, int error) {
  if (error == 0) return;
  throw UsageError(std::string(option) + ": nothing can be written into " + folder.string() + ": " +
                   std::generic_category().message(error) + ". Nothing was played.");
}

bool write_report(const fs::path &file, const std::string &text) {
  if (file.empty()) return true;
  try {
    write_whole_file(file, text);
    return true;
  } catch (const std::exception &error) {
    complain("the report " + file.string() + " cannot be written: " + base::told(error) + ".");
    return false;
  }
}

}  // namespace

Word TestReports::junit_word() {
  return {.name = "--junit", .help = "Report there what became of each, for CI servers", .to = &junit, .value = "FILE"};
}

Word TestReports::json_word() {
  return {.name = "--json", .help = "The same for scripts", .to = &json, .value = "FILE"};
}

void check_reports(const TestReports &files) {
  check_report("--junit", files.junit);
  check_report("--json", files.json);
  if (!is_one_file(files.junit, files.json)) return;
  throw UsageError("--junit and --json: " + files.json.string() +
                   " cannot hold both reports. Give each a file of its own. Nothing was played.");
}

void make_report_folder(const char *option, const fs::path &folder) {
  if (folder.empty()) return;
  std::error_code error;
  fs::create_directories(folder, error);
  refuse_folder(option, folder, error ? error.value() : error_of_new_file_in(folder));
}

void check_report_folder(const char *option, const fs::path &folder) {
  std::error_code error;
  fs::path there = fs::absolute(folder);
  while (!fs::exists(there, error) && there.has_relative_path()) there = there.parent_path();
  refuse_folder(option, folder, fs::is_directory(there, error) ? error_of_new_file_in(there) : ENOTDIR);
}

bool write_reports(const TestReports &files, const std::string &suite, std::span<const runner::Result> results,
                   milliseconds time, std::chrono::system_clock::time_point begin, const Json &json) {
  const bool has_junit = write_report(files.junit, runner::junit(suite, results, time, begin));
  return write_report(files.json, json.text()) && has_junit;
}

bool write_reports(const TestReports &files, std::span<const runner::Result> results, milliseconds time,
                   std::chrono::system_clock::time_point begin) {
  return write_reports(files, "spbox test", results, time, begin, json_report(results, time));
}

}  // namespace spbox
