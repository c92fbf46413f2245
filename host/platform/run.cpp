// A command's own beginning and end, for what is kept of its calls.
#include <stdlib.h>  // NOLINT(modernize-deprecated-headers): on_exit is in this one
#include <unistd.h>

#include <algorithm>
#include <cstring>

#include "host/platform/calls.h"
#include "include/lmainte_record.h"

namespace {

// What the command is called, as far as a record has room.
struct ArgumentLine {
  char text[box::kLongestCallText];
  std::size_t length;

  void add(std::string_view part) {
    const std::size_t size = std::min(part.size(), sizeof text - length);
    if (size != 0) std::memcpy(text + length, part.data(), size);
    length += size;
  }
};
constinit ArgumentLine argument_line{};
constinit pid_t begun = 0;  // the process that has begun here, and no child of it
constinit bool is_kept = false;

void keep_end(int status, void * /*unused*/) {
  if (getpid() != begun) return;
  lmainte_record_end(status);
  if (is_kept) platform::command_ends({argument_line.text, argument_line.length}, status);
}

// The command begins when it loads the platform. It ends by exit; one that is killed leaves no record of its end.
[[gnu::constructor]] void keep_begin(int argc, char **argv) {
  for (int i = 0; i < argc && argv[i] != nullptr; ++i) {
    if (i > 0) argument_line.add(" ");
    argument_line.add(argv[i]);
  }
  begun = getpid();
  is_kept = platform::command_begins({argument_line.text, argument_line.length}, getppid());
  on_exit(keep_end, nullptr);
}

}  // namespace
