#include "host/play/technicians.h"

#include <stdexcept>

#include "host/script/values.h"

namespace play {

using std::chrono::milliseconds;

void Technicians::add(const Step &step, terminal::BackgroundProgram work, milliseconds patience) {
  at_work_.push_back({&step, std::move(work)});
  auto &technician = at_work_.back().work;
  const auto is_ready = technician.wait_until_ready(patience);
  if (!is_ready) throw std::runtime_error("the technician did not come in " + script::seconds_text(patience) + ".");
  if (*is_ready) return;
  technician.wait(patience);  // for the last words
  throw std::runtime_error("the technician gave up.");
}

void Technicians::wait(milliseconds patience, const std::function<void(const SentTechnician &)> &tell) {
  for (; !at_work_.empty(); at_work_.pop_front()) {
    auto &technician = at_work_.front();
    const auto status = technician.work.wait(patience);
    if (!status) {
      throw StepError(*technician.step, "the technician's work was not done " + script::seconds_text(patience) +
                                            " after it was asked for.");
    }
    if (*status != 0) throw StepError(*technician.step, "the technician gave up.");
    tell(technician);
  }
}

}  // namespace play
