#include <cerrno>

#include "host/platform/exported.h"
#include "host/target/line.h"
#include "include/lmainte_record.h"

int32_t mgblog_save(const uint32_t *head, const void *record) {
  const uint64_t began = lmainte_record_begin();
  int32_t result = -1, reason = EIO, told = -1, told_reason = EIO;
  target::Request request(wire::Kind::kLog);
  request.fields.flag(head != nullptr).flag(record != nullptr).word(head == nullptr ? 0 : *head);
  constexpr std::size_t kSize = LMAINTE_HOST_EVENT_SIZE;
  request.fields.text({static_cast<const char *>(record), record == nullptr ? 0 : kSize});
  const bool is_told = request.answered([&](wire::Reader &answer) {
    told = answer.number();
    told_reason = answer.number();
  });
  if (is_told) {
    result = told;
    reason = told_reason;
  }
  if (result < 0) errno = reason;
  return lmainte_record_log(began, head, record, result);
}
