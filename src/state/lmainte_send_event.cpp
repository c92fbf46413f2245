#include "include/lmainte.h"

#include <cstddef>

#include "include/lmainte_platform.h"
#include "src/frame/trace.h"
#include "trace_events/state.h"

namespace {

using lmainte::Call;
using trace_events::FindEventCode;
using trace_events::SendEvent;

lmainte::Trace trace;
constexpr lmainte::Block kSendEvent = lmainte::block_of<SendEvent>();
constexpr lmainte::Block kFindCode = lmainte::block_of<FindEventCode>();

constexpr uint32_t kLogHead = 0x00030000;
constexpr uint8_t kEndOfCodes = 255;
constexpr int32_t kKindWithoutUnit = LMAINTE_KIND_DDC;

// The event as the log keeps it: 48 bytes, the most significant byte of each number first.
class Event {
 public:
  void put_byte(size_t offset, uint8_t value) { bytes_[offset] = value; }
  void put_half(size_t offset, uint16_t value) {
    put_byte(offset, static_cast<uint8_t>(value >> 8));
    put_byte(offset + 1, static_cast<uint8_t>(value));
  }
  void put_word(size_t offset, uint32_t value) {
    put_half(offset, static_cast<uint16_t>(value >> 16));
    put_half(offset + 2, static_cast<uint16_t>(value));
  }
  const void *bytes() const { return bytes_; }

 private:
  uint8_t bytes_[48] = {};
};

// The event begins the detail with the most significant byte of its first word. By this byte a reader of the log knows
// whether there is a detail.
bool has_detail(const EventUnit &unit) {
  return unit.detail[0] >> 24 != 0;
}

void put_unit(const EventUnit &unit, Event &event) {
  event.put_word(19, unit.ident[0]);
  event.put_word(23, unit.ident[1]);
  if (!has_detail(unit)) return;
  for (size_t i = 0; i < 4; ++i) event.put_word(29 + 4 * i, unit.detail[i]);
  event.put_half(45, unit.detail_value);
}

const lmainte_event_code *codes_of(int32_t action) {
  switch (action) {
    case LMAINTE_EVENT_REPLACED:
      return rep_code;
    case LMAINTE_EVENT_ADDED:
      return add_code;
    case LMAINTE_EVENT_REMOVED:
      return del_code;
    default:
      return nullptr;
  }
}

const lmainte_event_code *find_code(const lmainte_event_code *codes, int32_t fru_kind) {
  const Call call(trace, kFindCode);
  for (; codes->kind != kEndOfCodes; ++codes)
    if (codes->kind == fru_kind) return codes;
  call.error(FindEventCode::kNoCode, fru_kind);
  return nullptr;
}

}  // namespace

int32_t lmainte_send_event(int32_t action, int32_t fru_kind, const EventUnit *unit) {
  const Call call(trace, kSendEvent);
  Event event;
  if (unit == nullptr) {
    call.error(SendEvent::kNoUnit);
    return LMAINTE_FAILED;
  }
  event.put_byte(8, 215);
  event.put_byte(9, 2);
  if (fru_kind != kKindWithoutUnit) put_unit(*unit, event);
  const lmainte_event_code *codes = codes_of(action);
  if (codes == nullptr) {
    call.error(SendEvent::kNoAction, action);
    return LMAINTE_FAILED;
  }
  const lmainte_event_code *code = find_code(codes, fru_kind);
  if (code == nullptr) {
    call.error(SendEvent::kNoEvent, action, fru_kind);
    return LMAINTE_FAILED;
  }
  event.put_byte(11, code->code);
  const int32_t saved = mgblog_save(&kLogHead, event.bytes());
  call.point(SendEvent::kSaved, saved);
  if (saved >= 0) return LMAINTE_OK;
  call.system_error(SendEvent::kNotSaved, saved);
  return LMAINTE_FAILED;
}
