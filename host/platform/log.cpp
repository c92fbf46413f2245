#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ctime>

#include "host/box/event_log.h"
#include "host/box/place.h"
#include "host/platform/exported.h"

int32_t mgblog_save(const uint32_t *head, const void *record) {
  if (head == nullptr || record == nullptr) {
    errno = EINVAL;
    return -1;
  }
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  box::LogEntry entry{static_cast<std::int64_t>(now.tv_sec) * 1'000'000'000 + now.tv_nsec,
                      static_cast<std::uint32_t>(getpid()),
                      *head,
                      {}};
  std::memcpy(entry.event.data(), record, entry.event.size());
  try {
    return box::EventLog::append(box::Place::here().events(), entry) ? 0 : -1;
  } catch (...) {
    errno = ENOMEM;
    return -1;
  }
}
