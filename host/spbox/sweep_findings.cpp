#include "host/spbox/sweep_findings.h"

#include <algorithm>
#include <cctype>
#include <system_error>

#include "host/base/read_all.h"
#include "host/base/shown.h"
#include "host/runner/judge.h"
#include "host/spbox/standard_output.h"
#include "host/spbox/whole_file.h"

namespace spbox {
namespace {

namespace fs = std::filesystem;

// "log 1: refused" as a file is called: "log_1_refused".
std::string as_file_name(const std::string &text) {
  constexpr std::size_t kLongest = 100;
  std::string name;
  for (const char c : text.substr(0, kLongest)) {
    const bool is_plain = std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '.';
    if (is_plain || !name.ends_with('_')) name += is_plain ? c : '_';
  }
  return name;
}

std::string key_of(const sweep::Fault &fault, const std::string &otherwise) {
  return otherwise + ": " + fault.what;
}

}  // namespace

bool SweepFindings::has(const sweep::Fault &fault, const std::string &otherwise) const {
  return std::ranges::find(findings_, key_of(fault, otherwise), &Finding::fault) != findings_.end();
}

void SweepFindings::keep(const sweep::Fault &fault, const sweep::Outcome &outcome, const std::string &name,
                         const std::string &otherwise) {
  const std::string key = key_of(fault, otherwise);
  const auto known = std::ranges::find(findings_, key, &Finding::fault);
  if (known != findings_.end()) {
    ++known->replays;
    return;
  }
  const std::string text =
      sweep::finding_of("A sweep of " + script_.filename().string() + ": " + name + ".", outcome, fault);
  findings_.push_back({key, file_for(name, text), static_cast<std::size_t>(std::ranges::count(text, '\n'))});
  Finding &finding = findings_.back();
  try {
    fs::create_directories(finding.play.parent_path());
    write_whole_file(finding.play, text);
  } catch (const std::system_error &error) {
    finding.unwritten = error.code().message();
    finding.text = text;
  }
}

// Named after what was otherwise, so that the shares of a sweep can write into one folder. A play that somebody keeps there stays.
fs::path SweepFindings::file_for(const std::string &name, const std::string &text) const {
  const auto is_taken = [&](const fs::path &file) {
    std::error_code unknown;
    return std::ranges::find(findings_, file, &Finding::play) != findings_.end() ||
           (fs::exists(file, unknown) && base::text_if_readable(file.c_str()) != text);
  };
  const std::string stem = as_file_name(name);
  fs::path file = folder_ / (stem + ".play");
  for (int other = 2; is_taken(file); ++other) file.replace_filename(stem + "_" + std::to_string(other) + ".play");
  return file;
}

// Whether it fails at its last line, which is what it shows.
SweepFindings::Finding::Alone SweepFindings::alone_of(const runner::JobEnding &ending, const runner::PoolRules &rules,
                                                      const Finding &finding) {
  if (ending.interrupted) return Finding::Alone::kUntried;
  const runner::Result result = runner::judge(ending, rules.limit);
  const bool is_there = result.account.place.ends_with(":" + std::to_string(finding.lines));
  return result.verdict == runner::Verdict::kFailed && is_there ? Finding::Alone::kFails : Finding::Alone::kPasses;
}

void SweepFindings::play_again(const std::vector<std::string> &options, const runner::PoolRules &rules) {
  std::vector<runner::Job> jobs;
  std::vector<Finding *> written;
  for (Finding &finding : findings_) {
    if (!finding.unwritten.empty()) continue;
    written.push_back(&finding);
    std::vector<std::string> words{fs::read_symlink("/proc/self/exe"), "play", "--account-fd", "3"};
    words.insert(words.end(), options.begin(), options.end());
    if (!pages_.empty()) words.insert(words.end(), {"--report", page_of(finding)});
    words.insert(words.end(), {"--", finding.play.string()});
    jobs.push_back({finding.play.string(), std::move(words)});
  }
  run_side_by_side(
      jobs, rules,
      {.begins = [](std::size_t) {},
       .ends = [&](std::size_t job,
                   const runner::JobEnding &ending) { written[job]->alone = alone_of(ending, rules, *written[job]); },
       .second_passes = [] {}});
}

std::string SweepFindings::page_of(const Finding &finding) const {
  return (pages_ / finding.play.filename().replace_extension(".html")).string();
}

void SweepFindings::tell() const {
  if (findings_.empty()) return;
  print_line("");
  print_line("Findings, each with a play that shows it:");
  for (const Finding &finding : findings_) {
    print_line(base::shown(finding.play.string()) + "  (" + std::to_string(finding.replays) +
               (finding.replays == 1 ? " replay)" : " replays)"));
    print_line("    " + finding.fault);
    if (!finding.unwritten.empty()) {
      print_line("    This play could not be written: " + finding.unwritten + ". It stands here:");
      print_line("");
      print(finding.text);
    } else if (finding.alone == Finding::Alone::kPasses) {
      print_line("    Played alone, this play did not fail there.");
    }
    if (!pages_.empty() && fs::exists(page_of(finding))) {
      print_line("    " + base::shown(page_of(finding)) + " shows it step by step.");
    }
  }
}

Json SweepFindings::json() const {
  Json::List list;
  for (const Finding &finding : findings_) {
    const bool is_tried = finding.alone != Finding::Alone::kUntried;
    list.push_back(Json::Object{{"fault", finding.fault},
                                {"play", finding.play.string()},
                                {"replays", finding.replays},
                                {"fails_alone", is_tried ? Json(finding.alone == Finding::Alone::kFails) : Json()}});
  }
  return list;
}

}  // namespace spbox
