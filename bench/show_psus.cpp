// lmainte_show_psu_list with sixty lines, beside a list file written in one go and a pager that ends at once.

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "bench/memory_platform.h"
#include "bench/rows.h"
#include "include/lmainte.h"

namespace {

constexpr std::uint32_t kPsus = 60;

void show_all() {
  static const PsuData psus[kPsus] = {};
  static const ListLine lines[] = {{LMAINTE_LINE_END, nullptr, 0, {}}};
  if (lmainte_show_psu_list(0, kPsus, psus, lines) != LMAINTE_OK) std::abort();
}

std::string lines() {
  std::string text;
  for (std::uint32_t i = 0; i < kPsus; ++i) text += " 1. PSU#40          Not installed\n";
  return text;
}

void floor(const std::string &text, const bench::Requests &requests) {
  const std::string path = "/tmp/mainte_fru_list." + std::to_string(getpid());
  FILE *file = std::fopen(path.c_str(), "w");
  std::fputs(text.c_str(), file);
  std::fclose(file);
  const pid_t child = fork();
  if (child == 0) _exit(0);
  waitpid(child, nullptr, 0);
  std::remove(path.c_str());
  bench::replay(requests);
}

}  // namespace

bench::Row bench::list_row() {
  return {.name = "show 60 power supplies",
          .floor = [text = lines(), asked = watch(show_all)] { floor(text, asked); },
          .call = show_all,
          .prepare = [] {},
          .starts_a_child = true};
}
