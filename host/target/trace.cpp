#include "host/platform/exported.h"
#include "host/target/line.h"
#include "include/lmainte_record.h"

namespace {

constexpr std::uint32_t kHeadLength = 8, kMostWords = 4;

}  // namespace

int32_t mgb_trace_write(uint32_t module, uint32_t level, uint32_t kind, uint32_t event, const uint32_t *words,
                        uint32_t length) {
  const std::uint32_t count = (length - kHeadLength) / sizeof(uint32_t);
  if (length < kHeadLength || length % sizeof(uint32_t) != 0 || count > kMostWords) return -1;
  if (words == nullptr && count != 0) return -1;
  lmainte_record_trace(module, level, kind, event, words, length);
  target::Request request(wire::Kind::kTrace);
  request.fields.word(module).word(level).word(kind).word(event).word(count);
  for (std::uint32_t i = 0; i < kMostWords; ++i) request.fields.word(i < count ? words[i] : 0);
  int32_t result = -1;
  const bool is_told = request.answered([&](wire::Reader &answer) { result = answer.number(); });
  return is_told ? result : -1;
}
