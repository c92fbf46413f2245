/* show_model - prints what server this is. */
#include <stdio.h>

#include "lmainte.h"

int main(void) {
  static const char *const names[] = {"none", "qb1", "qb2", "qe1", "qe2", "qe3", "qa"};
  lmainte_model_data model = {0};
  if (lmainte_get_model_data(&model, NULL) != LMAINTE_OK) {
    fputs("show_model: the model could not be read. The trace names the reason.\n", stderr);
    return 1;
  }
  printf("model %s: %u system boards, %u I/O units, %u fan trays, %u power supplies\n", names[model.model],
         model.unit[LMAINTE_SLOT_CMU].max_count, model.unit[LMAINTE_SLOT_IOU].max_count,
         model.unit[LMAINTE_SLOT_FAN].max_count, model.unit[LMAINTE_SLOT_PSU].max_count);
  if (fflush(stdout) == 0 && ferror(stdout) == 0) return 0;
  fputs("show_model: the line could not be written.\n", stderr);
  return 1;
}
