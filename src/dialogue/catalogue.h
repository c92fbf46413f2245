// The message catalogue of the operator's dialogue: what is translated, a text or a format, is its own name there.
#pragma once

#include <libintl.h>
#include <locale.h>

namespace lmainte {

// Marks a text for the catalogue's template, po/cli_cmn_msg.pot. It is looked up where it is printed.
constexpr const char *message(const char *text) {
  return text;
}

inline const char *translated(const char *text) {
  return dcgettext("cli_cmn_msg", text, LC_MESSAGES);
}

}  // namespace lmainte
