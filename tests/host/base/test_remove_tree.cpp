#include "host/base/remove_tree.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <string>
#include <system_error>
#include <vector>

#include "host/base/descriptor.h"
#include "tests/host/box/scratch.h"

namespace {

namespace fs = std::filesystem;

constexpr uid_t kOrdinaryUser = 65534;

// Root may look into any folder and change it.
class AsOrdinaryUser {
 public:
  AsOrdinaryUser() {
    if (was_root_) become(kOrdinaryUser);
  }
  ~AsOrdinaryUser() {
    if (was_root_) become(0);
  }
  AsOrdinaryUser(const AsOrdinaryUser &) = delete;
  AsOrdinaryUser &operator=(const AsOrdinaryUser &) = delete;

 private:
  static void become(uid_t user) {
    EXPECT_EQ(seteuid(user), 0);
    prctl(PR_SET_DUMPABLE, 1);  // else /proc/self is root's
  }
  bool was_root_ = geteuid() == 0;
};

class RemoveTree : public testing::Test {
 protected:
  void SetUp() override {
    if (geteuid() == 0) {
      ASSERT_EQ(chown(scratch_.path().c_str(), kOrdinaryUser, kOrdinaryUser), 0);
    }
  }
  void remove() const { base::remove_tree(tree_); }

  Scratch scratch_;
  fs::path tree_ = scratch_ / "tree";
};

TEST_F(RemoveTree, RemovesFoldersFilesAndLinksAndFollowsNone) {
  fs::create_directories(tree_ / "a/b");
  fs::create_directories(scratch_ / "outside/empty");
  std::ofstream(tree_ / "a/b/file") << "text";
  for (const char *const link : {"a/link", "link"}) {
    fs::create_directory_symlink(scratch_ / "outside", tree_ / link);
  }
  fs::create_symlink("nowhere", tree_ / "broken");
  ASSERT_EQ(mkfifo((tree_ / "pipe").c_str(), 0644), 0);
  remove();
  EXPECT_FALSE(fs::exists(fs::symlink_status(tree_)));
  EXPECT_TRUE(fs::exists(scratch_ / "outside/empty"));
}

TEST_F(RemoveTree, RemovesALinkOrAFileItselfAndWhatIsNotThere) {
  fs::create_directory(scratch_ / "outside");
  fs::create_directory_symlink(scratch_ / "outside", tree_);
  remove();
  EXPECT_FALSE(fs::exists(fs::symlink_status(tree_)));
  EXPECT_TRUE(fs::exists(scratch_ / "outside"));
  std::ofstream(tree_) << "text";
  remove();
  EXPECT_FALSE(fs::exists(tree_));
  remove();
  base::remove_tree(scratch_ / "no/such/tree");
}

TEST_F(RemoveTree, RemovesWhatItsOwnerHasNoRightsOn) {
  const AsOrdinaryUser user;
  for (const mode_t rights : {0000, 0100, 0300, 0400, 0500, 0600}) {
    fs::create_directories(tree_ / "a/b");
    std::ofstream(tree_ / "a/b/file") << "text";
    for (const char *const folder : {"a/b", "a", ""}) ASSERT_EQ(chmod((tree_ / folder).c_str(), rights), 0);
    remove();
    EXPECT_FALSE(fs::exists(fs::symlink_status(tree_))) << std::oct << rights;
  }
}

// A folder that cannot be removed does not keep the others.
TEST_F(RemoveTree, SaysWhatCannotBeRemovedAndRemovesAllElse) {
  if (geteuid() != 0) GTEST_SKIP() << "only root makes folders of somebody else";
  fs::create_directories(tree_ / "theirs/in");
  ASSERT_EQ(chown(tree_.c_str(), kOrdinaryUser, kOrdinaryUser), 0);
  const AsOrdinaryUser user;
  for (const char *const own : {"a/b", "z/b"}) fs::create_directories(tree_ / own);
  try {
    remove();
    ADD_FAILURE() << "it is not gone";
  } catch (const fs::filesystem_error &error) {
    EXPECT_EQ(error.code().value(), EACCES);
    EXPECT_EQ(error.path1(), tree_);
  }
  EXPECT_FALSE(fs::exists(tree_ / "a"));
  EXPECT_FALSE(fs::exists(tree_ / "z"));
  EXPECT_TRUE(fs::exists(tree_ / "theirs/in"));
}

// Makes a file, and in a new folder the same, and so on; the names are those that lifted folders get.
void fill(const fs::path &tree, int folders, mode_t rights) {
  fs::create_directory(tree);
  base::Descriptor at(open(tree.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  for (int i = 0; i < folders; ++i) {
    ASSERT_EQ(mkdirat(at.get(), "lifted.1", 0700), 0);
    const base::Descriptor file(openat(at.get(), "lifted.2", O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
    ASSERT_GE(file.get(), 0);
    base::Descriptor next(openat(at.get(), "lifted.1", O_PATH | O_DIRECTORY | O_CLOEXEC));
    const std::string own = "/proc/self/fd/" + std::to_string(at.get());
    ASSERT_EQ(chmod(own.c_str(), rights), 0);
    at = std::move(next);
  }
}

// A limit that leaves so many descriptors, whichever are open already.
rlim_t end_of_free(int count) {
  std::vector<base::Descriptor> taken;
  for (int i = 0; i < count; ++i) taken.emplace_back(open("/", O_PATH | O_CLOEXEC));
  return static_cast<rlim_t>(taken.back().get()) + 1;
}

TEST_F(RemoveTree, RemovesMoreFoldersInOneAnotherThanThereAreDescriptors) {
  const AsOrdinaryUser user;
  for (const mode_t rights : {0700, 0500}) {
    fill(tree_, 100, rights);
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit few{end_of_free(8), before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &few), 0);
    EXPECT_NO_THROW(remove());
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
    EXPECT_FALSE(fs::exists(fs::symlink_status(tree_))) << std::oct << rights;
  }
}

}  // namespace
