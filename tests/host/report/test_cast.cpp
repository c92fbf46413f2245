#include "host/report/cast.h"

#include <gtest/gtest.h>

namespace {

using std::chrono::milliseconds;

TEST(Cast, IsAHeadAndALineForEachEvent) {
  report::Cast cast({24, 80}, "a \"play\"");
  cast.wrote(milliseconds(0), "\x1b[2J\"one\"\r\n");
  cast.marks(milliseconds(1500), "the list");
  cast.resized(milliseconds(2000), {50, 132});
  EXPECT_EQ(cast.text(),
            "{\"version\": 2, \"width\": 80, \"height\": 24, \"title\": \"a \\\"play\\\"\", \"env\": {\"TERM\": "
            "\"xterm-256color\"}}\n"
            "[0.000, \"o\", \"\\u001b[2J\\\"one\\\"\\r\\n\"]\n"
            "[1.500, \"m\", \"the list\"]\n"
            "[2.000, \"r\", \"132x50\"]\n");
}

TEST(Cast, PutsACharacterTogetherThatCameInPieces) {
  report::Cast cast({}, "");
  cast.wrote(milliseconds(0), "x\xE2\x96");
  cast.wrote(milliseconds(1), "\xA0y\xC3");
  cast.wrote(milliseconds(2), "\xFFz");
  const std::string text = cast.text();
  EXPECT_NE(text.find("[0.000, \"o\", \"x\"]\n[0.001, \"o\", \"\xE2\x96\xA0y\"]\n"), text.npos) << text;
  EXPECT_NE(text.find("[0.002, \"o\", \"\xEF\xBF\xBD\xEF\xBF\xBDz\"]\n"), text.npos) << text;
}

}  // namespace
