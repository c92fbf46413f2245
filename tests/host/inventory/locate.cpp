// Prints the unit id of every location given, as the library's position of it makes one, or the result where there is none.

#include <cstdio>

#include "lmainte.h"

int main(int argc, char **argv) {
  for (int i = 1; i < argc; ++i) {
    lmainte_unit_position at = {};
    const int32_t result = lmainte_get_unit_position_id(LMAINTE_POSITION_UNIT, argv[i], &at);
    if (result == LMAINTE_OK)
      std::printf("%s 0x%02X%02X%02X%02X 0x%02X%02X%02X%02X\n", argv[i], at.type, at.count, at.id[0], at.id[1],
                  at.id[2], at.id[3], at.id[4], at.id[5]);
    else
      std::printf("%s %d\n", argv[i], result);
  }
  return 0;
}
