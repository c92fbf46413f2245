#include <cstring>

#include "host/platform/exported.h"
#include "host/target/line.h"
#include "include/lmainte_record.h"

int32_t api_conv_unit_name_get(const uint32_t *unit_id, int32_t form, char *name, int32_t unused_1, int32_t unused_2) {
  const uint64_t began = lmainte_record_begin();
  int32_t result = -1;
  std::array<char, wire::kKeyRoom> found{};
  target::Request request(wire::Kind::kName);
  request.fields.flag(unit_id != nullptr).flag(name != nullptr);
  for (int i = 0; i < 2; ++i) request.fields.word(unit_id == nullptr ? 0 : unit_id[i]);
  request.fields.number(form).number(unused_1).number(unused_2);
  const bool is_told = request.answered([&](wire::Reader &answer) {
    result = answer.number();
    const std::string_view text = answer.text(found.size() - 1);
    std::memcpy(found.data(), text.data(), text.size());
  });
  if (!is_told) result = -1;
  if (result == 0 && name != nullptr) std::memcpy(name, found.data(), std::strlen(found.data()) + 1);
  return lmainte_record_name(began, unit_id, form, name, result);
}
