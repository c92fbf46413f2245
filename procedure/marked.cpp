#include "procedure/marked.h"

#include "include/lmainte_platform.h"
#include "include/lmainte_procedure.h"
#include "procedure/kinds.h"
#include "procedure/marks.h"
#include "procedure/results.h"
#include "procedure/telling.h"
#include "procedure/words.h"

namespace lmainte::procedure {
namespace {

const lmainte_swap_fru *first_marked() {
  lmainte_swap_fru *head = nullptr;
  lmainte_get_swap_fru_list(&head);
  return head;
}

UnitRecord record_of(const lmainte_swap_fru &entry) {
  UnitRecord unit = {static_cast<int32_t>(entry.unit_type),
                     static_cast<int32_t>(entry.unit_no),
                     0,
                     {entry.ident[0], entry.ident[1]},
                     {}};
  api_conv_unit_name_get(unit.ident, 0, unit.name, 0, 0);
  return unit;
}

}  // namespace

Marked::~Marked() {
  lmainte_free_swap_fru_list();
}

int32_t Marked::begin(bool has_died) {
  if (!read()) return LMAINTE_OUTCOME_FAILED;
  if (has_died) {
    has_all_back_ = take_back_what_was_left();
    if (!read()) return LMAINTE_OUTCOME_FAILED;
  }
  for (const lmainte_swap_fru *entry = first_marked(); entry != nullptr; entry = entry->next)
    lmainte_tell(words("%s is marked for replacement."), record_of(*entry).name);
  return LMAINTE_OUTCOME_DONE;
}

bool Marked::read() const {
  const int32_t count = lmainte_init_swap_fru_list(&server_.data());
  if (count < 0) failed(words("The units that are marked for replacement could not be read"), count, try_again());
  return count >= 0;
}

bool Marked::take_back_what_was_left() const {
  bool all = true;
  for (const lmainte_swap_fru *entry = first_marked(); entry != nullptr; entry = entry->next) {
    const UnitRecord unit = record_of(*entry);
    Marks marks(server_, unit);
    marks.take_over();
    const bool is_back = marks.take_back();
    if (is_back) lmainte_tell(words("It left %s marked. The marks were taken back."), unit.name);
    all = all && is_back;
    const Kind *const kind = kind_of_type(unit.type);
    if (kind != nullptr)
      advise(text_of(words("If %s is out of operation, put it back into operation with:"), unit.name).view(),
             procedure_command("add_unit", kind->word));
  }
  return all;
}

}  // namespace lmainte::procedure
