#include "procedure/log.h"

#include <cstddef>

#include "include/lmainte_platform.h"
#include "include/lmainte_procedure.h"
#include "procedure/telling.h"
#include "procedure/words.h"
#include "procedure/work.h"

namespace lmainte::procedure {

bool log_event(uint8_t form, uint8_t code, const UnitRecord *unit) {
  constexpr uint32_t kHead = LMAINTE_LEFT_HEAD;
  uint8_t event[LMAINTE_LEFT_SIZE] = {};
  event[LMAINTE_LEFT_SOURCE_AT] = LMAINTE_LEFT_SOURCE;
  event[LMAINTE_LEFT_FORM_AT] = form;
  event[LMAINTE_LEFT_CODE_AT] = code;
  for (size_t i = 0; unit != nullptr && i < sizeof unit->ident; ++i)  // the most significant byte first
    event[LMAINTE_LEFT_UNIT_AT + i] = static_cast<uint8_t>(unit->ident[i / 4] >> (24 - 8 * (i % 4)));
  const bool is_saved = mgblog_save(&kHead, event) >= 0;
  if (!is_saved) tell(words("The log has no record of this. Is the disk of the log full?"));
  return is_saved;
}

void log_left(uint8_t what, const UnitRecord *unit) {
  log_event(LMAINTE_LEFT_FORM, what, unit);
}

}  // namespace lmainte::procedure

int32_t lmainte_work_log(const lmainte_work *work, uint8_t form, uint8_t code) {
  const bool is_own = form >= LMAINTE_LOG_OWN;
  return is_own && lmainte::procedure::log_event(form, code, &work->unit.record) ? LMAINTE_OK : LMAINTE_FAILED;
}
