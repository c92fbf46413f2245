// spbox: a service processor in a folder, for people.
#include <csignal>
#include <exception>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "host/box/advice.h"
#include "host/script/script.h"
#include "host/spbox/act.h"
#include "host/spbox/answer.h"
#include "host/spbox/damaged_files.h"
#include "host/spbox/enter_box.h"
#include "host/spbox/help.h"
#include "host/spbox/machine.h"
#include "host/spbox/spelling.h"
#include "host/spbox/standard_output.h"
#include "host/spbox/verbs.h"

namespace {

using Words = std::vector<std::string>;

constexpr const char *kVersion = "spbox " SPBOX_VERSION "\n";

Words names_of(const std::vector<spbox::Verb> &verbs) {
  Words names{"help", "--version"};
  for (const spbox::Verb &verb : verbs) names.push_back(verb.name);
  return names;
}

const spbox::Verb &find(const std::vector<spbox::Verb> &verbs, const std::string &name) {
  for (const spbox::Verb &verb : verbs) {
    if (verb.name == name) return verb;
  }
  throw spbox::UsageError("there is no verb `" + name + "`." + spbox::did_you_mean(name, names_of(verbs)));
}

int print(const std::string &text) {
  spbox::print(text);
  return 0;
}

// `spbox help` and what else asks for no verb.
int help(const std::vector<spbox::Verb> &verbs, const Words &words) {
  if (words.size() > 1) {
    throw spbox::UsageError("`" + words[1] + "` is one word too many for " + box::advice({"help", "VERB"}) + ".");
  }
  if (words.empty() || words.front() == "help") return print(spbox::help_of_all(verbs));
  return print(spbox::help_of(find(verbs, words.front())));
}

int run(Words words) {
  const std::vector<spbox::Verb> verbs = spbox::all_verbs();
  if (words.empty())
    throw spbox::UsageError("give a verb, as in " + box::advice({"create", "box", "--model", "qe1"}) + ".");
  const std::string first = words.front();
  words.erase(words.begin());
  if (first == "--help" || first == "-h" || first == "help") return help(verbs, words);
  if (first == "--version") return print(kVersion);
  if (first.starts_with('-')) {
    throw spbox::UsageError("there is no option " + first + "." + spbox::did_you_mean(first, {"--help", "--version"}));
  }
  return spbox::act(find(verbs, first), words);
}

// Every way to fail, with its exit status. Where there is no memory, there may be none to tell it as the others are told.
int judged(const Words &words) {
  try {
    return run(words);
  } catch (const std::bad_alloc &) {
    throw;
  } catch (const spbox::UsageError &error) {
    return spbox::complain_of(error, " " + box::advice({"help"}) + " lists the verbs.", spbox::kUsage);
  } catch (const script::Error &error) {
    spbox::complain_in_lines("spbox: " + std::string(error.what()) + "\n");
    return spbox::kUsage;
  } catch (const std::filesystem::filesystem_error &error) {
    return spbox::complain_of(error, ".", spbox::kFailure);
  } catch (const std::exception &error) {
    return spbox::complain_of(error, "", spbox::kFailure);
  }
}

}  // namespace

int main(int argc, char **argv) {
  std::signal(SIGCHLD, SIG_DFL);  // where it is ignored, nobody learns how a child ended
  if (spbox::is_program_of_machine()) return spbox::become_program_of_machine(argv);
  if (argc > 1 && std::string_view(argv[1]) == spbox::kEnter) return spbox::enter_box(argc - 2, argv + 2);
  spbox::keep_standard_descriptors();
  spbox::tell_of_damaged_files();
  spbox::say_out_of_memory_at_any_end();
  try {
    const int status = judged(Words(argv + 1, argv + argc));
    return spbox::with_output_judged(spbox::with_answer(argv[1] == nullptr ? "" : argv[1], status));
  } catch (const std::bad_alloc &) {
    return spbox::out_of_memory();
  }
}
