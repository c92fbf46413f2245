#include "host/report/report.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string_view>
#include <utility>

#include "host/base/shown.h"
#include "host/base/xml.h"
#include "host/report/page.h"

namespace report {
namespace {

using std::chrono::milliseconds;

// A text in HTML, whatever its bytes.
std::string html(std::string_view text) {
  return base::xml(base::shown(text));
}
std::string html_lines(std::string_view text) {
  return base::xml(base::shown_lines(text));
}

std::string seconds_text(milliseconds time) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%.1f s", static_cast<double>(time.count()) / 1000);
  return text.data();
}

std::string number_of(std::size_t count, const char *what) {
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

// The sixteen colours of a terminal by their class; others by their value.
std::string colour(const std::optional<terminal::Colour> &colour, const char *cls, const char *style,
                   std::string &styles) {
  if (!colour) return "";
  if (colour->index < 16) return std::string(" ") + cls + std::to_string(colour->index);
  std::array<char, 48> text{};
  std::snprintf(text.data(), text.size(), "%s:#%02x%02x%02x;", style, colour->red, colour->green, colour->blue);
  styles += text.data();
  return "";
}

std::string stretch_of(const terminal::PaintedText &part) {
  const terminal::Look &look = part.look;
  std::optional<terminal::Colour> front = look.front, back = look.back;
  std::string classes, styles;
  if (look.reverse) {
    std::swap(front, back);
    classes += front ? "" : " front";
    classes += back ? "" : " back";
  }
  classes += colour(front, "c", "color", styles) + colour(back, "g", "background", styles);
  classes += std::string(look.bold ? " b" : "") + (look.underline ? " u" : "") + (look.italic ? " i" : "");
  if (classes.empty() && styles.empty()) return html(part.text);
  std::string tag = "<span";
  if (!classes.empty()) tag += R"( class=")" + classes.substr(1) + R"(")";
  if (!styles.empty()) tag += R"( style=")" + styles + R"(")";
  return tag + ">" + html(part.text) + "</span>";
}

std::string rows_of(const std::vector<terminal::PaintedRow> &rows) {
  std::size_t last = rows.size();
  while (last > 0 && rows[last - 1].empty()) --last;
  std::string text;
  for (std::size_t i = 0; i < last; ++i) {
    for (const terminal::PaintedText &part : rows[i]) text += stretch_of(part);
    text += '\n';
  }
  return text;
}

std::string lines_of(const std::vector<std::string> &lines) {
  std::string text;
  for (const std::string &line : lines) text += html(line) + "\n";
  return text;
}

std::string as_heading(std::string caption) {
  if (!caption.empty() && caption[0] >= 'a' && caption[0] <= 'z')
    caption[0] = static_cast<char>(caption[0] - 'a' + 'A');
  return caption;
}

// A piece that stands at the first step that has it; later ones refer to it.
class Once {
 public:
  explicit Once(std::string name) : name_(std::move(name)) {}

  std::string of(const std::string &text, const char *cls, const std::string &label) {
    const std::string attributes =
        std::string(R"( class=")") + cls + R"(" tabindex="0" role="group" aria-label=")" + html(label) + R"(")";
    if (text == last_ && !id_.empty())
      return R"(<div class="same" data-of=")" + id_ + "\">As at the step before.</div>\n";
    last_ = text;
    id_ = name_ + std::to_string(++count_);
    return R"(<pre id=")" + id_ + R"(")" + attributes + ">" + text + "</pre>\n";
  }

 private:
  std::string name_, last_, id_;
  std::size_t count_ = 0;
};

std::string label_of(const Step &step, std::size_t number, const Play &play, bool is_wrong) {
  return "Step " + std::to_string(number) + " of " + std::to_string(play.steps.size()) +
         (is_wrong ? ", which failed" : "") + ", at " + seconds_text(step.time) + ": " + step.text;
}

std::string deeds_of(const Step &step) {
  std::string text;
  for (const Deed &deed : step.deeds) {
    text += R"(<p class="deed">)" + html(deed.sentence) + "</p>\n";
    if (!deed.output.empty())
      text += R"(<pre tabindex="0" role="group" aria-label="What was printed">)" + html_lines(deed.output) + "</pre>\n";
  }
  return text;
}

// What differs from the step before is new: a screen has its own.
class Writer {
 public:
  explicit Writer(const Play &play) : play_(play) {}

  std::string article(std::size_t number) {
    const Step &step = play_.steps[number];
    const bool is_wrong = is_wrong_at(number);
    const std::string id = "step-" + std::to_string(number + 1);
    std::string text = R"(<article id=")" + id + R"(")" + (is_wrong ? R"( class="wrong")" : "") + R"( aria-label=")" +
                       html(label_of(step, number + 1, play_, is_wrong)) + R"(" data-trace=")" +
                       std::to_string(trace_at(step)) + R"(" data-log=")" +
                       std::to_string(std::min(step.log, play_.log.size())) + "\">\n<h2>" + (is_wrong ? "✗ " : "") +
                       "Step " + std::to_string(number + 1) + ", " + html(step.place) + ", at " +
                       seconds_text(step.time) + "</h2>\n<p class=\"step-text\">" + html(step.text) + "</p>\n";
    if (is_wrong) text += "<h3>Why it failed</h3>\n<div class=\"why\">" + html_lines(play_.reason) + "</div>\n";
    text += deeds_of(step) + "<div class=\"both\">\n";
    if (step.screens) {
      for (const Screen &screen : *step.screens) {
        text += "<section>\n<h3>" + html(as_heading(screen.caption)) + "</h3>\n" +
                screens_.of(rows_of(screen.rows), "screen", screen.caption) + "</section>\n";
      }
    }
    if (step.server && !step.server->empty()) {
      text += "<section>\n<h3>The server</h3>\n" + servers_.of(lines_of(*step.server), "server", "The server") +
              "</section>\n";
    }
    return text + "</div>\n</article>\n";
  }

  std::string mark(std::size_t number) const {
    const Step &step = play_.steps[number];
    const bool is_wrong = is_wrong_at(number);
    const char *cls = is_wrong ? R"( class="wrong")" : !step.deeds.empty() ? R"( class="shows")" : "";
    const std::string label = html(label_of(step, number + 1, play_, is_wrong));
    return R"(<li><a href="#step-)" + std::to_string(number + 1) + R"(")" + cls + R"( title=")" + label +
           R"(" aria-label=")" + label + R"(">)" + (is_wrong ? "✗" : std::to_string(number + 1)) + "</a></li>\n";
  }

