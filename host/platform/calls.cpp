#include "host/platform/calls.h"

#include <algorithm>
#include <atomic>
#include <cerrno>

#include "host/base/process_id.h"
#include "host/box/call_ring.h"
#include "host/box/place.h"
#include "host/platform/path_in_box.h"

namespace platform {
namespace {

constinit box::CallRing call_ring;
constinit std::atomic<pid_t> looked = 0;  // the process that has looked for the ring
constinit std::atomic<bool> is_deviated = false;

constinit pid_t stood_for = 0;  // the process that this one stands for; 0: none

void look_for_ring() noexcept {
  const PathInBox path(box::kCallsPath);
  if (path.is_whole()) call_ring.map(path.text());
  looked = base::process_id();
}

void keep(const box::Call &call) noexcept {
  // A box of an older spbox has no ring: who has not found it looks no more.
  if (call_ring.append(call) || looked == base::process_id()) return;
  look_for_ring();
  call_ring.append(call);
}

}  // namespace

box::Call begun_call() noexcept {
  is_deviated.store(false, std::memory_order_relaxed);
  box::Call call;
  call.time_ns = box::call_time();
  call.position = records_of_the_trace();
  return call;
}

void end_call(box::Call &call) noexcept {
  call.pid = kept_process();
  call.duration_ns = static_cast<std::uint64_t>(std::max<std::int64_t>(box::call_time() - call.time_ns, 0));
  call.deviated = is_deviated.load(std::memory_order_relaxed);
  keep(call);
}

pid_t kept_process() noexcept {
  return stood_for != 0 ? stood_for : base::process_id();
}

void stand_for(pid_t process) noexcept {
  stood_for = process;
}

bool command_begins(std::string_view words, pid_t parent) noexcept {
  look_for_ring();
  const std::uint32_t number = call_ring.number_of_next_command();
  if (number == 0) {
    looked = 0;  // a test sets its box later
    return false;
  }
  look_for_the_trace();
  KeptCall begin(box::CallKind::kBegin, words, static_cast<std::uint32_t>(parent), number);
  begin.ends_with(0);
  return true;
}

void command_ends(std::string_view words, int status) noexcept {
  KeptCall end(box::CallKind::kEnd, words);
  end.ends_with(status & 0xFF);
}

KeptCall::KeptCall(box::CallKind kind, std::string_view text, std::uint32_t first, std::uint32_t second) noexcept
    : call_(begun_call()) {
  call_.kind = kind;
  call_.text = text;
  call_.first = first;
  call_.second = second;
}

std::int32_t KeptCall::ends_with(std::int32_t result) noexcept {
  const int kept_errno = errno;
  call_.result = result;
  end_call(call_);
  errno = kept_errno;
  return result;
}

void call_deviates() noexcept {
  is_deviated.store(true, std::memory_order_relaxed);
}

}  // namespace platform
