#include "host/play/player.h"

#include "host/base/told.h"
#include "host/play/layout.h"

namespace play {
namespace {

// The screen and the technicians' words belong to every failure: the reason is often there.
Failure failure(Stage &stage, const Step &step, std::string reason, const std::vector<std::string> &left = {}) {
  while (reason.ends_with('\n')) reason.pop_back();
  Account account{step.place, step.text, stage.operators.by(stage.box.without_folder(reason)), left, {}, ""};
  account.text = step.error(account.reason).what() + std::string("\n");
  account.screens = stage.operators.screens();
  for (const auto &screen : account.screens) account.text += framed(screen.rows, screen.caption);
  for (const auto &technician : stage.technicians.at_work()) {
    const auto output = stage.box.without_folder(technician.work.output());
    account.text += "The technician of " + technician.step->place + " until then:\n" +
                    (output.empty() ? "    nothing\n" : indented(output));
  }
  return Failure(account);
}

// Nobody looks on when the screen stands still.
void tell_where_it_was_interrupted(Stage &stage, const Step &step) {
  stage.account.ends({step.place, step.text, "", {}, stage.operators.last_screens(), ""});
}

void play_step(Stage &stage, const Step &step) {
  stage.account.begins(step.place, step.text);
  if (stage.chronicle != nullptr) stage.chronicle->begins(step);
  stage.operators.keep_up();
  try {
    step.row->perform(stage, stage.with_taken(step));
    if (stage.chronicle != nullptr) stage.chronicle->ends(stage);
  } catch (const terminal::Interrupted &) {
    tell_where_it_was_interrupted(stage, step);
    throw;
  } catch (const StepError &) {
    throw;
  } catch (const NotInOrder &wrong) {
    throw failure(stage, step, wrong.what(), wrong.left());
  } catch (const std::exception &wrong) {
    throw failure(stage, step, base::told(wrong));
  }
}

// Without the screens.
std::string reason_of(const Account &account) {
  return account.text.substr(0, account.text.find("\n+-- ") + 1);
}

void play_all(Stage &stage, const std::vector<Step> &steps) {
  try {
    for (const auto &step : steps) play_step(stage, step);
    wait_for_technicians(stage);
  } catch (const StepError &wrong) {
    throw failure(stage, wrong.step(), wrong.what());
  }
}

}  // namespace

void play_steps(Stage &stage, const std::vector<Step> &steps) {
  try {
    play_all(stage, steps);
  } catch (const Failure &failure) {
    stage.account.ends(failure.account());
    if (stage.chronicle != nullptr) stage.chronicle->fails(stage, reason_of(failure.account()));
    throw;
  } catch (const terminal::Interrupted &) {
    if (stage.chronicle != nullptr) stage.chronicle->fails(stage, "The play was interrupted here.");
    throw;
  }
}

}  // namespace play
