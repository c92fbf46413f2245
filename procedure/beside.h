// What the operator sees while an operation runs: that time passes, and that Ctrl-C was heard.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <ctime>

#include "procedure/session.h"
#include "procedure/text.h"

namespace lmainte::procedure {

enum class Line : time_t {
  kAtOnce = 0,
  kWhenSlow = 5  // seconds: an operation of three control programs takes three
};

// A child of the command beside an operation. The operation itself, and the control programs that it runs, do not hear
// of Ctrl-C: this child does, and answers at once. It also draws the library's progress line, no longer than the
// operation may take.
class Beside {
 public:
  Beside(const char *message, int32_t longest, Line line);
  ~Beside();
  Beside(const Beside &) = delete;
  Beside &operator=(const Beside &) = delete;

 private:
  pid_t child_;
};

// Runs an operation. Ctrl-C does not reach its control programs, nor cut the library's waiting short; it is heeded
// before the next question.
template <class Operation>
int32_t with_progress(const Text &message, int32_t longest, Operation operation, Line line = Line::kAtOnce) {
  const Undisturbed undisturbed;
  const Beside beside(message.c_str(), longest, line);
  return operation();
}

// The same for an operation that takes a second or two, unless a control program is slow or hangs.
template <class Operation>
int32_t with_late_progress(const Text &message, int32_t longest, Operation operation) {
  return with_progress(message, longest, operation, Line::kWhenSlow);
}

}  // namespace lmainte::procedure
