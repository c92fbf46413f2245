// Prints what is installed beside spbox to tell of it: spbox_pages KIND DATE
#include <cstdio>
#include <string>
#include <string_view>

#include "host/spbox/pages.h"
#include "host/spbox/verbs.h"

namespace {

std::string page(std::string_view kind, std::string_view date) {
  const std::vector<spbox::Verb> verbs = spbox::all_verbs();
  if (kind == "manual") return spbox::manual_page(verbs, SPBOX_VERSION, date);
  if (kind == "bash") return spbox::bash_completion(verbs);
  if (kind == "zsh") return spbox::zsh_completion(verbs);
  if (kind == "fish") return spbox::fish_completion(verbs);
  return "";
}

}  // namespace

int main(int argc, char **argv) {
  const std::string text = argc == 3 ? page(argv[1], argv[2]) : "";
  if (text.empty()) {
    std::fputs("usage: spbox_pages manual|bash|zsh|fish DATE\n", stderr);
    return 2;
  }
  return std::fputs(text.c_str(), stdout) >= 0 && std::fflush(stdout) == 0 ? 0 : 1;
}
