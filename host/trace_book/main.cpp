// Prints docs/trace-events.md.
#include <cstdio>

#include "host/trace_book/events_page.h"

int main() {
  const std::string page = trace_book::events_page();
  return std::fputs(page.c_str(), stdout) < 0 || std::fflush(stdout) != 0 ? 1 : 0;
}
