#include "bench/box_folder.h"

#include <cstdlib>
#include <string>
#include <system_error>

#include "bench/require.h"

bench::BoxFolder::BoxFolder() {
  std::string name = "/dev/shm/bench.XXXXXX";
  require(mkdtemp(name.data()) != nullptr, "make a folder in /dev/shm");
  path_ = name;
}

bench::BoxFolder::~BoxFolder() {
  std::error_code error;
  std::filesystem::remove_all(path_, error);
}
