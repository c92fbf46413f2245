#include "host/spbox/way_in.h"

#include <cerrno>

#include "host/base/quoted.h"
#include "host/box/advice.h"

namespace spbox {

std::string way_in(const std::filesystem::path &folder) {
  return box::spbox_called(base::quoted(program_invocation_name)) + " run " + base::quoted(folder.native());
}

}  // namespace spbox
