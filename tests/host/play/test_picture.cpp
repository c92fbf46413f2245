#include <gtest/gtest.h>

#include <regex>
#include <set>

#include "host/play/picture.h"

namespace {

using play::Picture;

// What is wrong with a text as XML: elements that do not match, characters that may not stand there. Empty: nothing.
std::string wrong_with(const std::string &text) {
  std::vector<std::string> open;
  std::size_t at = 0;
  static const std::regex element(R"(<(/?)([a-z]+)((?: [a-zA-Z:]+="[^"<&]*")*)(/?)>\n?)");
  static const std::regex words(R"((?:[^<>&]|&(?:amp|lt|gt|quot);)+)");
  while (at < text.size()) {
    std::smatch found;
    const auto from = text.begin() + static_cast<std::ptrdiff_t>(at);
    if (std::regex_search(from, text.end(), found, element, std::regex_constants::match_continuous)) {
      if (found[1].length() > 0) {
        if (open.empty() || open.back() != found[2]) return "</" + found[2].str() + "> ends nothing";
        open.pop_back();
      } else if (found[4].length() == 0) {
        open.push_back(found[2]);
      }
    } else if (!std::regex_search(from, text.end(), found, words, std::regex_constants::match_continuous)) {
      return "at " + text.substr(at, 40);
    }
    at += static_cast<std::size_t>(found[0].length());
  }
  return open.empty() ? "" : "<" + open.back() + "> does not end";
}

// From when to when a frame is seen, in percent.
std::pair<double, double> time_of(const std::string &svg, const std::string &frame) {
  std::smatch found;
  if (frame == "0") {
    std::regex_search(svg, found, std::regex(R"(k0\{0%\{visibility:visible\}([0-9.]+)%)"));
    return {0, std::stod(found[1])};
  }
  std::regex_search(svg, found,
                    std::regex("k" + frame + R"(\{0%\{visibility:hidden\}([0-9.]+)%\{visibility:visible\}([0-9.]+)%)"));
  return {std::stod(found[1]), std::stod(found[2])};
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
  EXPECT_TRUE(has(svg, "k2{0%{visibility:hidden}" +
                           std::regex_replace(std::to_string(second_to), std::regex("000$"), "") +
                           "%{visibility:visible}100%{visibility:visible}}"))
      << svg;
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
