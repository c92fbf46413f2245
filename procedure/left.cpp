#include "procedure/left.h"

#include <cstddef>

#include "include/lmainte_platform.h"
#include "include/lmainte_procedure.h"
#include "procedure/telling.h"
#include "procedure/words.h"

namespace procedure {

void log_left(uint8_t what, const UnitRecord *unit) {
  constexpr uint32_t kHead = LMAINTE_LEFT_HEAD;
  uint8_t event[LMAINTE_LEFT_SIZE] = {};
  event[LMAINTE_LEFT_SOURCE_AT] = LMAINTE_LEFT_SOURCE;
  event[LMAINTE_LEFT_FORM_AT] = LMAINTE_LEFT_FORM;
  event[LMAINTE_LEFT_CODE_AT] = what;
  for (size_t i = 0; unit != nullptr && i < sizeof unit->ident; ++i)  // the most significant byte first
    event[LMAINTE_LEFT_UNIT_AT + i] = static_cast<uint8_t>(unit->ident[i / 4] >> (24 - 8 * (i % 4)));
  if (mgblog_save(&kHead, event) < 0) tell(words("The log has no record of this. Is the disk of the log full?"));
}

}  // namespace procedure
