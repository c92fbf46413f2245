// Saves events in a box until it is killed: save_events FIRST. The heads of the events count up from FIRST. Behind each event
// that is saved, it writes the event's head on standard output.
#include <unistd.h>

#include <array>
#include <charconv>
#include <cstdint>
#include <cstring>

#include "lmainte_platform.h"

int main(int argc, char **argv) {
  std::uint32_t head = 0;
  if (argc != 2 || std::from_chars(argv[1], argv[1] + std::strlen(argv[1]), head).ec != std::errc{}) return 2;
  constexpr std::array<std::uint8_t, 48> kEvent{};
  std::array<char, 16> line{};
  for (;; ++head) {
    if (mgblog_save(&head, kEvent.data()) < 0) return 1;
    char *const end = std::to_chars(line.data(), line.data() + line.size() - 1, head).ptr;
    *end = '\n';
    if (write(STDOUT_FILENO, line.data(), static_cast<std::size_t>(end + 1 - line.data())) < 0) return 1;
  }
}
