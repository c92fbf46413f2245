#include "host/play/step.h"

namespace play {

std::span<const StepRow> step_rows() {
  static const std::vector<StepRow> all = [] {
    std::vector<StepRow> rows;
    for (const auto part :
         {steps_that_set_up(), steps_of_the_operator(), steps_of_the_technician(), steps_that_check()}) {
      rows.insert(rows.end(), part.begin(), part.end());
    }
    return rows;
  }();
  return all;
}

script::Error Step::error(const std::string &reason) const {
  return script::Error(Statement::error(reason).what() + via);
}

void check_is_text(const std::string &word) {
  if (word.find_first_not_of(' ') == std::string::npos) throw std::invalid_argument("the text is empty");
}

Sought::Sought(const Words &words) : text_(words.back()), shown_("\"" + text_ + "\"") {
  check_is_text(text_);
  if (words.size() == 1) return;
  pattern_.emplace(text_);
  shown_.insert(0, "a line like ");
}

std::optional<script::Match> Sought::find(std::string_view line, std::size_t from) const {
  if (pattern_) return pattern_->find(line, from);
  const auto at = line.find(text_, from);
  return at == std::string_view::npos ? std::nullopt : std::optional(script::Match{at, text_.size(), text_});
}

}  // namespace play
