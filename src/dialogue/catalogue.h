// The message catalogue of the operator's dialogue: what is translated, a text or a format, is its own name there.
#pragma once

#include <libintl.h>
#include <locale.h>

namespace lmainte {

// What can be looked up in the catalogue.
struct Message {
  const char *id;
};

// Marks a text, which brings it into the catalogue's template, po/cli_cmn_msg/cli_cmn_msg.pot.
constexpr Message message(const char *text) {
  return {text};
}

inline const char *translated(const Message &message) {
  return dcgettext("cli_cmn_msg", message.id, LC_MESSAGES);
}

}  // namespace lmainte
