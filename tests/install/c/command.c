/* The smallest command: which server is this? */
#include <stdio.h>

#include <lmainte.h>

int main(void) {
  lmainte_model_data data = {0};
  const int32_t result = lmainte_get_model_data(&data, NULL);
  printf("result %d, model %u, version %d.%d.%d\n", (int)result, (unsigned)data.model, LMAINTE_VERSION_MAJOR,
         LMAINTE_VERSION_MINOR, LMAINTE_VERSION_PATCH);
  return result == LMAINTE_OK ? 0 : 1;
}
