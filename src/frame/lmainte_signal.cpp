#include "include/lmainte.h"

#include <csignal>

#include "src/frame/trace.h"

namespace {

using lmainte::Call;

lmainte::Trace trace;
constexpr lmainte::Block kSignal = lmainte::plain_block(0x039);
constexpr lmainte::Block kSignalMask = lmainte::plain_block(0x039, 8);

constexpr int32_t kEndOfTable = -1;

int install(const lmainte_signal_entry &entry) {
  struct sigaction action = {};
  sigemptyset(&action.sa_mask);
  action.sa_handler = entry.handler;
  return sigaction(entry.signo, &action, nullptr);
}

// A signal number that does not exist leaves the set empty, and the set is applied all the same.
void apply(const lmainte_mask_entry &entry) {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, entry.signo);
  sigprocmask(entry.how, &signals, nullptr);
}

}  // namespace

int32_t lmainte_signal(const lmainte_signal_entry *table) {
  const Call call(trace, kSignal);
  if (table == nullptr) {
    call.error(1);
    return LMAINTE_FAILED;
  }
  for (; table->signo != kEndOfTable; ++table) {
    const int result = install(*table);
    call.point(2, result, table->signo);
    if (result != 0) {
      call.system_error(2, result, table->signo);
      return LMAINTE_FAILED;
    }
  }
  return LMAINTE_OK;
}

// Unlike handlers, masks are applied to the end of the table whatever happens, each entry for itself.
int32_t lmainte_signal_mask(const lmainte_mask_entry *table) {
  const Call call(trace, kSignalMask);
  if (table == nullptr) {
    call.error(1);
    return LMAINTE_FAILED;
  }
  for (; table->signo != kEndOfTable; ++table) apply(*table);
  return LMAINTE_OK;
}
