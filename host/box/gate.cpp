#include "host/box/gate.h"

#include "host/box/database.h"

namespace box {
namespace {

using std::chrono::milliseconds;

// The first bytes of the file are the locks of the databases. Many who read on and on would leave no moment to one who saves. So
// that one announces itself by a byte of its own, and those who read look there now and then, and wait.
constexpr off_t kGateByte = kStoreSize, kAnnouncementByte = kGateByte + 1;
constexpr unsigned kNowAndThen = 16;  // a look takes as long as a third of a reading
constexpr milliseconds kPatience{3000}, kLongestPause{1};

}  // namespace

Gate::Gate(const LockFile &locks, For what, unsigned &readings) : locks_(locks), is_for_saving_(what == For::kSaving) {
  if (is_for_saving_) {
    error_ = locks.take(kAnnouncementByte, LockFile::Way::kAlone, kPatience, kLongestPause);
    if (error_ != 0) return;
    is_announced_ = true;
  } else if (readings++ % kNowAndThen == 0) {
    locks.wait_until_free(kAnnouncementByte, kPatience, kLongestPause);
  }
  const auto way = is_for_saving_ ? LockFile::Way::kAlone : LockFile::Way::kShared;
  error_ = locks.take(kGateByte, way, kPatience, kLongestPause);
}

Gate::~Gate() {
  if (error_ == 0) locks_.give_back(kGateByte);
  if (is_announced_) locks_.give_back(kAnnouncementByte);
}

}  // namespace box
