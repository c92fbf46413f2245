#include "host/spbox/recording_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <string>
#include <string_view>

#include "host/base/descriptor.h"
#include "host/base/shown.h"
#include "host/box/box_error.h"
#include "host/spbox/standard_output.h"

namespace spbox {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kWithout = "without contents\n", kMark = "LMR1";

[[noreturn]] void fail(const fs::path &file, const std::string &why) {
  throw box::BoxError(file.string() + why);
}

std::string why_not(int error) {
  return std::string(" cannot be written: ") + std::strerror(error) + ".";  // NOLINT(concurrency-mt-unsafe): one thread
}

}  // namespace

RecordingFile::RecordingFile(const fs::path &file, bool without_contents) {
  const base::Descriptor fd(open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, 0600));
  struct stat status {};
  if (fd.get() < 0 || fstat(fd.get(), &status) != 0) fail(file, why_not(errno));
  if (!S_ISREG(status.st_mode)) fail(file, " is no file: nothing can be recorded there.");
  // What the platform would take for somebody else's file.
  if (status.st_nlink != 1 || (status.st_uid != geteuid() && status.st_uid != 0)) {
    fail(file, " has another name, too, or is another user's: nothing is recorded there.");
  }
  std::array<char, kWithout.size()> room{};
  const ssize_t size = pread(fd.get(), room.data(), room.size(), 0);
  if (size < 0) fail(file, why_not(errno));
  const std::string_view front(room.data(), static_cast<std::size_t>(size));
  if (!front.empty() && front != kWithout && !front.starts_with(kMark)) {
    fail(file, " is there already, and is no recording. Give another name.");
  }
  if (without_contents && front.starts_with(kMark)) fail(file, " has contents already. Give another name.");
  if (without_contents && front.empty()) {
    if (const int error = base::write_all(fd.get(), kWithout); error != 0) {
      std::error_code ignored;
      fs::remove(file, ignored);  // an empty file, or what was an empty one
      fail(file, why_not(error));
    }
  }
  path_ = fs::canonical(file);
  if (fstat(fd.get(), &status) == 0) size_ = status.st_size;
}

void RecordingFile::complain_if_nothing_came() const {
  struct stat status {};
  if (stat(path_.c_str(), &status) != 0 || status.st_size != size_) return;
  complain("Nothing was recorded: the command called nothing of lmainte or its platform, or " +
           base::shown(path_.filename().native()) + " is full.");
}

}  // namespace spbox
