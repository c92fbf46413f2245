#include <cerrno>

#include "host/box/event_log.h"
#include "host/box/place.h"
#include "host/platform/calls.h"
#include "host/platform/exported.h"
#include "host/platform/points.h"
#include "include/lmainte_record.h"

namespace {

int32_t save(const uint32_t *head, const void *record) {
  if (head == nullptr || record == nullptr) {
    errno = EINVAL;
    return -1;
  }
  if (platform::is_refused(box::PointKind::kLog, {})) {
    errno = EIO;
    return -1;
  }
  const box::Event event(static_cast<const std::uint8_t *>(record), LMAINTE_HOST_EVENT_SIZE);
  try {
    return box::EventLog::append(box::Place::here().events(), *head, event, platform::kept_process()) ? 0 : -1;
  } catch (...) {
    errno = ENOMEM;
    return -1;
  }
}

}  // namespace

int32_t mgblog_save(const uint32_t *head, const void *record) {
  const uint64_t began = lmainte_record_begin();
  platform::KeptCall call(box::CallKind::kLog);
  if (head != nullptr) call.set_first(*head);
  if (record != nullptr) call.set_text({static_cast<const char *>(record), LMAINTE_HOST_EVENT_SIZE});
  return lmainte_record_log(began, head, record, call.ends_with(save(head, record)));
}
