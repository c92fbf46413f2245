#include <algorithm>

#include "host/spbox/pages.h"

namespace spbox {
namespace {

enum class Filling { kNothing, kFlag, kFolder, kFile, kNames, kCommand };

// What a shell can offer for a word.
Filling filling_of(const Word &word) {
  if (std::holds_alternative<bool *>(word.to)) return Filling::kFlag;
  if (std::holds_alternative<Rest>(word.to)) return Filling::kCommand;
  if (std::holds_alternative<Choice>(word.to)) return Filling::kNames;
  if (!std::holds_alternative<std::filesystem::path *>(word.to)) return Filling::kNothing;
  return (word.name + word.value).ends_with("DIR") ? Filling::kFolder : Filling::kFile;
}

std::string in_a_row(const std::vector<std::string> &words) {
  std::string text;
  for (const std::string &word : words) text += (text.empty() ? "" : " ") + word;
  return text;
}

// How each shell is told of it; % stands for the names.
struct Offer {
  Filling filling;
  const char *bash, *zsh, *fish;
};
constexpr Offer kOffers[] = {
    {Filling::kFolder, "-d", "_directories", " -x -a '(__fish_complete_directories)'"},
    {Filling::kFile, "-f", "_files", " -r -F"},
    {Filling::kNames, "-W '%'", "(%)", " -x -a '%'"},
    {Filling::kCommand, "-c -f", "_normal", " -F"},
};

std::string offer(const Word &word, const char *Offer::*shell, const std::string &otherwise) {
  const auto *const row = std::ranges::find(kOffers, filling_of(word), &Offer::filling);
  if (row == std::end(kOffers)) return otherwise;
  std::string text = row->*shell;
  const std::size_t at = text.find('%');
  if (at != std::string::npos) text.replace(at, 1, in_a_row(std::get<Choice>(word.to).names));
  return text;
}

// In single quotes, the first line of a help.
std::string in_quotes(const std::string &help) {
  std::string text = "'";
  for (const char c : help.substr(0, help.find('\n'))) text += c == '\'' ? "'\\''" : std::string(1, c);
  return text + "'";
}

std::string without_brackets(std::string help) {
  std::replace(help.begin(), help.end(), '[', '(');
  std::replace(help.begin(), help.end(), ']', ')');
  return help;
}

bool takes_many(const Word &word) {
  return std::holds_alternative<std::vector<std::string> *>(word.to);
}

// ---- bash: each row is VERB, PLACE or option, and what makes the candidates

std::string bash_rows(const Verb &verb) {
  std::string rows, options = "--help", valued;
  int place = 0;
  for (const Word &word : verb.words) {
    if (word.is_hidden) continue;
    const std::string candidates = offer(word, &Offer::bash, "");
    std::string pattern = verb.name + " " + word.name;
    if (word.is_option()) {
      options += " " + word.name;
      if (!word.value.empty()) valued += " " + word.name;
    } else {
      pattern = verb.name + " " + std::to_string(++place);
    }
    if (!candidates.empty()) {
      const std::string more = filling_of(word) == Filling::kCommand ? "*" : "";
      rows.append("    '").append(pattern).append("'").append(more);
      rows.append(") how=\"").append(candidates).append("\" ;;\n");
    }
  }
  return rows + "    '" + verb.name + " options') how=\"-W '" + options + "'\" ;;\n    '" + verb.name +
         " valued') how='" + valued + " ' ;;\n";
}

constexpr const char *kBashEnd = R"sh(  esac
}

_spbox() {
  local how word valued place=0 at verb=${COMP_WORDS[1]} current=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
  COMPREPLY=()
  if ((COMP_CWORD == 1)); then
    _spbox_how verbs
  else
    _spbox_how "$verb valued"
    valued=$how
    for ((at = 2; at <= COMP_CWORD; ++at)); do
      word=${COMP_WORDS[at]}
      if [[ $valued == *" ${COMP_WORDS[at - 1]} "* || ($word == -* && $at -lt $COMP_CWORD) ]]; then continue; fi
      place=$((place + 1))
    done
    if [[ $valued == *" $before "* ]]; then
      _spbox_how "$verb $before"
    elif [[ $current == -* ]]; then
      _spbox_how "$verb options"
    else
      _spbox_how "$verb $place"
    fi
  fi
  if [[ -n $how ]]; then
    mapfile -t COMPREPLY < <(eval "compgen $how -- \"\$current\"")
  fi
}
complete -o filenames -F _spbox spbox
)sh";

