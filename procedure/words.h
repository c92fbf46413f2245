// The message catalogue of what a procedure tells the operator: each text is its own name there.
#pragma once

#include <libintl.h>
#include <locale.h>

namespace lmainte::procedure {

// Brings a text into the catalogue's template, po/lmainte_procedure/lmainte_procedure.pot, and looks it up.
[[gnu::format_arg(1)]] inline const char *words(const char *text) {
  return dcgettext("lmainte_procedure", text, LC_MESSAGES);
}

// Brings a text of a table into the template. It is looked up where it is told.
constexpr const char *noted(const char *text) {
  return text;
}

}  // namespace lmainte::procedure
