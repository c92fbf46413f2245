#include "host/spbox/damaged_files.h"

#include <unistd.h>

#include <array>
#include <csignal>
#include <string_view>

#include "host/box/data_file.h"
#include "host/box/full_file.h"
#include "host/spbox/verb.h"

namespace spbox {
namespace {

constexpr std::array kCrashes{SIGSEGV, SIGABRT, SIGFPE, SIGILL};
std::array<struct sigaction, kCrashes.size()> handlers_before{};

[[noreturn]] void end_with(std::string_view words) {
  [[maybe_unused]] const ssize_t nobody_can_be_told = write(STDERR_FILENO, words.data(), words.size());
  _exit(kFailure);
}

void on_bus_error(int) {
  end_with("spbox: the data file of the box cannot be read: it was cut short meanwhile, or the disk fails.\n");
}

// After the return the same happens again, with the handler that was there before.
void on_crash(int signal) {
  if (box::is_in_data_file()) {
    end_with(
        "spbox: the data file of the box is damaged: reading it led astray. Make the box anew, or load a dump of "
        "it.\n");
  }
  for (std::size_t i = 0; i < kCrashes.size(); ++i) {
    if (kCrashes.at(i) == signal) sigaction(signal, &handlers_before.at(i), nullptr);
  }
}

}  // namespace

void tell_of_damaged_files() {
  box::survive_full_files();
  std::signal(SIGBUS, on_bus_error);
  static std::array<char, 16384> stack{};  // where the process's own may be used up
  const stack_t other{stack.data(), 0, stack.size()};
  sigaltstack(&other, nullptr);
  for (std::size_t i = 0; i < kCrashes.size(); ++i) {
    struct sigaction now {};
    now.sa_handler = on_crash;
    now.sa_flags = SA_ONSTACK | SA_NODEFER;
    sigaction(kCrashes.at(i), &now, &handlers_before.at(i));
  }
}

}  // namespace spbox
