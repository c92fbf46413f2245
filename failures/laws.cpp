#include "failures/laws.h"

#include <regex>
#include <set>
#include <sstream>

namespace failures {
namespace {

using Sentences = std::vector<std::string>;

// How words come to people that were meant for programmers.
constexpr const char *kNotForPeople[] = {"terminate called", "std::",   "bad_alloc",
                                         "basic_",           "what():", "filesystem error"};

void look_at_words(const Run &run, const Line &line, Sentences &broken) {
  std::multiset<std::string> told;
  std::istringstream lines(run.error);
  for (std::string text; std::getline(lines, text);) {
    if (text.starts_with("spbox: ") || line.tells_more) told.insert(text);
  }
  if (run.error.empty()) broken.emplace_back("it fails without a word");
  if (!run.error.empty() && told.empty()) broken.emplace_back("what failed is not told by spbox");
  for (const std::string &text : told) {
    if (told.count(text) > 1 || (told.size() > 1 && !line.tells_more)) {
      broken.push_back("it tells more than once what failed: " + text);
      return;
    }
  }
}

// Without the moments that it tells.
std::string timeless(const std::string &text) {
  static const std::regex kTime(" +[0-9]+\\.[0-9] s");
  return std::regex_replace(text, kTime, " 0 s");
}

void look_at_status(const Run &run, const State &now, const Good &good, Sentences &broken) {
  if (*run.status == 0) {
    if (timeless(run.output) != timeless(good.output))
      broken.emplace_back("it says that all is done, and has printed something else");
    if (now.contents != good.after.contents) broken.emplace_back("it says that all is done, and it is not");
    return;
  }
  if (*run.status >= 128) broken.push_back("it dies of signal " + std::to_string(*run.status - 128));
}

// An empty folder may stay where removing it failed as well.
void look_for_files(const State &now, const State &as_it_should_be, const Failure &failure, Sentences &broken) {
  for (const std::string &file : now.files) {
    if (as_it_should_be.files.contains(file)) continue;
    if (file == "new" && failure.lasting != Failure::Lasting::kOnce && !now.files.contains("new/.making")) continue;
    broken.push_back("a file is left: " + file);
  }
  for (const std::string &file : as_it_should_be.files) {
    if (!now.files.contains(file)) broken.push_back("a file is gone: " + file);
  }
}

}  // namespace

Sentences broken_by(const Run &run, const Line &line, const Scene &scene, const State &now, const Good &good,
                    const Failure &failure) {
  Sentences broken;
  for (const std::string &number : run.unknown) broken.push_back("the call " + number + " has no row in calls.cpp");
  for (const std::string &process : run.left) broken.push_back("a process is left: " + process);
  if (!run.status) {
    broken.emplace_back("it does not end");
    return broken;
  }
  look_at_status(run, now, good, broken);
  const bool is_old = now.contents == scene.before().contents, is_new = now.contents == good.after.contents;
  if (!is_old && !is_new) broken.emplace_back("the box is neither the old one nor the new one");
  const bool says_so = run.error.find("the output cannot be written") != std::string::npos ||
                       run.error.find("The next spbox makes it to the end") != std::string::npos;
  if (*run.status != 0 && !is_old && is_new && !says_so && !run.was_silenced) {
    broken.emplace_back("it says that it failed, and all is done");
  }
  if (*run.status != 0 && !run.was_silenced) look_at_words(run, line, broken);
  for (const char *const words : kNotForPeople) {
    if (run.error.find(words) != std::string::npos) broken.push_back(std::string("it says ") + words);
  }
  // A verb that leaves the box as it is is done where it says so.
  const bool may_be_done = *run.status == 0 || says_so || (run.was_silenced && now.files == good.after.files);
  const bool is_done = is_new && (!is_old || may_be_done);
  look_for_files(now, is_done ? good.after : scene.before(), failure, broken);
  return broken;
}

}  // namespace failures
