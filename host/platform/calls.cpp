#include "host/platform/calls.h"

#include <stdlib.h>  // NOLINT(modernize-deprecated-headers): on_exit is in this one
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>

#include "host/base/process_id.h"
#include "host/box/place.h"
#include "host/platform/path_in_box.h"

namespace platform {
namespace {

constinit box::CallRing call_ring;
constinit std::atomic<pid_t> looked = 0;  // the process that has looked for the ring
constinit std::atomic<bool> is_deviated = false;

// What the command is called, as far as a record has room.
struct ArgumentLine {
  char text[box::CallRing::kLongestText];
  std::size_t length;

  void add(std::string_view part) {
    const std::size_t size = std::min(part.size(), sizeof text - length);
    if (size != 0) std::memcpy(text + length, part.data(), size);
    length += size;
  }
};
constinit ArgumentLine argument_line{};
constinit pid_t begun = 0;  // the process that has begun here, and no child of it

void look_for_ring() noexcept {
  const PathInBox path(box::kCallsPath);
  if (path.is_whole()) call_ring.map(path.text());
  looked = base::process_id();
}

void keep(const box::Call &call) noexcept {
  // A box of an older spbox has no ring: who has not found it looks no more.
  if (call_ring.append(call) || looked == call.pid) return;
  look_for_ring();
  call_ring.append(call);
}

void keep_end(int status, void * /*unused*/) {
  if (base::process_id() != begun) return;
  KeptCall end(box::CallKind::kEnd, {argument_line.text, argument_line.length});
  end.ends_with(status & 0xFF);
}

// The command begins when it loads the platform. It ends by exit; one that is killed leaves no record of its end.
[[gnu::constructor]] void keep_begin(int argc, char **argv) {
  for (int i = 0; i < argc && argv[i] != nullptr; ++i) {
    if (i > 0) argument_line.add(" ");
    argument_line.add(argv[i]);
  }
  begun = base::process_id();
  look_for_ring();
  const std::uint32_t number = call_ring.number_of_next_command();
  if (number == 0) {
    looked = 0;  // a test sets its box later
    return;
  }
  look_for_the_trace();
  KeptCall begin(box::CallKind::kBegin, {argument_line.text, argument_line.length},
                 static_cast<std::uint32_t>(getppid()), number);
  begin.ends_with(0);
  on_exit(keep_end, nullptr);
}

}  // namespace

KeptCall::KeptCall(box::CallKind kind, std::string_view text, std::uint32_t first, std::uint32_t second) noexcept {
  is_deviated.store(false, std::memory_order_relaxed);
  call_.kind = kind;
  call_.time_ns = box::call_time();
  call_.position = records_of_the_trace();
  call_.text = text;
  call_.first = first;
  call_.second = second;
}

std::int32_t KeptCall::ends_with(std::int32_t result) noexcept {
  const int kept_errno = errno;
  call_.pid = base::process_id();
  call_.duration_ns = static_cast<std::uint64_t>(std::max<std::int64_t>(box::call_time() - call_.time_ns, 0));
  call_.result = result;
  call_.deviated = is_deviated.load(std::memory_order_relaxed);
  keep(call_);
  errno = kept_errno;
  return result;
}

void call_deviates() noexcept {
  is_deviated.store(true, std::memory_order_relaxed);
}

}  // namespace platform
