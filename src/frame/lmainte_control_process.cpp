#include "include/lmainte.h"

#include <unistd.h>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "src/frame/process_id_provider.h"
#include "src/frame/trace.h"
#include "trace_events/frame.h"

namespace {

using lmainte::Call;
using trace_events::GetPid;

lmainte::Trace trace;
constexpr lmainte::Block kProvide = lmainte::block_of<trace_events::ProvideProcessId>();
constexpr lmainte::Block kGetPid = lmainte::block_of<GetPid>();

constexpr int32_t kFailed = -1;

// Converts as the 32-bit target does on every machine: what does not fit a word is all ones.
uint32_t convert(const char *text, const char *&stop) {
  char *end = nullptr;
  const unsigned long value = strtoul(text, &end, 10);
  stop = end;
  const bool is_negative = text[strspn(text, " \t\n\v\f\r")] == '-';
  const unsigned long magnitude = is_negative ? 0UL - value : value;
  return magnitude > 0xFFFFFFFFUL ? 0xFFFFFFFFU : static_cast<uint32_t>(value);
}

}  // namespace

namespace lmainte {

int32_t provide_process_id(char *text, int32_t size) {
  const Call call(trace, kProvide);
  char item[16] = {};
  snprintf(item, sizeof item, "%d", static_cast<int>(getpid()));
  const auto used = static_cast<int64_t>(strlen(text));
  const int64_t room = size - used - 1;
  if (room > 0) strncat(text, item, static_cast<size_t>(room));
  return LMAINTE_OK;
}

}  // namespace lmainte

int32_t lmainte_get_pid(const char *text) {
  const Call call(trace, kGetPid);
  if (text == nullptr) {
    call.error(GetPid::kNoText);
    return kFailed;
  }
  if (text[0] == '\0') {
    call.error(GetPid::kEmptyText);
    return 0;
  }
  const char *stop = nullptr;
  const uint32_t value = convert(text, stop);
  if (*stop == '\0' || *stop == ',') return static_cast<int32_t>(value);
  call.error(GetPid::kNoProcessId, value, static_cast<unsigned char>(*stop));
  return kFailed;
}
