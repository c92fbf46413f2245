#include "host/spbox/answer.h"

#include <utility>

#include "host/spbox/standard_output.h"

namespace spbox {
namespace {

Json::Object g_members;

}  // namespace

Word json_option() {
  return {.name = "--json", .help = "Answer with an object for scripts", .to = &kept_output().is_wanted};
}

bool is_for_script() {
  return kept_output().is_wanted;
}

void answer(Json::Object members) {
  g_members = std::move(members);
}

void show(Json::Object members, const std::string &text) {
  if (is_for_script()) return answer(std::move(members));
  print(text);
}

int with_answer(const std::string &verb, int exit_status) {
  if (!is_for_script()) return exit_status;
  const KeptOutput kept = std::exchange(kept_output(), {});
  Json::Object all = std::exchange(g_members, {});
  all.push_back({"verb", verb});
  all.push_back({"exit_status", exit_status});
  all.push_back({"said", Json::List(kept.lines.begin(), kept.lines.end())});
  print(Json(std::move(all)).text());
  return exit_status;
}

}  // namespace spbox
