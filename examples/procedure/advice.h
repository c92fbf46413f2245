// Commands that the operator is advised to type, as they work where the operator reads them.
#pragma once

#include <cstdlib>
#include <string>
#include <string_view>

#include "lmainte_host.h"
#include "telling.h"

namespace procedure {

// A word as a shell takes it.
inline std::string shell_word(std::string_view word) {
  constexpr std::string_view kPlain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789/_.,:=+@%#-";
  if (!word.empty() && word.front() != '#' && word.find_first_not_of(kPlain) == std::string_view::npos)
    return std::string(word);
  std::string result = "'";
  for (const char letter : word) result += letter == '\'' ? "'\\''" : std::string(1, letter);
  return result + "'";
}

// The folder in which this command was found, with its slash; empty for one on the PATH. The others are there, too.
inline std::string g_folder;

inline void remember_folder(std::string_view program) {
  g_folder = program.substr(0, program.rfind('/') + 1);  // all of nothing where it has no slash
}

// The command, indented, in lines that a shell takes as one. On a service processor it is typed as it stands; a box is
// reached through `spbox run`, which says how.
inline std::string as_typed(const std::string &command) {
  constexpr const char *kGoesOn = " \\", *kIndent = "    ";
  const auto lines = [&](const std::string &words) { return folded("  " + words, kColumns, kGoesOn, kIndent); };
  const char *const way = std::getenv(LMAINTE_HOST_RUN);
  if (way == nullptr || *way == '\0') return lines(command);
  const std::string both = way + (" " + command);
  if (both.size() + 2 <= kColumns) return "  " + shown(both);
  return lines(way) + kGoesOn + "\n" + lines("  " + command);
}

// A procedure for units of a kind, such as add_unit psu.
inline std::string procedure_command(const char *name, const char *kind) {
  return shell_word(g_folder + name) + " " + kind;
}

// A control program for a unit, which mends by hand what it did not do when it was run.
inline std::string program_command(const char *program, const char *unit, const char *mode) {
  return std::string("/mgb/bin/") + program + " -u " + shell_word(unit) + " -c " + mode;
}

// What to do, and the command that does it.
inline void advise(const std::string &what, const std::string &command) {
  tell(what);
  std::puts(as_typed(command).c_str());
}

}  // namespace procedure
