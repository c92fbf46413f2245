#include "host/trace_book/events_page.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

namespace {

TEST(EventsPage, IsTheOneInTheDocumentation) {
  std::ifstream in(EVENTS_PAGE);
  const std::string documented{std::istreambuf_iterator<char>(in), {}};
  EXPECT_TRUE(documented == trace_book::events_page()) << "`./dev events` brings docs/trace-events.md up to date";
}

TEST(EventsPage, HasARowForEachEvent) {
  const std::string page = trace_book::events_page();
  EXPECT_NE(page.find("\n## src/ops\n"), std::string::npos);
  EXPECT_NE(page.find("\n### lmainte_detach_fru\n"), std::string::npos);
  EXPECT_NE(page.find("\n| `entry` | point | 0x110C0320 | entry |  |\n"), std::string::npos);
  EXPECT_NE(page.find("\n| `refused` | error | 0x110C1323 | the unit was not detached | exit status |\n"),
            std::string::npos);
  EXPECT_NE(page.find("\n| `started` | point | 0x110C0024 | a child was started | time limit, child |\n"),
            std::string::npos);
  EXPECT_NE(page.find("\n### lmainte_show_iox_list or lmainte_show_ioxpsu_list\n"), std::string::npos);
}

}  // namespace
