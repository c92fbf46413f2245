#include "procedure/telling.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "include/lmainte_procedure.h"

namespace lmainte::procedure {
namespace {

constexpr size_t kFolderRoom = 1024;
char g_folder[kFolderRoom];

// A word as a shell takes it.
void add_shell_word(Text &text, std::string_view word) {
  constexpr std::string_view kPlain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789/_.,:=+@%#-";
  if (!word.empty() && word.front() != '#' && word.find_first_not_of(kPlain) == std::string_view::npos) {
    text.add(word);
    return;
  }
  text.add("'");
  for (const char &letter : word) text.add(letter == '\'' ? std::string_view("'\\''") : std::string_view(&letter, 1));
  text.add("'");
}

Text line_of(std::string_view indent, std::string_view command) {
  Text line(indent);
  line.add(command);
  return folded(line.view(), {.end = " \\", .begin = "    ", .is_shell = true});
}

void print_command(std::string_view command) {
  const char *const way = getenv(LMAINTE_PROCEDURE_WAY);
  if (way == nullptr || *way == '\0') {
    puts(line_of("  ", command).c_str());
    return;
  }
  const Text both = text_of("  %s %.*s", way, static_cast<int>(command.size()), command.data());
  if (both.view().size() <= kColumns)
    puts(shown(both.view()).c_str());
  else
    printf("%s \\\n%s\n", line_of("  ", way).c_str(), line_of("    ", command).c_str());
}

}  // namespace

void tell(std::string_view sentences) {
  puts(in_lines(sentences).c_str());
}

void remember_folder(const char *program) {
  g_folder[0] = '\0';
  const char *const slash = program == nullptr ? nullptr : strrchr(program, '/');
  if (slash == nullptr) return;
  const auto size = static_cast<size_t>(slash + 1 - program);
  if (size >= kFolderRoom) return;
  memcpy(g_folder, program, size);
  g_folder[size] = '\0';
}

Text command_beside(std::string_view line) {
  const size_t end = std::min(line.find(' '), line.size());
  const std::string_view program(line.data(), end);  // substr would need the C++ library on the service processor
  const Text beside = text_of("%s%.*s", g_folder, static_cast<int>(program.size()), program.data());
  const bool may_be_there = *g_folder != '\0' && !program.empty() && program.find('/') == std::string_view::npos;
  if (!may_be_there || access(beside.c_str(), X_OK) != 0) return Text(line);
  Text command;
  add_shell_word(command, beside.view());
  line.remove_prefix(end);
  return command.add(line);
}

Text procedure_command(const char *name, const char *kind) {
  return command_beside(text_of("%s %s", name, kind).view());
}

Text program_command(const char *program, const char *unit, const char *mode) {
  Text command = text_of("/mgb/bin/%s -u ", program);
  add_shell_word(command, unit);
  return command.add(" -c ").add(mode);
}

void advise(std::string_view what, const Text &command) {
  tell(what);
  print_command(command.view());
}

}  // namespace lmainte::procedure

namespace procedure = lmainte::procedure;

void lmainte_tell(const char *format, ...) {
  PROCEDURE_TEXT(text, format);
  procedure::tell(text.view());
}

void lmainte_advise(const char *command, const char *format, ...) {
  PROCEDURE_TEXT(text, format);
  procedure::advise(text.view(), procedure::command_beside(command));
}
