// The folder for temporary files. Who makes something there hears whether it is one.
#pragma once

#include <cstdlib>
#include <filesystem>

namespace base {

inline std::filesystem::path temporary_folder() {
  for (const char *const name : {"TMPDIR", "TMP", "TEMP", "TEMPDIR"}) {
    const char *const folder = std::getenv(name);  // NOLINT(concurrency-mt-unsafe): there is one thread
    if (folder != nullptr && *folder != '\0') return folder;
  }
  return "/tmp";
}

}  // namespace base
