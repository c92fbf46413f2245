// The verbs of spbox: each adds its part of the command line, and leaves there what it is to do.
#pragma once

#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace spbox {

// What the command line asks for; returns the exit status. May throw: the text is for the user.
using Action = std::function<int()>;

// The exit statuses of spbox's own: it could not be done, and the command line makes no sense.
inline constexpr int kFailure = 1, kUsage = 2;

// The word DIR of a verb's command line, in its place among the verb's words.
void add_box(CLI::App *verb, std::filesystem::path &box);

void add_create(CLI::App &app, Action &action);
void add_run(CLI::App &app, Action &action, const std::vector<std::string> &command);
void add_units(CLI::App &app, Action &action);
void add_show(CLI::App &app, Action &action);
void add_changes(CLI::App &app, Action &action);  // pull, insert, fault, degrade, repair
void add_break(CLI::App &app, Action &action);
void add_mend(CLI::App &app, Action &action);
void add_program(CLI::App &app, Action &action);
void add_technician(CLI::App &app, Action &action);
void add_play(CLI::App &app, Action &action);
void add_daemon(CLI::App &app, Action &action);
void add_trace(CLI::App &app, Action &action);
void add_log(CLI::App &app, Action &action);
void add_dump(CLI::App &app, Action &action);
void add_load(CLI::App &app, Action &action);

// The first thing that `spbox run` starts inside the box's root: gives the command its signals back and becomes it.
inline constexpr const char *kEnter = "enter-box";
int enter_box(int argc, char **argv);

}  // namespace spbox
