#include "host/base/remove_tree.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>

#include "host/base/descriptor.h"

namespace base {
namespace {

struct CloseListing {
  void operator()(DIR *listing) const { closedir(listing); }
};
using Listing = std::unique_ptr<DIR, CloseListing>;

// The folder, which its owner may look into and change from now on, as far as this process can give them the rights.
Descriptor handle_of(int parent, const char *name) {
  Descriptor handle(openat(parent, name, O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  struct stat status {};
  const bool lacks_rights =
      handle.get() >= 0 && fstat(handle.get(), &status) == 0 && (status.st_mode & S_IRWXU) != S_IRWXU;
  if (lacks_rights) {
    const int kept_errno = errno;
    chmod(("/proc/self/fd/" + std::to_string(handle.get())).c_str(), status.st_mode | S_IRWXU);
    errno = kept_errno;
  }
  return handle;
}

class Removal {
 public:
  // Whether the folder or file is gone.
  bool remove(int parent, const char *name, int depth = 0) {
    if (is_gone(parent, name)) return true;
    if (errno != ENOTEMPTY && errno != EEXIST) return failed();
    const Listing folder = listing_of(parent, name);
    if (!folder) return failed();
    empty(folder.get(), depth);
    return is_gone(parent, name) || failed();
  }
  int first_error() const { return first_error_; }

 private:
  static constexpr int kDeepest = 4;           // folders below are lifted; a descriptor for each above
  static constexpr int kMostRounds = 100'000;  // somebody may fill the folder meanwhile

  bool failed() {
    if (first_error_ == 0) first_error_ = errno;
    return false;
  }

  static Listing listing_of(int parent, const char *name) {
    const Descriptor handle = handle_of(parent, name);
    Descriptor folder(handle.get() < 0 ? -1 : openat(handle.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    Listing listing(folder.get() < 0 ? nullptr : fdopendir(folder.get()));
    if (listing) folder.release();
    return listing;
  }

  static bool is_gone(int parent, const char *name) {
    if (unlinkat(parent, name, 0) == 0 || errno == ENOENT) return true;
    const int error = errno;
    if (error != EISDIR && error != EPERM) return false;
    if (unlinkat(parent, name, AT_REMOVEDIR) == 0 || errno == ENOENT) return true;
    if (errno == ENOTDIR) errno = error;
    return false;
  }

  template <typename Act>
  void for_each(DIR *folder, Act act) {
    rewinddir(folder);
    for (;;) {
      errno = 0;
      const dirent *entry = readdir(folder);  // NOLINT(concurrency-mt-unsafe): the stream is used here alone
      if (entry == nullptr) break;
      const std::string_view name = entry->d_name;
      if (name != "." && name != "..") act(entry->d_name);
    }
    if (errno != 0) failed();
  }

  void empty(DIR *folder, int depth) {
    const int fd = dirfd(folder);
    if (depth < kDeepest) return for_each(folder, [&](const char *name) { remove(fd, name, depth + 1); });
    bool has_lifted = true;
    for (int round = 0; has_lifted && round < kMostRounds; ++round) {
      has_lifted = false;
      for_each(folder, [&](const char *name) { has_lifted = remove_or_lift(fd, name) || has_lifted; });
    }
  }

  // What is in a folder of this one comes up into this one. Returns whether anything did.
  bool remove_or_lift(int to, const char *name) {
    if (is_gone(to, name)) return false;
    const bool is_full = errno == ENOTEMPTY || errno == EEXIST;
    const Listing folder = is_full ? listing_of(to, name) : Listing();
    if (!folder) return failed();
    bool has_lifted = false;
    for_each(folder.get(), [&](const char *inner) {
      if (is_gone(dirfd(folder.get()), inner)) return;
      has_lifted = lift(dirfd(folder.get()), inner, to) || failed() || has_lifted;
    });
    return is_gone(to, name) ? has_lifted : failed() || has_lifted;
  }

  // A folder that goes elsewhere has to be one that its owner may change.
  bool lift(int from, const char *name, int to) {
    if (errno != ENOTEMPTY && errno != EEXIST) return false;
    if (handle_of(from, name).get() < 0) return false;
    int result = -1;
    do {
      result = renameat2(from, name, to, ("lifted." + std::to_string(++lifted_)).c_str(), RENAME_NOREPLACE);
    } while (result != 0 && errno == EEXIST);
    return result == 0;
  }

  int first_error_ = 0;
  unsigned long lifted_ = 0;
};

}  // namespace

void remove_tree(const std::filesystem::path &path) {
  if (!std::filesystem::exists(std::filesystem::symlink_status(path))) return;
  Removal removal;
  if (removal.remove(AT_FDCWD, path.c_str())) return;
  throw std::filesystem::filesystem_error("remove", path,
                                          std::error_code(removal.first_error(), std::generic_category()));
}

}  // namespace base
