// Programs that concern the whole system, and the I/O expansion units beside it.
#include "host/programs/control_programs.h"

namespace programs {

int ctlmainte(const Arguments &arguments, Machine &machine) {
  const std::string mode = arguments.value('c');
  if (!arguments.words.empty() || !one_of(mode, {"lock", "unlock"})) return kUsage;
  const bool lock = mode == "lock";
  const bool locked = machine.hardware.set_maintenance_mode(lock);  // of two that lock, one comes second
  if (lock) return locked ? kRefused : kDone;
  return locked ? kDone : kNotInMode;
}

int ctlfan(const Arguments &arguments, Machine &machine) {
  const std::string speed = arguments.value('c');
  if (!arguments.words.empty() || !one_of(speed, {"low", "high", "full"})) return kUsage;
  if (!arguments.has('u')) {
    if (speed == "full") return kUsage;  // full speed is for the trays around one unit
    machine.hardware.set_fan_speed(speed);
    return kDone;
  }
  const std::string unit = arguments.value('u');
  if (!machine.has_unit(unit)) return kFanFailed;
  machine.hardware.set_fan(unit, speed);
  return kDone;
}

int vantamainte(const Arguments &arguments, Machine &machine) {
  if (!arguments.words.empty() || arguments.options.size() != 1) return kUsage;
  machine.hardware.set_report(arguments.has('s'));
  return kDone;
}

int ioadm(const Arguments &arguments, Machine &machine) {
  const bool power =
      arguments.options.empty() && arguments.words.size() == 2 && one_of(arguments.words[0], {"poweron", "poweroff"});
  const bool led =
      arguments.words.empty() && arguments.only("uc") && one_of(arguments.value('c'), {"on", "off", "blink"});
  if (!power && !led) return kUsage;
  const std::string unit = power ? arguments.words[1] : arguments.value('u');
  if (!machine.has_expansion(unit)) return kRefused;
  if (power) {
    machine.hardware.set_power(unit, arguments.words[0] == "poweron" ? "on" : "off");
  } else {
    machine.hardware.set_led(unit, arguments.value('c'));
  }
  return kDone;
}

int waitmgbready(const Arguments &arguments, Machine & /*machine*/) {
  return arguments.words.empty() ? kDone : kUsage;  // the service processor of a box is always ready
}

}  // namespace programs
