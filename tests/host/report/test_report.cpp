#include "host/report/report.h"

#include <gtest/gtest.h>

#include <memory>
#include <utility>

namespace {

using report::Play;
using report::Step;

std::size_t count(const std::string &text, const std::string &part) {
  std::size_t times = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++times;
  return times;
}

bool has(const std::string &text, const std::string &part) {
  return text.find(part) != std::string::npos;
}

terminal::PaintedText plain(const std::string &text) {
  return {text, {}};
}

report::Screens screens(std::vector<terminal::PaintedRow> rows, const std::string &caption = "the screen") {
  return std::make_shared<const std::vector<report::Screen>>(1, report::Screen{caption, std::move(rows)});
}

report::Picture picture(const std::string &line) {
  return std::make_shared<const std::vector<std::string>>(1, line);
}

Play walk(std::size_t steps) {
  Play play;
  play.name = "walk";
  for (std::size_t i = 0; i < steps; ++i) {
    Step step;
    step.place = "walk.play:" + std::to_string(i + 1);
    step.text = "wait \"" + std::to_string(i + 1) + "\"";
    step.time = std::chrono::milliseconds(100 * i);
    step.trace = i;
    play.steps.push_back(step);
    play.trace.push_back({"line " + std::to_string(i), i % 2 == 1});
  }
  return play;
}

TEST(Report, ShowsAnyTextAndObeysNone) {
  const std::string evil = "\"><script>alert(1)</script>\x1b[2J@STEPS@</pre>";
  Play play = walk(1);
  play.name = play.reason = evil;
  Step &step = play.steps[0];
  step.place = step.text = evil;
  step.deeds = {{evil, evil}};
  step.screens = screens({{plain(evil)}}, evil);
  step.server = picture(evil);
  play.trace = {{evil, true}};
  play.log = {evil};
  const std::string page = page_of(play);
  EXPECT_EQ(count(page, "<script>"), 1u) << "the page's own";
  EXPECT_FALSE(has(page, "\x1b"));
  EXPECT_GT(count(page, "&lt;script&gt;alert(1)&lt;/script&gt;\\x1b[2J@STEPS@&lt;/pre&gt;"), 10u);
  EXPECT_EQ(count(page, "<article "), 1u);
  for (const char *outside : {"http:", "https:", "src=", "url(", "@import"})
    EXPECT_FALSE(has(page, outside)) << outside;
}

TEST(Report, HasItsStepsInOrderAndTheLastOneFailed) {
  Play play = walk(3);
  play.reason = "\"3\" did not come up.";
  const std::string page = page_of(play);
  const std::size_t first = page.find(R"(<article id="step-1")"), second = page.find(R"(<article id="step-2")"),
                    third = page.find(R"(<article id="step-3" class="wrong")");
  EXPECT_LT(first, second);
  EXPECT_LT(second, third);
  ASSERT_NE(third, page.npos);
  EXPECT_TRUE(has(page, "aria-label=\"Step 3 of 3, which failed, at 0.2 s: wait &quot;3&quot;\" data-trace=\"2\""));
  EXPECT_GT(page.find("did not come up."), third);
  EXPECT_TRUE(has(page, "✗ Failed</span> at walk.play:3"));
  EXPECT_TRUE(has(page, "<li>line 0</li>\n<li class=\"error\">! line 1</li>\n"))
      << "an error is one without colours, too";
  play.reason.clear();
  EXPECT_TRUE(has(page_of(play), "✓ Played to its end</span>: 3 steps in 0.2 s."));
  EXPECT_FALSE(has(page_of(play), "class=\"wrong\""));
  EXPECT_TRUE(has(page_of(Play{}), "There is no step."));
}

TEST(Report, HasOnceWhatStaysTheSame) {
  Play play = walk(400);
  for (Step &step : play.steps) {
    step.screens = screens({{plain(std::string(2000, 'x'))}});
    step.server = picture(std::string(2000, 'y'));
  }
  play.steps[200].server = picture("another");
  const std::string page = page_of(play);
  EXPECT_LT(page.size(), 500'000u);
  EXPECT_EQ(count(page, std::string(2000, 'x')), 1u);
  EXPECT_EQ(count(page, std::string(2000, 'y')), 2u) << "it went, and came again";
  EXPECT_EQ(count(page, "data-of=\"screen-1\""), 399u);
}

TEST(Report, LeavesOutTheOldestLinesOfALongTraceAndSaysSo) {
  Play play = walk(1);
  for (std::size_t i = 0; i < 2 * report::kMostTrace; ++i) play.trace.push_back({"so", false});
  play.trace_left_out = 7;
  play.steps[0].trace = 7 + play.trace.size();
  const std::string page = page_of(play);
  EXPECT_EQ(count(page, "<li>so</li>"), report::kMostTrace);
  EXPECT_TRUE(has(page, "<p>10008 older lines left out.</p>\n<ol start=\"10009\""));
  EXPECT_TRUE(has(page, "data-trace=\"10000\""));
}

TEST(Report, SaysHowManyStepsWereLeftOut) {
  Play play = walk(2);
  play.steps_left_out = 5;
  EXPECT_TRUE(has(page_of(play), "2 steps in 0.1 s; 5 older steps left out.")) << page_of(play);
}

TEST(Report, HasTheLooksOfTheScreen) {
  terminal::Look look;
  look.bold = true;
  look.front = terminal::Colour{1, 0, 0, 0};
  terminal::Look other;
  other.reverse = true;
  other.front = terminal::Colour{terminal::Colour::kAny, 0x12, 0x34, 0xAB};
  Play play = walk(1);
  play.steps[0].screens = screens({{plain("a "), {"red", look}, {"any", other}}, {}, {plain("z")}, {}});
  EXPECT_TRUE(has(page_of(play), "<h3>The screen</h3>")) << page_of(play);
  EXPECT_TRUE(has(
      page_of(play),
      ">a <span class=\"c1 b\">red</span><span class=\"front\" style=\"background:#1234ab;\">any</span>\n\nz\n</pre>"))
      << page_of(play);
}

}  // namespace
