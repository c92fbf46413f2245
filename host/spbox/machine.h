// A command that is a program of another machine, which is emulated: --machine. The control programs, the shell and whatever else is
// the workstation's run as ever.
#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "host/spbox/verb.h"

namespace spbox {

struct Machine {
  std::filesystem::path emulator;
  std::filesystem::path libraries;                        // of the machine
  std::map<std::string, std::filesystem::path> programs;  // of the machine, that the PATH has, by name
  std::string socket;                                     // on which its platform is reached, among the daemons'
  std::filesystem::path links;                            // made by make_links
};

// How the name of such a socket begins.
inline constexpr const char *kPlatformSocket = "platform.";

class MachineOption {
 public:
  Word word();
  std::vector<std::string> words() const;  // the option as it was given, for another spbox

  // None where the option was not given. Throws where something is missing that the machine's programs need.
  std::optional<Machine> machine() const;
  // Throws UsageError there: for who starts many commands, before the first one.
  void check_is_installed() const;

 private:
  std::string name_;
};

// Whether a program is the service processor's, and none of this machine.
bool is_of_target(const std::filesystem::path &program);

// The words of a command as they were typed, of those with which a process was started: the emulator's, perhaps.
std::vector<std::string> words_on_machine(std::vector<std::string> words);

// The program of a command, as far as it is found: the machine's, where it has one of that name.
std::filesystem::path program_of(const std::string &name, const std::optional<Machine> &machine);

// Why a command of a box cannot be this program: a sentence. Empty where nothing is against it.
std::string why_refused(const std::filesystem::path &program, bool is_on_machine);

// Throws BoxError where the command of a box cannot be run. The box has programs of its own, which are not seen from here.
void check_command(const std::string &name, const std::optional<Machine> &machine);

// The programs' names, as links in this folder: the root of a command shows it. bwrap takes no more than a few thousand words.
void make_links(Machine &machine, const std::filesystem::path &folder);  // throws

// What of it is seen in the root of a command, as arguments of bwrap.
std::vector<std::string> machine_arguments(const Machine &machine);

// The folder in the root where the machine's programs are found by name, by whoever starts one: in front of the PATH.
inline constexpr const char *kCommandsInside = "/mgb/lib/commands";

// Inside. Whether this process was started by the name of a program of the machine; then it becomes that program.
bool is_program_of_machine();
int become_program_of_machine(char **argv);

// Inside. Becomes the command, on its machine. Returns where it cannot be that: a sentence that says why; an empty one where it is
// for the system to say, which has set errno.
std::string become_command(char **command);

}  // namespace spbox
