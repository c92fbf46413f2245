#include "host/spbox/whole_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <string>
#include <system_error>

#include "host/base/descriptor.h"

namespace spbox {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void failure(int error) {
  throw std::system_error(error, std::generic_category());
}

void write_all(int fd, std::string_view text) {
  if (const int error = base::write_all(fd, text); error != 0) failure(error);
}

// The file behind links. None where one leads to what this process has open: its name is not the file's own.
std::optional<fs::path> behind_links(fs::path file) {
  constexpr int kMostLinks = 40;
  for (int i = 0; i < kMostLinks; ++i) {
    file = fs::absolute(file).lexically_normal();
    if (file.string().starts_with("/dev/fd/") || file.string().starts_with("/proc/")) return std::nullopt;
    if (!fs::is_symlink(fs::symlink_status(file))) return file;
    file = file.parent_path() / fs::read_symlink(file);
  }
  failure(ELOOP);
}

void write_in_place(const fs::path &file, std::string_view text) {
  base::Descriptor fd(open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666));
  if (fd.get() < 0) failure(errno);
  write_all(fd.get(), text);
  if (close(fd.release()) != 0) failure(errno);
}

// A new file has the permissions that this process gives its files.
mode_t own_mode() {
  const mode_t mask = umask(0);
  umask(mask);
  return 0666 & ~mask;
}

class FileBeside {
 public:
  explicit FileBeside(const fs::path &file) : file_(file), name_(file.string() + ".XXXXXX") {
    fd_ = base::Descriptor(mkostemp(name_.data(), O_CLOEXEC));
    if (fd_.get() < 0) failure(errno);
  }
  ~FileBeside() {
    if (!name_.empty()) unlink(name_.c_str());
  }
  FileBeside(const FileBeside &) = delete;
  FileBeside &operator=(const FileBeside &) = delete;

  void write(std::string_view text) const { write_all(fd_.get(), text); }

  void take_place_of(const std::optional<struct stat> &old) {
    const bool has_owner = old && (old->st_uid != geteuid() || old->st_gid != getegid());
    if (has_owner && fchown(fd_.get(), old->st_uid, old->st_gid) != 0) failure(errno);
    if (fchmod(fd_.get(), old ? old->st_mode & 07777 : own_mode()) != 0) failure(errno);
    if (close(fd_.release()) != 0 || rename(name_.c_str(), file_.c_str()) != 0) failure(errno);
    name_.clear();
  }

 private:
  fs::path file_;
  std::string name_;
  base::Descriptor fd_;
};

}  // namespace

void write_whole_file(const fs::path &file, std::string_view text) {
  const auto target = behind_links(file);
  struct stat status {};
  const bool is_there = target && stat(target->c_str(), &status) == 0;
  if (!target || (is_there && !S_ISREG(status.st_mode))) return write_in_place(file, text);
  // A file that this user may not write stays, although its folder lets it be replaced.
  if (is_there && access(target->c_str(), W_OK) != 0) failure(errno);
  FileBeside fresh(*target);
  fresh.write(text);
  fresh.take_place_of(is_there ? std::optional(status) : std::nullopt);
}

}  // namespace spbox
