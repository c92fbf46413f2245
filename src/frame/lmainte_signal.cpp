#include "include/lmainte.h"

#include <csignal>

#include "src/frame/trace.h"
#include "trace_events/frame.h"

namespace {

using lmainte::Call;
using trace_events::Signal;
using trace_events::SignalMask;

lmainte::Trace trace;
constexpr lmainte::Block kSignal = lmainte::block_of<Signal>();
constexpr lmainte::Block kSignalMask = lmainte::block_of<SignalMask>();

constexpr int32_t kEndOfTable = -1;

int install(const lmainte_signal_entry &entry) {
  struct sigaction action = {};
  sigemptyset(&action.sa_mask);
  action.sa_handler = entry.handler;
  return sigaction(entry.signo, &action, nullptr);
}

// A signal number that does not exist leaves the set empty. The empty set is applied, too.
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
    call.error(Signal::kNoTable);
    return LMAINTE_FAILED;
  }
  for (; table->signo != kEndOfTable; ++table) {
    const int result = install(*table);
    call.point(Signal::kHandlerSet, result, table->signo);
    if (result != 0) {
      call.system_error(Signal::kHandlerNotSet, result, table->signo);
      return LMAINTE_FAILED;
    }
  }
  return LMAINTE_OK;
}

// Unlike the handlers, every mask is applied, also after one that failed.
int32_t lmainte_signal_mask(const lmainte_mask_entry *table) {
  const Call call(trace, kSignalMask);
  if (table == nullptr) {
    call.error(SignalMask::kNoTable);
    return LMAINTE_FAILED;
  }
  for (; table->signo != kEndOfTable; ++table) apply(*table);
  return LMAINTE_OK;
}
