#include "host/play/stage.h"

namespace play {

void wait_for_technicians(Stage &stage) {
  stage.technicians.wait(stage.patience, [&](const SentTechnician &technician) {
    stage.narrator.remarks("The technician is done: " + technician.step->words[0],
                           stage.box.without_folder(technician.work.output()));
  });
}

}  // namespace play
