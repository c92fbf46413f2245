// When something fails while a program runs.
#pragma once

#include <string>

#include "failures/calls.h"

namespace failures {

// A call of a process that the program started, or of itself. Its processes are numbered in the order in which each was
// started by its parent: "0" is the program itself, "0.2" the second process that it started.
struct Moment {
  std::string process, image;  // the image is the name of the program that the process was then
  const Call *call;
  unsigned number;  // of the calls of this kind in this process, from 1
};

struct Failure {
  enum class Lasting { kOnce, kTwice, kForEver };
  Moment moment;
  int error;
  Lasting lasting;

  // Whether the call of this process fails, too: the next one of the same kind, or all that come, of whichever process.
  bool reaches(const std::string &process, const Call &call, unsigned number, bool has_begun) const {
    if (&call != moment.call) return false;
    if (lasting == Lasting::kForEver && has_begun) return true;
    if (process != moment.process) return false;
    return number == moment.number || (lasting == Lasting::kTwice && number == moment.number + 1);
  }
};

// "spbox/0/openat/3/EIO/once"
inline std::string name_of(const Failure &failure) {
  const auto &[moment, error, lasting] = failure;
  constexpr const char *kNames[] = {"once", "twice", "for_ever"};
  return moment.image + "/" + moment.process + "/" + moment.call->name + "/" + std::to_string(moment.number) + "/" +
         error_name(error) + "/" + kNames[static_cast<int>(lasting)];
}

}  // namespace failures
