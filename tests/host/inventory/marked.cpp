// Puts units under maintenance or takes them out of it, in turn, and prints the units that are marked for replacement then:
// marked [start|end UNIT]...

#include <spawn.h>
#include <sys/wait.h>

#include <cstdio>
#include <cstdlib>

#include "lmainte.h"

namespace {

// Runs the control program itself: the library looks at one that it runs only once a second. Its exit status.
int set_flag(const char *mode, const char *unit) {
  const char *const words[] = {"/mgb/bin/setmainteflag", "-u", unit, "-c", mode, nullptr};
  char *const variables[] = {nullptr};
  pid_t pid = 0;
  int status = 0;
  if (posix_spawn(&pid, words[0], nullptr, nullptr, const_cast<char *const *>(words), variables) != 0) std::abort();
  if (waitpid(pid, &status, 0) != pid || !WIFEXITED(status)) std::abort();
  return WEXITSTATUS(status);
}

}  // namespace

int main(int argc, char **argv) {
  for (int i = 1; i + 1 < argc; i += 2) {
    const int status = set_flag(argv[i], argv[i + 1]);
    if (status != 0) std::printf("%s %s: exit status %d\n", argv[i], argv[i + 1], status);
  }
  lmainte_model_data data = {};
  if (const int32_t result = lmainte_get_model_data(&data, nullptr); result != LMAINTE_OK) {
    std::printf("no model: result %d\n", result);
    return 1;
  }
  const int32_t count = lmainte_init_swap_fru_list(&data);
  lmainte_swap_fru *node = nullptr;
  lmainte_get_swap_fru_list(&node);
  for (; node != nullptr; node = node->next) {
    std::printf("type %u, number %u, id %08X %08X\n", node->unit_type, node->unit_no, node->ident[0], node->ident[1]);
  }
  std::printf("%d units\n", count);
  lmainte_free_swap_fru_list();
  return 0;
}
