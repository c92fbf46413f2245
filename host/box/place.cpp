#include "host/box/place.h"

#include <cstdlib>

namespace box {

Place Place::here() {
  const char *root = std::getenv("SPBOX_ROOT");
  return Place(root != nullptr && *root != '\0' ? root : "/");
}

}  // namespace box
