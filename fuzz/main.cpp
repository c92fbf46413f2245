// What libFuzzer calls, and the replay of kept inputs: both go to the target that the first word of the command line names.
#include <cstdio>
#include <cstdlib>

#include "fuzz/entry_points.h"
#include "fuzz/target.h"

// libFuzzer and the sanitizers know these names, and no header declares them.
#pragma GCC diagnostic ignored "-Wmissing-declarations"

namespace fuzz {
namespace {

// In the environment, too: libFuzzer starts itself again for some work, and forgets the first word.
constexpr char kVariable[] = "LMAINTE_FUZZ_TARGET";

const Target *chosen = nullptr;

const Target *target_of(std::string_view name) {
  for (const Target &target : targets()) {
    if (target.name == name) return &target;
  }
  return nullptr;
}

// Nothing a process says or does on its way out may go to a double.
[[noreturn]] void end(const std::string &sentence) {
  calm();
  std::fprintf(stderr, "%s\n", sentence.c_str());
  std::abort();
}

void list_targets() {
  for (const Target &target : targets()) {
    std::printf("%-14.*s  %.*s\n", static_cast<int>(target.name.size()), target.name.data(),
                static_cast<int>(target.meaning.size()), target.meaning.data());
  }
}

}  // namespace

void require(bool holds, const std::string &sentence) {
  if (!holds) end("does not hold: " + sentence);
}

}  // namespace fuzz

extern "C" {

// Takes the target's name off the command line. Without one, lists the targets.
int LLVMFuzzerInitialize(int *argc, char ***argv) {
  using fuzz::chosen;
  if (*argc > 1) chosen = fuzz::target_of((*argv)[1]);
  if (chosen != nullptr) {
    (*argv)[1] = (*argv)[0];
    ++*argv;
    --*argc;
    setenv(fuzz::kVariable, std::string(chosen->name).c_str(), 1);
  } else if (const char *name = std::getenv(fuzz::kVariable)) {
    chosen = fuzz::target_of(name);
  }
  if (chosen != nullptr) return 0;
  fuzz::list_targets();
  std::exit(*argc > 1 ? 2 : 0);
}

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  fuzz::chosen->run({data, size});
  return 0;
}

// A client of the library may hand over a count that no memory holds: then the library is to say so.
const char *__asan_default_options() {  // NOLINT(clang-diagnostic-reserved-identifier): the sanitizer's name
  return "allocator_may_return_null=1";
}

void __asan_on_error() {  // NOLINT(clang-diagnostic-reserved-identifier): the sanitizer's name
  fuzz::calm();
}

void __ubsan_on_report() {  // NOLINT(clang-diagnostic-reserved-identifier): the sanitizer's name
  fuzz::calm();
}
}
