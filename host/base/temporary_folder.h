// The folder for temporary files. Who makes something there hears whether it is one.
#pragma once

#include <array>
#include <cstdlib>
#include <filesystem>

namespace base {

// The variables that name it, the first one before the others.
inline constexpr std::array<const char *, 4> kTemporaryFolderVariables{"TMPDIR", "TMP", "TEMP", "TEMPDIR"};

inline std::filesystem::path temporary_folder() {
  for (const char *const name : kTemporaryFolderVariables) {
    const char *const folder = std::getenv(name);  // NOLINT(concurrency-mt-unsafe): there is one thread
    if (folder != nullptr && *folder != '\0') return folder;
  }
  return "/tmp";
}

}  // namespace base
