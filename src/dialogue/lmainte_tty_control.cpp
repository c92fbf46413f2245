#include "include/lmainte.h"

#include <termios.h>
#include <cerrno>
#include <cstdio>

#include "src/frame/trace.h"
#include "trace_events/dialogue.h"

namespace {

using lmainte::Call;
using trace_events::TtyControl;

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::block_of<TtyControl>();

// What one mode changes: a flag of a mode word, or a control character. Off is a byte of 255, not the terminal's own
// disabling value, and the characters go into the slots given here.
struct Attribute {
  tcflag_t termios::*flags;
  tcflag_t flag;
  size_t character;
  cc_t on;
};

constexpr cc_t kOff = 255;
constexpr Attribute kFlush = {nullptr, 0, 0, 0};

constexpr Attribute kAttributes[] = {
    {&termios::c_lflag, ECHO, 0, 0},  // LMAINTE_TTY_ECHO
    {nullptr, 0, VMIN, 4},            // LMAINTE_TTY_VMIN
    kFlush,                           // LMAINTE_TTY_FLUSH
    {&termios::c_lflag, ISIG, 0, 0},  // LMAINTE_TTY_ISIG
    {nullptr, 0, VQUIT, 3},           // LMAINTE_TTY_VQUIT
    {nullptr, 0, VERASE, 28},         // LMAINTE_TTY_VERASE
    {&termios::c_iflag, IXON, 0, 0},  // LMAINTE_TTY_IXON
};

bool is_known(int32_t mode) {
  return mode >= LMAINTE_TTY_ECHO && mode <= LMAINTE_TTY_IXON;
}

void change(termios &attributes, const Attribute &attribute, bool on) {
  if (attribute.flags == nullptr)
    attributes.c_cc[attribute.character] = on ? attribute.on : kOff;
  else if (on)
    attributes.*attribute.flags |= attribute.flag;
  else
    attributes.*attribute.flags &= ~attribute.flag;
}

int32_t flush(const Call &call, bool input) {
  const int result = tcflush(fileno(stdin), input ? TCIFLUSH : TCOFLUSH);
  if (result == 0) return LMAINTE_OK;
  call.system_call_failed(TtyControl::kNotFlushed, result);
  return LMAINTE_FAILED;
}

int32_t apply(const Call &call, const termios &attributes) {
  const int result = tcsetattr(fileno(stdout), TCSANOW, &attributes);
  if (result == 0) return LMAINTE_OK;
  call.system_call_failed(TtyControl::kNotSet, result);
  return LMAINTE_FAILED;
}

}  // namespace

int32_t lmainte_tty_control(int32_t mode, int32_t setting) {
  Call call(trace, kBlock);
  termios attributes;
  if (is_known(mode) && mode != LMAINTE_TTY_FLUSH) {
    const int result = tcgetattr(fileno(stdout), &attributes);
    if (result != 0) {
      call.system_call_failed(TtyControl::kNotRead, result);
      return call.returns(LMAINTE_FAILED);
    }
  }
  call.point(TtyControl::kMode, mode, setting);
  if (!is_known(mode)) {
    call.error(TtyControl::kNoMode, mode, setting);
    return call.returns(LMAINTE_FAILED);
  }
  const bool on = setting == 1;
  if (mode == LMAINTE_TTY_FLUSH) return call.returns(flush(call, on));
  change(attributes, kAttributes[mode], on);
  return call.returns(apply(call, attributes));
}