 private:
  bool is_wrong_at(std::size_t number) const { return !play_.reason.empty() && number + 1 == play_.steps.size(); }
  std::size_t trace_at(const Step &step) const {
    const std::size_t out = left_out(play_);
    return step.trace < out ? 0 : step.trace - out;
  }

 public:
  static std::size_t left_out(const Play &play) {
    return play.trace_left_out + (play.trace.size() > kMostTrace ? play.trace.size() - kMostTrace : 0);
  }

 private:
  const Play &play_;
  Once screens_{"screen-"}, servers_{"server-"};
};

std::string verdict_of(const Play &play) {
  if (play.steps.empty()) return R"(<p class="verdict">There is no step.</p>)";
  std::string all = number_of(play.steps.size(), "step") + " in " + seconds_text(play.steps.back().time);
  if (play.steps_left_out > 0) all += "; " + number_of(play.steps_left_out, "older step") + " left out";
  if (play.reason.empty())
    return R"(<p class="verdict"><span class="passed">✓ )" + html(play.done) + "</span>: " + all + ".</p>";
  return R"(<p class="verdict"><span class="failed">✗ Failed</span> at )" + html(play.steps.back().place) + ", after " +
         all + ".</p>";
}

std::string colours() {
  constexpr std::array<const char *, 16> kColours{"#3b4252", "#ff7b72", "#7ee787", "#f2cc60", "#79b8ff", "#d2a8ff",
                                                  "#76e3ea", "#dfe3ea", "#8b949e", "#ffa198", "#a5f3b4", "#f8e3a1",
                                                  "#a5d6ff", "#e2c5ff", "#b3f0f6", "#ffffff"};
  std::string text;
  for (std::size_t i = 0; i < kColours.size(); ++i) {
    const std::string number = std::to_string(i);
    const std::string colour = std::string(kColours.at(i)) + "}";
    text.append(".c").append(number).append("{color:").append(colour);
    text.append(".g").append(number).append("{background:").append(colour);
  }
  return text + ".front{color:#1c2029}.back{background:#dfe3ea}";
}

// The page with its places filled: what fills one is not looked through again.
std::string filled(std::string_view page, const std::vector<std::pair<std::string_view, std::string>> &places) {
  std::string text;
  while (!page.empty()) {
    const std::size_t begin = std::min(page.find('@'), page.size());
    text += page.substr(0, begin);
    page.remove_prefix(begin);
    const auto place =
        std::ranges::find_if(places, [&](const auto &each) { return page.substr(0, each.first.size()) == each.first; });
    if (place != places.end()) text += place->second;
    if (place == places.end()) text += page.substr(0, 1);
    page.remove_prefix(std::min(place == places.end() ? 1 : place->first.size(), page.size()));
  }
  return text;
}

}  // namespace

std::string page_of(const Play &play) {
  Writer writer(play);
  std::string steps, line, trace, log;
  for (std::size_t i = 0; i < play.steps.size(); ++i) {
    steps += writer.article(i);
    line += writer.mark(i);
  }
  const std::size_t out = Writer::left_out(play);
  for (std::size_t i = out - play.trace_left_out; i < play.trace.size(); ++i) {
    const TraceLine &each = play.trace[i];
    trace += std::string(each.is_error ? R"(<li class="error">! )" : "<li>") + html(each.text) + "</li>\n";
  }
  for (const std::string &each : play.log) log += "<li>" + html(each) + "</li>\n";
  const std::string left_out = out == 0 ? "" : "<p>" + number_of(out, "older line") + " left out.</p>\n";
  return filled(kPage, {{"@TITLE@", html("The " + play.what + " " + play.name)},
                        {"@WHAT@", html(play.what)},
                        {"@COLOURS@", colours()},
                        {"@VERDICT@", verdict_of(play)},
                        {"@WRONG@", play.reason.empty() ? " hidden" : ""},
                        {"@LINE@", line},
                        {"@STEPS@", steps},
                        {"@TRACE_LEFT_OUT@", left_out},
                        {"@TRACE_START@", std::to_string(out + 1)},
                        {"@TRACE@", trace},
                        {"@LOG@", log}});
}

}  // namespace report
