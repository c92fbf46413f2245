#include <expat.h>
#include <gtest/gtest.h>

#include <memory>
#include <set>

#include "host/play/picture.h"

namespace {

using play::Picture;

// What is wrong with a text as XML; empty: nothing.
std::string wrong_with(const std::string &text) {
  const std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser(XML_ParserCreate("UTF-8"), XML_ParserFree);
  if (XML_Parse(parser.get(), text.data(), static_cast<int>(text.size()), XML_TRUE) == XML_STATUS_OK) return "";
  return "line " + std::to_string(XML_GetCurrentLineNumber(parser.get())) + ": " +
         XML_ErrorString(XML_GetErrorCode(parser.get()));
}

// From when to when a frame is seen, in percent; nowhere and never where the text has no such frame.
std::pair<double, double> time_of(const std::string &svg, const std::string &frame) {
  const std::size_t steps = svg.find("@keyframes k" + frame + "{");
  if (steps == std::string::npos) return {-1, -1};
  const std::string show = "%{visibility:visible}";
  const std::size_t shown = svg.find(show, steps);
  const std::size_t from = svg.find_last_of("{}", shown) + 1, to = shown + show.size();
  return {std::stod(svg.substr(from)), std::stod(svg.substr(to))};
}

bool has(const std::string &text, const std::string &part) {
  return text.find(part) != std::string::npos;
}

Picture walk() {
  Picture picture;
  picture.note("The operator starts: walk");
  picture.add("the \"first\" <screen> & more", {"Which one?", "", " 1. <one> & \"another\""}, {24, 80});
  picture.note("The operator types: \"1\", Enter");
  picture.add("the list", std::vector<std::string>(24, "a new line of a long list of units"), {24, 80});
  picture.add("nearly the same", std::vector<std::string>(24, "a new line of a long list of units"), {24, 80});
  return picture;
}

TEST(Picture, IsWellFormed) {
  EXPECT_EQ(wrong_with(walk().svg()), "");
  EXPECT_EQ(wrong_with(Picture().svg()), "");
}

TEST(Picture, IsTheSameForTheSameScreens) {
  EXPECT_EQ(walk().svg(), walk().svg());
}

TEST(Picture, ShowsScreensCaptionsAndWhatHappensInBetween) {
  const auto svg = walk().svg();
  EXPECT_TRUE(has(svg, ">the &quot;first&quot; &lt;screen&gt; &amp; more</text>"));
  EXPECT_TRUE(has(svg, ">1. &lt;one&gt; &amp; &quot;another&quot;</text>"));
  EXPECT_TRUE(has(svg, ">The operator starts: walk   The operator types: &quot;1&quot;, Enter</text>"));
}

TEST(Picture, ShowsAScreenTheLongerTheMoreIsNewOnIt) {
  const auto svg = walk().svg();
  const auto [first_from, first_to] = time_of(svg, "0");
  const auto [second_from, second_to] = time_of(svg, "1");
  EXPECT_EQ(first_from, 0);
  EXPECT_EQ(second_from, first_to);
  EXPECT_GT(second_to - second_from, 2 * (first_to - first_from));
  EXPECT_EQ(time_of(svg, "2"), (std::pair{second_to, 100.0})) << svg;
}

TEST(Picture, ShowsTheFirstScreenWhereNothingMayMove) {
  const auto svg = walk().svg();
  EXPECT_TRUE(has(svg, ".f{visibility:hidden}\n#f0{visibility:visible}\n"));
  EXPECT_TRUE(has(svg, "@media (prefers-reduced-motion:reduce){.f{animation:none!important}}"));
}

TEST(Picture, OfOneScreenDoesNotMove) {
  Picture picture;
  picture.add("alone", {"here"}, {24, 80});
  EXPECT_FALSE(has(picture.svg(), "animation"));
  EXPECT_TRUE(has(picture.svg(), ">here</text>"));
}

TEST(Picture, IsAsLargeAsTheLargestScreen) {
  Picture picture;
  picture.add("small", {}, {10, 40});
  const auto small = picture.svg().substr(0, 90);
  picture.add("wide", {}, {10, 132});
  EXPECT_NE(picture.svg().substr(0, 90), small);
  EXPECT_TRUE(has(picture.svg(), "width=\"1140.8\""));
}

TEST(Picture, HoldsNoByteThatXmlForbids) {
  Picture picture;
  picture.add("bell \a, half a letter \303", {"caf\303\251 \377"}, {24, 80});
  const auto svg = picture.svg();
  EXPECT_TRUE(has(svg, ">bell ?, half a letter ?</text>"));
  EXPECT_TRUE(has(svg, ">caf\303\251 ?</text>"));
  picture.add("no character: \xef\xbf\xbf \xef\xbf\xbe \xc2\x9b", {}, {24, 80});
  EXPECT_TRUE(has(picture.svg(),
                  ">no character: ? ? ?"
                  "?</text>"));
  EXPECT_EQ(wrong_with(picture.svg()), "");
}

TEST(Picture, CutsANoteThatIsTooLong) {
  Picture picture;
  picture.add("one", {}, {24, 80});
  picture.note(std::string(100, 'x'));
  EXPECT_TRUE(has(picture.svg(), ">" + std::string(83, 'x') + "...</text>"));
  picture.add("two", {}, {24, 132});
  EXPECT_TRUE(has(picture.svg(), ">" + std::string(100, 'x') + "</text>"));
}

TEST(Picture, CutsACaptionThatIsTooLong) {
  Picture picture;
  picture.add(std::string(100, 'x'), {}, {24, 80});
  EXPECT_TRUE(has(picture.svg(), ">" + std::string(62, 'x') + "...</text>"));
}

}  // namespace
