#include "procedure/language.h"

#include <libintl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

namespace lmainte::procedure {
namespace {

bool is_folder(const char *path) {
  struct stat status {};
  return stat(path, &status) == 0 && S_ISDIR(status.st_mode);
}

// Cuts the last part of a path off.
void leave_folder(char *path) {
  char *const slash = strrchr(path, '/');
  if (slash != nullptr) *slash = '\0';
}

// The compiled translations: beside the commands of a build folder, in share/locale of an installed prefix, or where the
// system keeps its own.
void find_translations(char (&folder)[PATH_MAX]) {
  char above[PATH_MAX];
  const ssize_t size = readlink("/proc/self/exe", above, sizeof above - 1);
  if (size > 0) {
    above[size] = '\0';
    leave_folder(above);
    leave_folder(above);
    for (const char *const place : {"locale", "share/locale"}) {
      const int length = snprintf(folder, sizeof folder, "%s/%s", above, place);
      if (length < static_cast<int>(sizeof folder) && is_folder(folder)) return;
    }
  }
  strcpy(folder, "/usr/share/locale");  // NOLINT(clang-analyzer-security.insecureAPI.strcpy): it has room
}

// As setlocale looks for it; null where the environment asks for nothing.
const char *language_asked_for() {
  for (const char *const name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    const char *const value = getenv(name);
    if (value != nullptr && *value != '\0') return value;
  }
  return nullptr;
}

}  // namespace

// Where the locale itself was never made on this machine, the translation is found by its language alone.
void speak_the_operators_language() {
  const char *const language = language_asked_for();
  if (setlocale(LC_ALL, "") == nullptr && language != nullptr) {
    if (strchr(language, '/') == nullptr) setenv("LANGUAGE", language, 0);
    setlocale(LC_ALL, "C.UTF-8");
  }
  char folder[PATH_MAX];
  find_translations(folder);
  for (const char *const catalogue : {"cli_cmn_msg", "lmainte_procedure"}) {
    bindtextdomain(catalogue, folder);
    bind_textdomain_codeset(catalogue, "UTF-8");  // what is no UTF-8 is shown as bytes
  }
}

}  // namespace lmainte::procedure
