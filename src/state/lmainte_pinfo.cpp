#include "include/lmainte.h"

#include <fcntl.h>
#include <unistd.h>
#include <cerrno>
#include <cstring>

#include "include/lmainte_platform.h"
#include "src/frame/process_id_provider.h"
#include "src/frame/trace.h"

lmainte_pinfo_provider pinfo_t[8] = {lmainte::provide_process_id};

namespace {

using lmainte::Block;
using lmainte::Call;

lmainte::Trace trace;
constexpr Block kPut = lmainte::plain_block(0x070);
constexpr Block kClear = lmainte::plain_block(0x071);
constexpr Block kGet = lmainte::plain_block(0x072);
constexpr Block kFilePut = lmainte::plain_block(0x073);
constexpr Block kFileClear = lmainte::plain_block(0x074);
constexpr Block kFileGet = lmainte::plain_block(0x075);

constexpr int32_t kTextSize = 256;
constexpr int32_t kMostProviders = sizeof pinfo_t / sizeof pinfo_t[0];

// Assembles the items of all providers, a comma between two of them.
bool assemble(const Call &call, char (&text)[kTextSize]) {
  for (int32_t i = 0; i < kMostProviders && pinfo_t[i] != nullptr; ++i) {
    if (i > 0) strncat(text, ",", sizeof text - 1 - strlen(text));
    const int32_t status = pinfo_t[i](text, kTextSize);
    text[kTextSize - 1] = '\0';
    call.point(2, status, i);
    if (status != LMAINTE_OK) {
      call.system_error(1, status, i);
      return false;
    }
  }
  return true;
}

// Opens the file, does one thing with it, and closes it whatever happened.
template <class Work>
int32_t with_file(const Call &call, const char *path, int32_t flags, uint32_t mode, Work work) {
  const int32_t fd = lcmn_lopen(path, flags, mode);
  if (fd < 0) {
    call.system_error(2, fd, errno);
    return LMAINTE_FAILED;
  }
  const int32_t result = work(fd);
  if (result != LMAINTE_OK) call.error(3, result);
  const int32_t closed = lcmn_close(fd);
  if (closed != 0) call.system_error(4, closed, errno);
  return result == LMAINTE_OK && closed == 0 ? LMAINTE_OK : LMAINTE_FAILED;
}

}  // namespace

int32_t lmainte_put_pinfo(int32_t fd) {
  const Call call(trace, kPut);
  char text[kTextSize] = {};
  if (!assemble(call, text)) return LMAINTE_FAILED;
  if (ftruncate(fd, 0) != 0) {
    call.system_error(2, fd, errno);
    return LMAINTE_FAILED;
  }
  if (lseek(fd, 0, SEEK_SET) < 0) {
    call.system_error(3, fd, errno);
    return LMAINTE_FAILED;
  }
  const int32_t written = lcmn_write(fd, text, static_cast<int32_t>(strlen(text)));
  const int error = errno;
  call.point(3, written);
  if (written >= 0) return LMAINTE_OK;
  call.system_error(4, fd, error);
  return LMAINTE_FAILED;
}

int32_t lmainte_clear_pinfo(int32_t fd) {
  const Call call(trace, kClear);
  if (ftruncate(fd, 0) == 0) return LMAINTE_OK;
  call.system_error(1, fd, errno);
  return LMAINTE_FAILED;
}

int32_t lmainte_get_pinfo(int32_t fd, char *buffer) {
  const Call call(trace, kGet);
  if (buffer == nullptr) {
    call.error(1);
    return LMAINTE_FAILED;
  }
  const int32_t got = lcmn_read(fd, buffer, kTextSize);
  const int error = errno;
  call.point(2, got);
  if (got >= 0) return LMAINTE_OK;
  call.system_error(2, fd, error);
  return LMAINTE_FAILED;
}

int32_t lmainte_fput_pinfo(const char *path, uint32_t mode) {
  const Call call(trace, kFilePut);
  if (path == nullptr) {
    call.error(1);
    return LMAINTE_FAILED;
  }
  return with_file(call, path, O_RDWR | O_CREAT, mode, lmainte_put_pinfo);
}

int32_t lmainte_fclear_pinfo(const char *path) {
  const Call call(trace, kFileClear);
  if (path == nullptr) {
    call.error(1);
    return LMAINTE_FAILED;
  }
  return with_file(call, path, O_RDWR, 0, lmainte_clear_pinfo);
}

// Opened for writing too, as for clearing: the same right is asked of everyone who touches the file.
int32_t lmainte_fget_pinfo(const char *path, char *buffer) {
  const Call call(trace, kFileGet);
  if (path == nullptr || buffer == nullptr) {
    call.error(1);
    return LMAINTE_FAILED;
  }
  return with_file(call, path, O_RDWR, 0, [buffer](int32_t fd) { return lmainte_get_pinfo(fd, buffer); });
}