// ---- fish: whether this is the verb; without one, whether there is none yet

constexpr const char *kFishVerb = R"fish(
function __spbox_verb
    set -l words (commandline -opc)
    test "$words[2]" = "$argv[1]"
end
complete -c spbox -f
complete -c spbox -l help -d 'Say more'
)fish";

// ---- zsh

std::string zsh_row(const Word &word, int place) {
  if (word.is_option()) {
    const std::string value = word.value.empty() ? "" : ":" + word.value + ":" + offer(word, &Offer::zsh, " ");
    return in_quotes(word.name + "[" + without_brackets(word.help.substr(0, word.help.find('\n'))) + "]" + value);
  }
  const bool is_rest = filling_of(word) == Filling::kCommand;
  const std::string where = is_rest || takes_many(word) ? "*" : std::to_string(place);
  return in_quotes(where + (is_rest ? "::" : ":") + word.name + ":" + offer(word, &Offer::zsh, " "));
}

}  // namespace

std::string bash_completion(const std::vector<Verb> &verbs) {
  std::vector<std::string> names{"help"};
  std::string rows;
  for (const Verb &verb : verbs) {
    names.push_back(verb.name);
    rows += bash_rows(verb);
  }
  std::string text = "# What bash completes behind spbox. Made from its verbs.\n\n# How compgen finds what fits.\n";
  text +=
      "_spbox_how() {\n  how=''\n  case $1 in\n    verbs) how=\"-W '" + in_a_row(names) + " --help --version'\" ;;\n";
  text += "    'help 1') how=\"-W '" + in_a_row(names) + "'\" ;;\n";
  return text + rows + kBashEnd;
}

std::string zsh_completion(const std::vector<Verb> &verbs) {
  std::string text =
      "#compdef spbox\n# What zsh completes behind spbox. Made from its verbs.\n\nlocal -a options verbs\n"
      "options=('--help:Say more' '--version:Which version this is')\nverbs=(\n";
  for (const Verb &verb : verbs) text += "  " + in_quotes(verb.name + ":" + verb.line) + "\n";
  text +=
      "  'help:What a verb does'\n)\nif ((CURRENT == 2)); then\n  _describe -o option options\n  _describe verb "
      "verbs\n  return\nfi\n";
  text += "local verb=$words[2]\nshift words\n((CURRENT--))\ncase $verb in\n  help) _describe verb verbs ;;\n";
  for (const Verb &verb : verbs) {
    text += "  " + verb.name + ")\n    _arguments '--help[Say more]'";
    int place = 0;
    for (const Word &word : verb.words) {
      if (!word.is_hidden) text += " \\\n      " + zsh_row(word, word.is_option() ? 0 : ++place);
    }
    text += " ;;\n";
  }
  return text + "esac\n";
}

std::string fish_completion(const std::vector<Verb> &verbs) {
  std::string text = "# What fish completes behind spbox. Made from its verbs.\n" + std::string(kFishVerb);
  const std::string first = "complete -c spbox -n __spbox_verb ";
  const std::string behind_help = "complete -c spbox -n '__spbox_verb help' ";
  text += first + "-a help -d 'What a verb does'\n" + first + "-l version -d 'Which version this is'\n";
  for (const Verb &verb : verbs) {
    const std::string line = "-a " + verb.name + " -d " + in_quotes(verb.line) + "\n";
    for (const std::string &start : {first, behind_help}) text.append(start).append(line);
    const std::string here = "complete -c spbox -n '__spbox_verb " + verb.name + "'";
    for (const Word &word : verb.words) {
      if (word.is_hidden) continue;
      const std::string candidates = offer(word, &Offer::fish, word.value.empty() ? "" : " -x");
      if (word.is_option()) {
        const bool is_long = word.name.starts_with("--");
        text.append(here).append(is_long ? " -l " : " -s ").append(word.name, is_long ? 2 : 1).append(candidates);
        text.append(" -d ").append(in_quotes(word.help)).append("\n");
      } else if (!candidates.empty()) {
        text += here + candidates + "\n";
      }
    }
  }
  return text;
}

}  // namespace spbox
