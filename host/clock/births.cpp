#include "host/clock/births.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <string_view>

#include "host/base/number.h"

namespace box_time {
namespace {

// More than so many are found faster by a look at all.
constexpr pid_t kMostBirths = 512;

// The numbers below /proc are those of the system of numbers in which this process lives.
bool has_own_numbers() {
  std::array<char, 32> self{};
  const ssize_t length = readlink("/proc/self", self.data(), self.size());
  return length > 0 &&
         base::number_in<pid_t>(std::string_view(self.data(), static_cast<std::size_t>(length))) == getpid();
}

}  // namespace

Births::Births() : file_(has_own_numbers() ? open("/proc/sys/kernel/ns_last_pid", O_RDONLY | O_CLOEXEC) : -1) {}

std::optional<pid_t> Births::last_number() const {
  std::array<char, 32> text{};
  const ssize_t length = file_.get() < 0 ? -1 : pread(file_.get(), text.data(), text.size(), 0);
  if (length <= 1) return std::nullopt;
  return base::number_in<pid_t>(std::string_view(text.data(), static_cast<std::size_t>(length) - 1));
}

std::optional<std::vector<pid_t>> Births::look() {
  seen_ = last_number();
  const bool can_be_told = seen_ && known_ && *seen_ >= *known_ && *seen_ - *known_ <= kMostBirths;
  if (!can_be_told) return std::nullopt;
  std::vector<pid_t> born;
  for (pid_t number = *known_ + 1; number <= *seen_; ++number) born.push_back(number);
  return born;
}

}  // namespace box_time
