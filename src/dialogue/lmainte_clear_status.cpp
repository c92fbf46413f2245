#include "include/lmainte.h"

#include "src/frame/trace.h"

namespace {

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::plain_block(0x047);

constexpr int32_t kRefused = 128;

}  // namespace

int32_t lmainte_clear_status(int32_t time_limit, const ClearRequest *request) {
  const lmainte::Call call(trace, kBlock);
  if (time_limit < 1) {
    call.error(1);
    return LMAINTE_FAILED;
  }
  if (request == nullptr) {
    call.error(2);
    return LMAINTE_FAILED;
  }
  call.point(2, request->unit_id[0], request->unit_id[1]);
  // The request's line itself is the runner's format.
  const int32_t status = lmainte_exec(LMAINTE_CMD_CLEARPCI, time_limit, request->arguments);
  call.point(3, status);
  if (status == 0) return LMAINTE_OK;
  call.error(3, status);
  return status == kRefused || status == LMAINTE_STATUS_NOT_CLEARED ? LMAINTE_STATUS_NOT_CLEARED : LMAINTE_FAILED;
}
