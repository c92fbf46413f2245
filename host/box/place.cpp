#include "host/box/place.h"

#include <cstdlib>

#include "host/include/lmainte_host.h"

namespace box {

std::string DatabaseName::text() const {
  const std::string name = number == kOwnDatabase ? "the box's own database" : "database " + std::to_string(number);
  return name + " in " + folder.string();
}

Place Place::here() {
  const char *root = std::getenv(LMAINTE_HOST_ROOT);
  return Place(root != nullptr && *root != '\0' ? root : "/");
}

}  // namespace box
