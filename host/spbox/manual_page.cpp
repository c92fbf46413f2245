#include <sstream>

#include "host/spbox/help.h"
#include "host/spbox/pages.h"

namespace spbox {
namespace {

// A line as roff takes it for text.
std::string for_roff(const std::string &line) {
  std::string text = line.starts_with('.') || line.starts_with('\'') ? "\\&" : "";
  for (const char c : line) {
    if (c == '\\') {
      text += "\\e";
    } else if (c == '-') {
      text += "\\-";
    } else {
      text += c;
    }
  }
  return text;
}

// Lines that stay as they are.
std::string as_it_is(const std::string &lines) {
  std::string text = ".nf\n";
  std::istringstream in(lines);
  for (std::string line; std::getline(in, line);) text += for_roff(line) + "\n";
  return text + ".fi\n";
}

// Lines of which a break in the source is none on the page.
std::string as_text(const std::string &lines) {
  std::string text;
  std::istringstream in(lines);
  for (std::string line; std::getline(in, line);) text += for_roff(line) + "\n";
  return text;
}

std::string verb_section(const Verb &verb) {
  std::string text = ".SS " + verb.name + "\n" + for_roff(verb.line) + ".\n.PP\n.B " + for_roff(usage_of(verb)) + "\n";
  for (const Word &word : verb.words) {
    if (word.is_hidden) continue;
    text += ".TP\n.B " + for_roff(word.value.empty() ? word.name : word.name + " " + word.value) + "\n" +
            as_text(word.help);
  }
  return text + (verb.footer.empty() ? "" : ".PP\n" + as_it_is(verb.footer));
}

}  // namespace

std::string manual_page(const std::vector<Verb> &verbs, std::string_view version, std::string_view date) {
  std::string text = ".TH SPBOX 1 " + std::string(date) + " \"lmainte " + std::string(version) + "\"\n";
  text += ".SH NAME\nspbox \\- a service processor in a folder\n.SH SYNOPSIS\n.B spbox\n.I VERB\n[OPTIONS] ...\n";
  text += ".SH DESCRIPTION\n" + as_it_is(description()) + ".SH VERBS\n";
  for (const Verb &verb : verbs) text += verb_section(verb);
  text += ".SH EXIT STATUS\n" + as_text(exit_statuses());
  return text + ".SH SEE ALSO\n.BR lmainte (7)\n";
}

}  // namespace spbox
