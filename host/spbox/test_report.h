// The files in which `spbox test` and `spbox sweep` report.
#pragma once

#include <chrono>
#include <filesystem>
#include <span>
#include <string>

#include "host/runner/result.h"
#include "host/spbox/json.h"
#include "host/spbox/verb.h"

namespace spbox {

struct TestReports {
  std::filesystem::path junit, json;  // empty: not wanted

  Word junit_word();
  Word json_word();
};

// Before the plays, so that no result is lost. Throws UsageError for a file that cannot be written.
void check_reports(const TestReports &files);

// The same for a folder, which is made. An empty name is none.
void make_report_folder(const char *option, const std::filesystem::path &folder);

// The same for one that is made when something is put there.
void check_report_folder(const char *option, const std::filesystem::path &folder);

// Each is whole, or as it was before. False, and a sentence for the user, where one could not be written.
bool write_reports(const TestReports &files, std::span<const runner::Result> results, std::chrono::milliseconds time,
                   std::chrono::system_clock::time_point begin);

// The same of a verb whose JSON has more, or other members. The suite is called as the verb is.
bool write_reports(const TestReports &files, const std::string &suite, std::span<const runner::Result> results,
                   std::chrono::milliseconds time, std::chrono::system_clock::time_point begin, const Json &json);

}  // namespace spbox
