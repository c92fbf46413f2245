// Where the transcripts of many plays lie.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "host/base/owned_folder.h"
#include "host/runner/result.h"

namespace runner {

class Transcripts {
 public:
  // In the folder `wanted`, which is made, and keeps them all. Without one, in a new folder of temporary files, which keeps
  // those of plays that went wrong, and is removed where there are none. Removes those folders whose owners were killed. Throws.
  explicit Transcripts(const std::filesystem::path &wanted);
  ~Transcripts();
  Transcripts(const Transcripts &) = delete;
  Transcripts &operator=(const Transcripts &) = delete;

  const std::filesystem::path &folder() const { return folder_; }

  // For a play of this name; its folder is made. Throws.
  std::filesystem::path place_for(const std::string &name) const;

  // Where the transcript lies when its play is over; empty where it does not.
  std::filesystem::path kept(const std::filesystem::path &file, Verdict verdict) const;

 private:
  std::optional<base::OwnedFolder> own_;  // none where a folder was named: that one keeps them all
  std::filesystem::path folder_;
};

}  // namespace runner
