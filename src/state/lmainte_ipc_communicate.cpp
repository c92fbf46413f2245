#include "include/lmainte.h"

#include "include/lmainte_platform.h"
#include "src/db/record_view.h"
#include "src/frame/trace.h"
#include "trace_events/state.h"

namespace {

using lmainte::Call;
using lmainte::Level;
using trace_events::IpcCommunicate;

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::block_of<IpcCommunicate>();

constexpr uint8_t kNoReply = 1;

// A descriptor that does not fit in a set is in no set.
bool is_in(int32_t descriptor, const fd_set &set) {
  return descriptor >= 0 && descriptor < FD_SETSIZE && FD_ISSET(descriptor, &set);
}

// Waits until the descriptor has a reply. The set goes in empty, and the common interface puts in what is ready.
int32_t await_reply(const Call &call, int32_t descriptor, int32_t time_limit) {
  fd_set ready;
  FD_ZERO(&ready);
  uint8_t status_1 = 0;
  uint8_t status_2 = 0;
  timeval limit = {time_limit, 0};
  const int32_t selected = lcmn_select(&status_1, &status_2, &ready, nullptr, nullptr, &limit);
  if (selected < 0) {
    call.system_error(IpcCommunicate::kWaitFailed, selected);
    return LMAINTE_FAILED;
  }
  if (status_1 == kNoReply) {
    call.error(IpcCommunicate::kLimitSpent, status_1);
    return LMAINTE_NO_REPLY;
  }
  if (lcmn_process_iszero(&ready) != 0) {
    call.error(IpcCommunicate::kNothingReady);
    return LMAINTE_NO_REPLY;
  }
  if (is_in(descriptor, ready)) return LMAINTE_OK;
  call.error(IpcCommunicate::kOtherChannel, descriptor);
  return LMAINTE_FAILED;
}

}  // namespace

int32_t lmainte_ipc_communicate(const void *request, int32_t descriptor, int32_t time_limit, void *reply) {
  const Call call(trace, kBlock);
  if (request == nullptr || reply == nullptr || time_limit <= 0) {
    call.error(IpcCommunicate::kRefused);
    return LMAINTE_FAILED;
  }
  const lmainte::RecordView view(request);
  call.point(Level::kProcess, IpcCommunicate::kRequest, view.word(1), view.word(2));
  const int32_t sent = lcmn_send(descriptor, request);
  if (sent < 0) {
    call.system_error(IpcCommunicate::kNotSent, sent);
    return LMAINTE_FAILED;
  }
  const int32_t waited = await_reply(call, descriptor, time_limit);
  if (waited != LMAINTE_OK) return waited;
  const int32_t received = lcmn_receive(descriptor, reply);
  if (received < 0) {
    call.system_error(IpcCommunicate::kNotReceived, received);
    return LMAINTE_FAILED;
  }
  call.point(Level::kProcess, IpcCommunicate::kReply, received);
  return LMAINTE_OK;
}
