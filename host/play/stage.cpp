#include "host/play/stage.h"

namespace play {

void Stage::take(const Step &step, const std::string &value) {
  taken_[step.slot] = value;
  narrator.remarks("$" + step.words[0] + " is: " + value);
}

const Step &Stage::with_taken(const Step &step) {
  if (step.late.empty()) return step;
  Step &filled = filled_.emplace_back(step);
  for (const LateWord &word : step.late) {
    std::string &text = filled.words[word.number];
    text.clear();
    for (const LatePart &part : word.text) text += part.slot < 0 ? part.text : taken_.at(part.slot);
  }
  if (step.row->check != nullptr) step.row->check(filled.words);
  return filled;
}

void wait_for_technicians(Stage &stage) {
  stage.technicians.wait(stage.patience, [&](const SentTechnician &technician) {
    stage.narrator.remarks("The technician is done: " + technician.step->words[0],
                           stage.box.without_folder(technician.work.output()));
  });
}

}  // namespace play
