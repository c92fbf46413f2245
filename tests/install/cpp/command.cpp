// The smallest command: which server is this?
#include <lmainte.h>
#include <lmainte_host.h>

#include <cstdio>

int main() {
  lmainte_model_data data{};
  const int32_t result = lmainte_get_model_data(&data, nullptr);
  std::printf("result %d, model %u, version %d.%d.%d\n", result, data.model, LMAINTE_VERSION_MAJOR,
              LMAINTE_VERSION_MINOR, LMAINTE_VERSION_PATCH);
  return result == LMAINTE_OK ? 0 : 1;
}
