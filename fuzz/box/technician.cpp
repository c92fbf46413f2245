// Technicians' scripts. One that makes no sense is refused in words; one that is taken has steps, and their texts, one in each
// line, are the same script again.
#include "fuzz/box/targets.h"
#include "host/technician/step.h"

namespace fuzz {

void run_technician(Input input) {
  std::vector<technician::Step> steps;
  const std::string refusal = refusal_of<script::Error>(
      "a technician's script", [&] { steps = technician::read_script(text_of(input), "input"); });
  if (!refusal.empty()) return require(refusal.find("input") != std::string::npos, "a refusal names the script");
  require(!steps.empty(), "a script that is taken has a step");
  std::string written;
  for (const technician::Step &step : steps) written += step.text + "\n";
  const auto again = technician::read_script(written, "");
  require(again.size() == steps.size(), "the texts of the steps are as many steps");
  for (std::size_t i = 0; i < steps.size(); ++i) {
    require(again[i].row == steps[i].row && again[i].words == steps[i].words,
            "the text of a step stands for its words: " + steps[i].text);
  }
}

}  // namespace fuzz
