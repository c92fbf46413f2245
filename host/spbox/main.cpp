// spbox: a service processor in a folder, for people.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "host/spbox/help.h"
#include "host/spbox/text.h"
#include "host/spbox/verbs.h"

namespace {

// The verbs stand behind the examples: on a small screen, they are what stays in sight.
constexpr const char *kDescription =
    "A service processor in a folder, to run maintenance commands in and look after.\n\n"
    "  spbox create box --model qe1          a full, healthy server\n"
    "  spbox run box ./replace_unit          a maintenance command in it\n"
    "  spbox fault box /PSU#3                what a technician finds ...\n"
    "  spbox pull box /PSU#3                 ... and does\n"
    "  spbox program box ctlled --exit 206   a control program that fails\n"
    "  spbox trace box --last 20             what the command left in the trace\n";
constexpr const char *kEnd =
    "`spbox VERB --help` says more. Exit status: 0 done, 1 it could not be done,\n"
    "2 the command line makes no sense; of `run`, the command's own.";

// The command that `run` is given, behind the box's folder and an optional "--", is nobody else's to read.
std::vector<std::string> take_command(std::vector<std::string> &arguments) {
  const auto is_option = [](const std::string &word) { return word.size() > 1 && word.front() == '-'; };
  auto at = arguments.begin() + 1;  // behind the verb
  while (at != arguments.end() && is_option(*at) && *at != "--") ++at;
  if (at != arguments.end() && *at != "--") ++at;                       // the folder
  while (at != arguments.end() && is_option(*at) && *at != "--") ++at;  // options behind it
  std::vector<std::string> command(at, arguments.end());
  arguments.erase(at, arguments.end());
  if (!command.empty() && command.front() == "--") command.erase(command.begin());
  return command;
}

void add_verbs(CLI::App &app, spbox::Action &action, const std::vector<std::string> &command) {
  spbox::add_create(app, action);
  spbox::add_run(app, action, command);
  spbox::add_units(app, action);
  spbox::add_show(app, action);
  spbox::add_changes(app, action);
  spbox::add_technician(app, action);
  spbox::add_play(app, action);
  spbox::add_program(app, action);
  spbox::add_daemon(app, action);
  spbox::add_break(app, action);
  spbox::add_mend(app, action);
  spbox::add_trace(app, action);
  spbox::add_log(app, action);
  spbox::add_dump(app, action);
  spbox::add_load(app, action);
  for (CLI::App *verb : app.get_subcommands({})) verb->group("Verbs");
  app.get_help_ptr()->group("");  // of all options, there is but --help, and the footer tells of it
}

bool has_verb(const CLI::App &app, const std::string &name) {
  const auto verbs = app.get_subcommands({});
  return std::any_of(verbs.begin(), verbs.end(), [&](const CLI::App *verb) { return verb->get_name() == name; });
}

int run(int argc, char **argv) {
  std::vector<std::string> arguments(argv + 1, argv + argc);
  const bool is_run = !arguments.empty() && arguments.front() == "run";
  const std::vector<std::string> command = is_run ? take_command(arguments) : std::vector<std::string>{};

  CLI::App app(kDescription, "spbox");
  app.require_subcommand(1);
  app.formatter(spbox::help_format());
  app.footer(kEnd);
  spbox::Action action;
  add_verbs(app, action, command);
  app.failure_message([](const CLI::App *, const CLI::Error &error) {
    return std::string("spbox: ") + error.what() + ". `spbox --help` and `spbox VERB --help` say more.\n";
  });
  const bool is_verb = arguments.empty() || arguments.front().starts_with('-') || has_verb(app, arguments.front());
  try {
    if (!is_verb) throw CLI::ValidationError("there is no verb " + arguments.front());
    std::reverse(arguments.begin(), arguments.end());  // as the parser takes them
    app.parse(arguments);
  } catch (const CLI::ParseError &error) {
    return app.exit(error) == 0 ? 0 : spbox::kUsage;
  }
  return action();
}

}  // namespace

void spbox::add_box(CLI::App *verb, std::filesystem::path &box) {
  verb->add_option("DIR", box, "Folder of the box")->required();
}

int main(int argc, char **argv) {
  try {
    if (argc > 1 && std::string_view(argv[1]) == spbox::kEnter) return spbox::enter_box(argc - 2, argv + 2);
    return run(argc, argv);
  } catch (const std::filesystem::filesystem_error &error) {
    std::fprintf(stderr, "spbox: %s: %s.\n", spbox::printable(error.path1().native()).c_str(),
                 error.code().message().c_str());
    return spbox::kFailure;
  } catch (const std::exception &error) {
    std::fflush(stdout);
    std::fprintf(stderr, "spbox: %s\n", spbox::printable(error.what()).c_str());
    return spbox::kFailure;
  }
}
