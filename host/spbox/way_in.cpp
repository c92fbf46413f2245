#include "host/spbox/way_in.h"

#include <cerrno>
#include <cstdlib>

#include "host/base/quoted.h"
#include "host/box/advice.h"
#include "host/include/lmainte_host.h"

namespace spbox {

std::string way_in(const std::filesystem::path &folder) {
  const char *const given = std::getenv(LMAINTE_HOST_RUN);  // NOLINT(concurrency-mt-unsafe): nobody changes it
  if (given != nullptr && *given == '\0') return "";
  return box::spbox_called(base::quoted(program_invocation_name)) + " run " + base::quoted(folder.native());
}

}  // namespace spbox
