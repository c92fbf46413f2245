#include "host/play/player.h"

#include "host/base/told.h"
#include "host/play/layout.h"

namespace play {
namespace {

// The screen and the technicians' words belong to every failure: the reason is often there.
Failure failure(Stage &stage, const Step &step, std::string reason) {
  while (reason.ends_with('\n')) reason.pop_back();
  std::string text = step.error(stage.box.without_folder(reason)).what() + std::string("\n");
  if (const auto screen = stage.op.screen()) text += framed(*screen, "the screen");
  for (const auto &technician : stage.technicians.at_work()) {
    const auto output = stage.box.without_folder(technician.work.output());
    text += "The technician of " + technician.step->place + " until then:\n" +
            (output.empty() ? "    nothing\n" : indented(output));
  }
  return Failure(text);
}

void play_step(Stage &stage, const Step &step) {
  try {
    step.row->perform(stage, step);
  } catch (const terminal::Interrupted &) {
    throw;
  } catch (const StepError &) {
    throw;
  } catch (const std::exception &wrong) {
    throw failure(stage, step, base::told(wrong));
  }
}

}  // namespace

void play_steps(Stage &stage, const std::vector<Step> &steps) {
  try {
    for (const auto &step : steps) play_step(stage, step);
    wait_for_technicians(stage);
  } catch (const StepError &wrong) {
    throw failure(stage, wrong.step(), wrong.what());
  }
}

}  // namespace play
