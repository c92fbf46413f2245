#include "include/lmainte.h"

#include <fcntl.h>
#include <unistd.h>
#include <cerrno>
#include <cstring>

#include "include/lmainte_platform.h"
#include "src/frame/process_id_provider.h"
#include "src/frame/trace.h"
#include "trace_events/state.h"

lmainte_pinfo_provider pinfo_t[8] = {lmainte::provide_process_id};

namespace {

using lmainte::Block;
using lmainte::Call;
using trace_events::ClearPinfo;
using trace_events::FclearPinfo;
using trace_events::FgetPinfo;
using trace_events::FputPinfo;
using trace_events::GetPinfo;
using trace_events::PutPinfo;

lmainte::Trace trace;
constexpr Block kPut = lmainte::block_of<PutPinfo>();
constexpr Block kClear = lmainte::block_of<ClearPinfo>();
constexpr Block kGet = lmainte::block_of<GetPinfo>();
constexpr Block kFilePut = lmainte::block_of<FputPinfo>();
constexpr Block kFileClear = lmainte::block_of<FclearPinfo>();
constexpr Block kFileGet = lmainte::block_of<FgetPinfo>();

constexpr int32_t kTextSize = 256;
constexpr int32_t kMostProviders = sizeof pinfo_t / sizeof pinfo_t[0];

// Assembles the items of all providers, a comma between two of them.
bool assemble(const Call &call, char (&text)[kTextSize]) {
  for (int32_t i = 0; i < kMostProviders && pinfo_t[i] != nullptr; ++i) {
    if (i > 0) strncat(text, ",", sizeof text - 1 - strlen(text));
    const int32_t status = pinfo_t[i](text, kTextSize);
    text[kTextSize - 1] = '\0';
    call.point(PutPinfo::kItem, status, i);
    if (status != LMAINTE_OK) {
      call.system_error(PutPinfo::kNoItem, status, i);
      return false;
    }
  }
  return true;
}

// What can go wrong around the work on a file.
struct FileErrors {
  lmainte::Error not_opened, failed, not_closed;
};

constexpr FileErrors kPutErrors = {
    .not_opened = FputPinfo::kNotOpened,
    .failed = FputPinfo::kFailed,
    .not_closed = FputPinfo::kNotClosed,
};
constexpr FileErrors kClearErrors = {
    .not_opened = FclearPinfo::kNotOpened,
    .failed = FclearPinfo::kFailed,
    .not_closed = FclearPinfo::kNotClosed,
};
constexpr FileErrors kGetErrors = {
    .not_opened = FgetPinfo::kNotOpened,
    .failed = FgetPinfo::kFailed,
    .not_closed = FgetPinfo::kNotClosed,
};

// Opens the file, works on it, and closes it, also after a failure.
template <class Work>
int32_t with_file(const Call &call, const FileErrors &errors, const char *path, int32_t flags, uint32_t mode,
                  Work work) {
  const int32_t fd = lcmn_lopen(path, flags, mode);
  if (fd < 0) {
    call.system_call_failed(errors.not_opened, fd);
    return LMAINTE_FAILED;
  }
  const int32_t result = work(fd);
  if (result != LMAINTE_OK) call.error(errors.failed, result);
  const int32_t closed = lcmn_close(fd);
  if (closed != 0) call.system_call_failed(errors.not_closed, closed);
  return result == LMAINTE_OK && closed == 0 ? LMAINTE_OK : LMAINTE_FAILED;
}

}  // namespace

int32_t lmainte_put_pinfo(int32_t fd) {
  const Call call(trace, kPut);
  char text[kTextSize] = {};
  if (!assemble(call, text)) return LMAINTE_FAILED;
  if (ftruncate(fd, 0) != 0) {
    call.system_call_failed(PutPinfo::kNotEmptied, fd);
    return LMAINTE_FAILED;
  }
  if (lseek(fd, 0, SEEK_SET) < 0) {
    call.system_call_failed(PutPinfo::kNotRewound, fd);
    return LMAINTE_FAILED;
  }
  const int32_t written = lcmn_write(fd, text, static_cast<int32_t>(strlen(text)));
  const int error = errno;
  call.point(PutPinfo::kWritten, written);
  if (written >= 0) return LMAINTE_OK;
  call.system_error(PutPinfo::kNotWritten, fd, error);
  return LMAINTE_FAILED;
}

int32_t lmainte_clear_pinfo(int32_t fd) {
  const Call call(trace, kClear);
  if (ftruncate(fd, 0) == 0) return LMAINTE_OK;
  call.system_call_failed(ClearPinfo::kNotEmptied, fd);
  return LMAINTE_FAILED;
}

int32_t lmainte_get_pinfo(int32_t fd, char *buffer) {
  const Call call(trace, kGet);
  if (buffer == nullptr) {
    call.error(GetPinfo::kNoBuffer);
    return LMAINTE_FAILED;
  }
  const int32_t got = lcmn_read(fd, buffer, kTextSize);
  const int error = errno;
  call.point(GetPinfo::kRead, got);
  if (got >= 0) return LMAINTE_OK;
  call.system_error(GetPinfo::kNotRead, fd, error);
  return LMAINTE_FAILED;
}

int32_t lmainte_fput_pinfo(const char *path, uint32_t mode) {
  const Call call(trace, kFilePut);
  if (path == nullptr) {
    call.error(FputPinfo::kNullArgument);
    return LMAINTE_FAILED;
  }
  return with_file(call, kPutErrors, path, O_RDWR | O_CREAT, mode, lmainte_put_pinfo);
}

int32_t lmainte_fclear_pinfo(const char *path) {
  const Call call(trace, kFileClear);
  if (path == nullptr) {
    call.error(FclearPinfo::kNullArgument);
    return LMAINTE_FAILED;
  }
  return with_file(call, kClearErrors, path, O_RDWR, 0, lmainte_clear_pinfo);
}

// Opened for writing, too: everyone who uses the file needs the same permission.
int32_t lmainte_fget_pinfo(const char *path, char *buffer) {
  const Call call(trace, kFileGet);
  if (path == nullptr || buffer == nullptr) {
    call.error(FgetPinfo::kNullArgument);
    return LMAINTE_FAILED;
  }
  return with_file(call, kGetErrors, path, O_RDWR, 0, [buffer](int32_t fd) { return lmainte_get_pinfo(fd, buffer); });
}
