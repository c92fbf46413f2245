#include "host/box/place.h"

#include <cstdlib>

#include "host/include/lmainte_host.h"

namespace box {

Place Place::here() {
  const char *root = std::getenv(LMAINTE_HOST_ROOT);
  return Place(root != nullptr && *root != '\0' ? root : "/");
}

}  // namespace box
