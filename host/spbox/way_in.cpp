#include "host/spbox/way_in.h"

#include <cerrno>

#include "host/box/advice.h"
#include "host/box/place.h"

namespace spbox {

std::string way_in(const std::filesystem::path &folder) {
  return box::spbox_called(box::quoted(program_invocation_name)) + " run " + box::quoted(folder.native());
}

}  // namespace spbox
