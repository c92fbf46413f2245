#include "host/play/picture.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <set>

#include "host/base/shown.h"
#include "host/base/xml.h"

namespace play {
namespace {

// Of a picture, in pixels. A letter's width is that of all common monospaced fonts, 0.6 of their size.
constexpr double kFont = 14, kLetter = 8.4, kLine = 18, kMargin = 16, kBar = 34, kFoot = 50, kNoteLine = 19,
                 kNoteBase = 14;
constexpr double kNoteLetter = 7.8, kButtons = 75;
constexpr std::size_t kNoteLines = 2;

// Seconds that a screen is shown.
constexpr double kGlance = 2, kLetterTime = 0.005, kLongest = 8, kRest = 2;

template <typename... Values>
std::string format(const char *form, Values... values) {
  std::array<char, 512> text{};
  std::snprintf(text.data(), text.size(), form, values...);
  return text.data();
}

std::size_t length(std::string_view text) {
  std::size_t characters = 0;
  for (; !text.empty(); ++characters) text.remove_prefix(std::max<std::size_t>(base::character_size(text), 1));
  return characters;
}

std::string row_text(const std::string &row, std::size_t number, double left = kMargin) {
  const auto first = row.find_first_not_of(' ');
  if (first == std::string::npos) return "";
  const std::string text = row.substr(first);
  return format(R"(<text x="%.1f" y="%.1f" textLength="%.1f">)", left + kLetter * static_cast<double>(first),
                kBar + kMargin + kLine * static_cast<double>(number) + kFont,
                kLetter * static_cast<double>(length(text))) +
         base::xml(text) + "</text>\n";
}

// At most so many letters.
std::string shortened(const std::string &text, std::size_t longest) {
  if (length(text) <= longest) return text;
  std::size_t end = 0;
  for (std::size_t i = 0; i + 3 < longest; ++i) {
    end += std::max<std::size_t>(base::character_size(std::string_view(text).substr(end)), 1);
  }
  return text.substr(0, end) + "...";
}

// Sentences in the lines below the window, as far as they fit.
std::vector<std::string> note_lines(const std::vector<std::string> &notes, std::size_t longest) {
  std::vector<std::string> lines;
  for (const auto &note : notes) {
    const bool fits = !lines.empty() && length(lines.back()) + length(note) + 3 <= longest;
    if (fits) {
      lines.back() += "   " + note;
    } else if (lines.size() < kNoteLines) {
      lines.push_back(note);
    }
  }
  for (auto &line : lines) line = shortened(line, longest);
  return lines;
}

std::string note_text(const std::vector<std::string> &notes, double width, double height) {
  const auto lines = note_lines(notes, static_cast<std::size_t>((width - 2 * kMargin) / kNoteLetter));
  double base = height - (kFoot + kNoteLine * static_cast<double>(lines.size())) / 2 + kNoteBase;
  std::string text;
  for (const auto &line : lines) {
    text += format(R"(<text class="note" x="%.1f" y="%.1f">)", kMargin, base) + base::xml(line) + "</text>\n";
    base += kNoteLine;
  }
  return text;
}

// The letters of lines that the screen before did not have, wherever it had them.
std::size_t new_letters(const std::vector<std::string> &rows, const std::vector<std::string> &before) {
  const std::set<std::string> known(before.begin(), before.end());
  std::size_t letters = 0;
  for (const auto &row : rows) {
    if (!known.contains(row)) letters += length(row);
  }
  return letters;
}

// When frame `number` is to be seen, in parts of the whole: visible from the one to the other, again and again.
std::string frame_style(std::size_t number, double from, double to, double whole) {
  const char *at_first = number == 0 ? "visible" : "hidden";
  std::string steps = format("0%%{visibility:%s}", at_first);
  if (number > 0) steps += format("%.3f%%{visibility:visible}", 100 * from / whole);
  if (to < whole) steps += format("%.3f%%{visibility:hidden}", 100 * to / whole);
  steps += format("100%%{visibility:%s}", to < whole ? "hidden" : "visible");
  return format("@keyframes k%zu{%s}\n#f%zu{animation:k%zu %.2fs step-end infinite}\n", number, steps.c_str(), number,
                number, whole);
}

constexpr const char *kStyle =
    "text{font:14px ui-monospace,SFMono-Regular,Menlo,Consolas,'DejaVu Sans Mono','Liberation Mono',monospace;"
    "fill:#dfe3ea;white-space:pre}\n"
    ".caption{text-anchor:middle;fill:#aab2c0}\n"
    ".note{font-size:13px;fill:#f2c879}\n"
    ".f{visibility:hidden}\n"
    "#f0{visibility:visible}\n";

constexpr const char *kStill = "@media (prefers-reduced-motion:reduce){.f{animation:none!important}}\n";

}  // namespace

void Picture::add(std::string_view caption, std::vector<std::string> rows, terminal::Size size,
                  std::vector<std::string> server) {
  size.rows = std::max(size.rows, static_cast<int>(server.size()));
  has_server_ = has_server_ || !server.empty();
  frames_.push_back({std::string(caption), std::move(rows), std::move(opening_), std::move(server)});
  opening_.clear();
  size_ = {std::max(size.rows, size_.rows), std::max(size.columns, size_.columns)};
}

void Picture::note(std::string_view sentence) {
  (frames_.empty() ? opening_ : frames_.back().notes).emplace_back(sentence);
}

std::string Picture::style() const {
  std::vector<double> ends;
  std::vector<std::string> before;
  double whole = 0;
  for (const auto &frame : frames_) {
    whole += std::min(kLongest, kGlance + kLetterTime * static_cast<double>(new_letters(frame.rows, before)));
    before = frame.rows;
    ends.push_back(whole);
  }
  if (ends.size() < 2) return kStyle;
  whole = ends.back() += kRest;
  std::string text = kStyle;
  for (std::size_t i = 0; i < ends.size(); ++i) text += frame_style(i, i == 0 ? 0 : ends[i - 1], ends[i], whole);
  return text + kStill;
}

std::string Picture::window(double width, double height) const {
  const double foot = height - kFoot;
  std::string text = format(
      "<rect x=\"0.5\" y=\"0.5\" width=\"%.1f\" height=\"%.1f\" rx=\"9\" fill=\"#1c2029\" stroke=\"#7a8291\"/>\n",
      width - 1, height - 1);
  text += format("<path d=\"M1 %.1fV10a9 9 0 0 1 9-9H%.1fa9 9 0 0 1 9 9V%.1fz\" fill=\"#2d333f\"/>\n", kBar, width - 10,
                 kBar);
  text += format("<path d=\"M1 %.1fH%.1fV%.1fa9 9 0 0 1-9 9H10a9 9 0 0 1-9-9z\" fill=\"#252a34\"/>\n", foot, width - 1,
                 height - 10);
  constexpr std::array<const char *, 3> kColours{"#e0685f", "#e3b04b", "#6cb56c"};
  for (std::size_t i = 0; i < kColours.size(); ++i) {
    text += format("<circle cx=\"%.1f\" cy=\"%.1f\" r=\"5.5\" fill=\"%s\"/>\n", 20 + 18 * static_cast<double>(i),
                   kBar / 2, kColours[i]);
  }
  return text;
}

std::string Picture::svg() const {
  const double right = 3 * kMargin + kLetter * size_.columns;  // where the server begins
  const double width = has_server_ ? right + kMargin + kLetter * kServerColumns : right - kMargin;
  const double height = kBar + 2 * kMargin + kLine * size_.rows + kFoot;
  const auto longest_caption = static_cast<std::size_t>(std::max(0.0, (width - 2 * kButtons) / kLetter));
  std::string text = format(
      "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%.1f\" height=\"%.1f\" "
      "viewBox=\"0 0 %.1f %.1f\" role=\"img\" xml:space=\"preserve\">\n",
      width, height, width, height);
  if (!frames_.empty()) text += "<title>" + base::xml(frames_[0].caption) + "</title>\n";
  text += "<style>\n" + style() + "</style>\n" + window(width, height);
  if (has_server_) {
    text += format("<path d=\"M%.1f %.1fV%.1f\" stroke=\"#7a8291\"/>\n", right - kMargin, kBar, height - kFoot);
  }
  for (std::size_t i = 0; i < frames_.size(); ++i) {
    const Frame &frame = frames_[i];
    text += format("<g class=\"f\" id=\"f%zu\">\n<text class=\"caption\" x=\"%.1f\" y=\"%.1f\">", i, width / 2,
                   kBar / 2 + 5);
    text += base::xml(shortened(frame.caption, longest_caption)) + "</text>\n";
    for (std::size_t row = 0; row < frame.rows.size(); ++row) text += row_text(frame.rows[row], row);
    for (std::size_t row = 0; row < frame.server.size(); ++row) text += row_text(frame.server[row], row, right);
    text += note_text(frame.notes, width, height);
    text += "</g>\n";
  }
  return text + "</svg>\n";
}

}  // namespace play
