#include "host/recorder/playwright.h"

#include <algorithm>
#include <array>

namespace recorder {
namespace {

constexpr char kInterrupt = '\003', kEndOfInput = '\004', kBackspace = '\b', kErase = '\177', kEraseLine = '\025',
               kStop = '\032', kQuit = '\034';

bool ends_line(char key) {
  constexpr std::string_view kEnds{"\n\r\003\004\032\034"};
  return kEnds.find(key) != std::string_view::npos;
}

// The last character goes, with all its bytes.
void erase_character(std::string &line) {
  while (!line.empty() && (static_cast<unsigned char>(line.back()) & 0xC0U) == 0x80) line.pop_back();
  if (!line.empty()) line.pop_back();
}

// Twice what it took, and what a reader knows.
int patience_for(milliseconds longest) {
  constexpr std::array<int, 6> kUsual{30, 60, 120, 300, 600, 1800};
  for (const int seconds : kUsual) {
    if (2 * longest <= std::chrono::seconds(seconds)) return seconds;
  }
  return 86400;
}

constexpr milliseconds kNoticed{4000};  // where the usual patience may not be enough

}  // namespace

void Playwright::starts(const play::Words &command) {
  parts_.push_back({Part::Kind::kGap});
  play::Words step{"start"};
  step.insert(step.end(), command.begin(), command.end());
  add(step);
}

// Nothing is waited for twice: what stood there at the last step has come already.
void Playwright::wait(const View &view) {
  const std::string text = deciding_text(view.fresh, seen_);
  seen_ = view.fresh;
  longest_ = std::max(longest_, view.waited);
  if (!text.empty()) parts_.push_back({Part::Kind::kStep, {"wait", text}, "", true});
}

bool Playwright::types(std::string_view keys, const View &view, Typing typing) {
  bool is_new = false;
  for (char key : keys) {
    if (key == '\r' && typing.maps_returns) key = '\n';
    if (!is_in_line_) {
      if (!is_new) wait(view);  // else they come ahead of what the command asks
      seen_.clear();
      is_new = is_in_line_ = true;
    }
    if (typing.lines && (key == kErase || key == kBackspace)) {
      erase_character(line_);
    } else if (typing.lines && key == kEraseLine) {
      line_.clear();
    } else {
      line_ += key;
    }
    if (!typing.lines || ends_line(key)) end_line();
  }
  return is_new;
}

// Keys that a play cannot tell from none are left out.
void Playwright::end_line() {
  is_in_line_ = false;
  if (!line_.empty()) add({"type", std::exchange(line_, "")});
}

void Playwright::does(const ToldDeed &deed, const View &view) {
  const auto begun = begun_.find(deed.who);
  if (deed.what == ToldDeed::What::kBegins) {
    if (deed.step.empty()) return;
    wait(view);
    begun_[deed.who] = parts_.size();
    return add(deed.step);
  }
  if (begun == begun_.end()) return;
  if (deed.what == ToldDeed::What::kFailed) parts_[begun->second].words.clear();
  begun_.erase(begun);
}

void Playwright::remarks(const std::string &text) {
  parts_.push_back({Part::Kind::kRemark, {}, text});
}

void Playwright::resizes(terminal::Size size) {
  add({"resize", std::to_string(size.rows), std::to_string(size.columns)});
}

void Playwright::line_is_cut(const View &view) {
  end_line();
  wait(view);
  add({"hangup"});
}

void Playwright::goes_on() {
  add({"signal", "CONT"});
}

void Playwright::ends(const terminal::Ending &ending, const View &view) {
  end_line();
  wait(view);
  add(play::step_of(ending));
}

void Playwright::is_in_order(const std::vector<std::string> &detached) {
  play::Words step{"in_order"};
  if (!detached.empty()) step.emplace_back("but");
  step.insert(step.end(), detached.begin(), detached.end());
  add(step);
}

void Playwright::logs(const Lines &entries) {
  if (entries.empty()) return;
  add({"spbox", "log"});
  Lines said;
  for (const std::string &entry : entries) {
    if (std::ranges::find(said, entry) != said.end()) continue;
    add({"says", entry});
    said.push_back(entry);
  }
}

void Playwright::breaks_off() {
  end_line();
  remarks("The recording broke off here.");
}

std::string Playwright::text() const {
  play::ScriptWriter script;
  for (const play::Words &step : opening_) script.step(step);
  if (longest_ >= kNoticed) script.step({"patience", std::to_string(patience_for(longest_))});
  for (const Part &part : parts_) {
    if (part.kind == Part::Kind::kGap) script.part();
    if (part.kind == Part::Kind::kRemark) script.remark(part.remark);
    if (part.kind == Part::Kind::kStep && !part.words.empty()) script.step(part.words);
  }
  return script.text();
}

}  // namespace recorder
