// The daemons of the service processor and its log, over the machine in memory.

#include <sys/select.h>

#include <algorithm>

#include <gtest/gtest.h>

#include "include/lmainte_platform.h"
#include "tests/unit/doubles/machine.h"

using doubles::machine;

namespace {

constexpr size_t kEventSize = 48;

bool is_empty(const fd_set &set) {
  for (int fd = 0; fd < FD_SETSIZE; ++fd)
    if (FD_ISSET(fd, &set)) return false;
  return true;
}

}  // namespace

int32_t lcmn_send(int32_t fd, const void *message) {
  if (const auto *failure = machine().enter("send " + std::to_string(fd))) return failure->result;
  machine().daemon.sent = message;
  return machine().daemon.result;
}

int32_t lcmn_receive(int32_t fd, void *message) {
  if (const auto *failure = machine().enter("receive " + std::to_string(fd))) return failure->result;
  const auto &reply = machine().daemon.reply;
  std::copy(reply.begin(), reply.end(), static_cast<uint8_t *>(message));
  return machine().daemon.result;
}

// The caller clears the status bytes and the set: what they hold afterwards comes from this function.
int32_t lcmn_select(uint8_t *status_1, uint8_t *status_2, fd_set *readable, fd_set *writable, fd_set *exceptional,
                    timeval *limit) {
  EXPECT_EQ(*status_1 + *status_2, 0) << "status bytes that are not cleared";
  EXPECT_TRUE(is_empty(*readable)) << "a set that is not cleared";
  EXPECT_TRUE(writable == nullptr && exceptional == nullptr) << "a wait for more than messages";
  const auto &daemon = machine().daemon;
  *status_1 = daemon.status_1;
  *status_2 = daemon.status_2;
  for (const int32_t fd : daemon.ready) FD_SET(fd, readable);
  const std::string time = std::to_string(limit->tv_sec) + "." + std::to_string(limit->tv_usec);
  const auto *failure = machine().enter("select " + time);
  return failure != nullptr ? failure->result : daemon.result;
}

int32_t lcmn_process_iszero(const fd_set *set) {
  machine().note("iszero");
  return is_empty(*set) ? 1 : 0;
}

int32_t mgblog_save(const uint32_t *head, const void *record) {
  if (const auto *failure = machine().enter("save")) return failure->result;
  const auto *bytes = static_cast<const uint8_t *>(record);
  machine().saved.push_back({*head, {bytes, bytes + kEventSize}});
  return machine().log_result;
}
