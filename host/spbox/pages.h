// What is installed beside spbox to tell of it, made from the verbs' rows as its help is: the manual page, and what the shells
// complete.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/spbox/verb.h"

namespace spbox {

// spbox(1). `date` is that of the release, as in 2026-11-22.
std::string manual_page(const std::vector<Verb> &verbs, std::string_view version, std::string_view date);

std::string bash_completion(const std::vector<Verb> &verbs);
std::string zsh_completion(const std::vector<Verb> &verbs);
std::string fish_completion(const std::vector<Verb> &verbs);

}  // namespace spbox
