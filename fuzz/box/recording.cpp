// The file of a recording. Whatever is in it, of whatever machine: it is read or refused, and what is read can be told
// and answered from.
#include "host/recording/recording.h"
#include "fuzz/box/targets.h"
#include "host/box/box_error.h"
#include "host/recording/as_rings.h"
#include "host/replay/make_score.h"
#include "host/replay/verdict.h"
#include "host/trace_book/history.h"
#include "tests/host/recording/made_recording.h"

namespace fuzz {
namespace {

// Records whose checksums are right, whatever else they say.
std::string recorded(Source &source) {
  MadeRecording made;
  if (source.flag()) made.begin(source.byte() % 2 + 1, source.byte() % 8);
  while (!source.empty()) {
    if (source.byte() % 8 == 0) {
      const std::size_t at = made.bytes.empty() ? 0 : source.number<std::uint16_t>() % made.bytes.size();
      if (!made.bytes.empty()) made.bytes[at] = static_cast<char>(source.byte());
      continue;
    }
    MadeRecord record;
    record.kind = source.byte() % 28;
    if (source.byte() % 8 == 0) record.kind |= LMAINTE_RECORD_LEFT_OUT;
    record.result = source.number<std::int32_t>();
    record.first = source.number<std::uint16_t>();
    record.third = source.byte() % 2;
    record.pid = 100U + source.byte() % 3U;
    record.text = source.text(64);
    record.content = text_of(source.bytes(source.byte()));
    made.add(record);
  }
  return made.bytes;
}

void look_at(const recording::Recording &recording) {
  const recording::AsRings rings = recording::as_rings(recording);
  require(rings.records.size() + rings.calls.size() <= recording.records.size(), "a record is told once");
  const trace_book::History history(rings.records, rings.calls, recording.model);
  require(history.moments().size() >= rings.records.size(), "what the library recorded is told");
  for (const std::string &remark : remarks(recording, "it")) require(remark.ends_with('.'), "a remark is a sentence");
  for (const replay::Run &run : replay::runs_of(recording)) {
    if (!run.flaw.empty()) continue;
    const replay::Verdict verdict = replay::verdict_of(replay::score_of(run), run, {.exit_status = run.exit_status});
    require(verdict.differs == (verdict.of > 0), "a command that asks for nothing differs from one that does");
  }
}

}  // namespace

void run_recording(Input input) {
  Source source(input);
  const std::string bytes = source.byte() % 4 == 0 ? source.all_text() : recorded(source);
  refusal_of<box::BoxError>("a recording", [&] { look_at(recording::read(bytes, "it")); });
}

}  // namespace fuzz
