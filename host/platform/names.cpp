#include <cstring>

#include "host/box/place.h"
#include "host/box/unit_name.h"
#include "host/platform/calls.h"
#include "host/platform/exported.h"
#include "host/platform/points.h"
#include "include/lmainte_record.h"

namespace {

constexpr int32_t kWholeLocation = 0;
constexpr int32_t kLastComponent = 1;
constexpr std::size_t kNameRoom = 128;

int32_t name_of(const uint32_t *unit_id, int32_t form, char *name, int32_t unused_1, int32_t unused_2) {
  if (unit_id == nullptr || name == nullptr || unused_1 != 0 || unused_2 != 0) return -1;
  if (form != kWholeLocation && form != kLastComponent) return -1;
  if (platform::is_refused(box::PointKind::kName, {})) return -1;
  try {
    const auto found = box::unit_name(box::model_in(box::Place::here()), {unit_id[0], unit_id[1]});
    if (!found) return -1;
    const char *text = found->c_str() + (form == kLastComponent ? found->rfind('/') + 1 : 0);
    const std::size_t size = std::strlen(text) + 1;
    if (size > kNameRoom) return -1;
    std::memcpy(name, text, size);
    return 0;
  } catch (...) {
    return -1;
  }
}

}  // namespace

int32_t api_conv_unit_name_get(const uint32_t *unit_id, int32_t form, char *name, int32_t unused_1, int32_t unused_2) {
  const uint64_t began = lmainte_record_begin();
  platform::KeptCall call(box::CallKind::kName);
  if (unit_id != nullptr) {
    call.set_first(unit_id[0]);
    call.set_second(unit_id[1]);
  }
  const int32_t result = name_of(unit_id, form, name, unused_1, unused_2);
  if (result == 0) call.set_text(name);
  return lmainte_record_name(began, unit_id, form, name, call.ends_with(result));
}
