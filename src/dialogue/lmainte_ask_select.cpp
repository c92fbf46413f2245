#include "include/lmainte.h"

#include <cstdarg>
#include <cstdio>

#include "include/lmainte_platform.h"
#include "src/frame/trace.h"
#include "trace_events/dialogue.h"

namespace {

using lmainte::Call;
using trace_events::AskSelect;

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::block_of<AskSelect>();

constexpr int32_t kFailed = -1;
constexpr size_t kPromptSize = 1024;
constexpr int32_t kOn = 1;
constexpr int32_t kOff = 0;

bool switch_terminal(const Call &call, lmainte::Error error, int32_t mode, int32_t setting) {
  const int32_t result = lmainte_tty_control(mode, setting);
  if (result != LMAINTE_OK) call.error(error, result);
  return result == LMAINTE_OK;
}

// Between its questions a dialogue keeps echo off: a choice after which that fails does not count.
int32_t ask(const Call &call, int32_t first, void *second, const char *prompt) {
  if (!switch_terminal(call, AskSelect::kNotFlushed, LMAINTE_TTY_FLUSH, kOn)) return kFailed;
  if (!switch_terminal(call, AskSelect::kEchoNotOn, LMAINTE_TTY_ECHO, kOn)) return kFailed;
  const int32_t choice = cli_ask_select(first, second, prompt);
  call.point(AskSelect::kAnswered, choice);
  putchar('\n');
  return switch_terminal(call, AskSelect::kEchoNotOff, LMAINTE_TTY_ECHO, kOff) ? choice : kFailed;
}

}  // namespace

int32_t lmainte_ask_select(int32_t first, void *second, const char *format, ...) {
  Call call(trace, kBlock);
  if (second == nullptr) {
    call.error(AskSelect::kNoSecond);
    return call.returns(kFailed);
  }
  if (format == nullptr) {
    call.error(AskSelect::kNoFormat);
    return call.returns(kFailed);
  }
  char prompt[kPromptSize] = {};
  va_list values;
  va_start(values, format);
  vsnprintf(prompt, sizeof prompt, format, values);
  va_end(values);
  return call.returns(ask(call, first, second, prompt));
}
