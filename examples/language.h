// The operator's language for what the library words itself. A command's own texts are English unless it has a catalogue
// of its own. Copy it with the command.
#pragma once

#include <libintl.h>

#include <array>
#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

// The compiled translations: beside the commands of a build folder, in share/locale of an installed prefix, or where the
// system keeps its own.
inline std::string folder_of_translations() {
  namespace fs = std::filesystem;
  std::error_code error;
  const fs::path above = fs::read_symlink("/proc/self/exe", error).parent_path().parent_path();
  for (const fs::path &folder : {above / "locale", above / "share/locale"})
    if (fs::is_directory(folder, error)) return folder;
  return "/usr/share/locale";
}

// What the environment asks for, as setlocale looks for it; null where it asks for nothing.
inline const char *language_asked_for() {
  for (const char *const name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    const char *const value = std::getenv(name);
    if (value != nullptr && *value != '\0') return value;
  }
  return nullptr;
}

// Where the locale itself was never made on this machine, the translation is found by its language alone.
inline void speak_the_operators_language() {
  if (std::setlocale(LC_ALL, "") == nullptr && language_asked_for() != nullptr) {
    setenv("LANGUAGE", language_asked_for(), 0);
    std::setlocale(LC_ALL, "C.UTF-8");
  }
  bindtextdomain("cli_cmn_msg", folder_of_translations().c_str());
}
