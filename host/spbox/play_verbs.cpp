#include "host/spbox/play_verbs.h"

#include <algorithm>
#include <filesystem>

#include "host/play/layout.h"
#include "host/spbox/command_line.h"
#include "host/spbox/verbs.h"

namespace spbox {
namespace {

// The words of a step `spbox`, in which the verb's DIR does not stand.
void check_step(const play::Words &words) {
  constexpr const char *kAnyBox = "box";
  auto verbs = all_verbs();
  Verb &verb = *std::find_if(verbs.begin(), verbs.end(), [&](const Verb &known) { return known.name == words[0]; });
  *std::get<std::filesystem::path *>(verb.words.front().to) = kAnyBox;
  verb.words.erase(verb.words.begin());
  try {
    read_line(verb, {words.begin() + 1, words.end()});
  } catch (const UsageError &wrong) {
    throw std::invalid_argument(play::as_steps(wrong.what(), kAnyBox));
  }
}

}  // namespace

play::Verbs verbs_that_work_on_box() {
  play::Verbs verbs{{}, check_step};
  for (const Verb &verb : all_verbs()) {
    if (verb.works_on_box) verbs.names.push_back(verb.name);
  }
  return verbs;
}

}  // namespace spbox
