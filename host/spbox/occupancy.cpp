#include "host/spbox/occupancy.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "host/box/contents.h"
#include "host/box/own_files.h"
#include "host/spbox/folder_lock.h"
#include "host/spbox/making.h"

namespace spbox {
namespace {

int open_file(const std::filesystem::path &file) {
  const int fd = open(file.c_str(), O_RDWR | O_CREAT | O_APPEND | box::kOwnFile, 0644);
  if (fd >= 0 && box::is_file(fd)) return fd;
  if (fd >= 0) close(fd);
  if (fd >= 0 || errno == ELOOP) throw box::BoxError(file.string() + " is no file of a box. Remove it.");
  throw std::system_error(errno, std::generic_category(),
                          file.string() + " cannot be written (a box is for the user who made it)");
}

}  // namespace

std::filesystem::path occupancy_file(const box::Place &place) {
  return place.root() / "mgb/lib/mount_points";
}

int enter(const box::Place &place) {
  const std::filesystem::path file = occupancy_file(place);
  while (true) {
    clear_up_making(place);
    const FolderLock shared(place.root(), FolderLock::Way::kShared);
    if (Making::is_unfinished(place)) continue;
    const int fd = open_file(file);
    int result = 0;
    do {
      result = flock(fd, LOCK_SH);
    } while (result != 0 && errno == EINTR);
    if (result == 0) return fd;
    const int error = errno;
    close(fd);
    throw std::system_error(error, std::generic_category(), file.string() + " cannot be locked");
  }
}

EmptyBox::EmptyBox(const box::Place &place) : fd_(open_file(occupancy_file(place))) {
  if (flock(fd_, LOCK_EX | LOCK_NB) == 0) return;
  close(fd_);
  throw box::BoxError("a command runs in " + place.root().string() +
                      ". Wait until it has ended, or end it, and try again.");
}

EmptyBox::~EmptyBox() {
  close(fd_);
}

}  // namespace spbox
