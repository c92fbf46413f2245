#include "host/platform/calls.h"

#include <cerrno>

#include "host/target/line.h"

namespace platform {
namespace {

// What is longer is cut, as the box cuts it.
std::string_view as_kept(std::string_view text) {
  return text.substr(0, box::kLongestCallText);
}

void nothing(wire::Reader & /*answer*/) {}

}  // namespace

box::Call begun_call() noexcept {
  box::Call call;
  target::Request request(wire::Kind::kCallBegins);
  request.answered([&](wire::Reader &answer) {
    call.time_ns = static_cast<std::int64_t>(answer.long_word());
    call.position = answer.long_word();
  });
  return call;
}

void end_call(box::Call &call) noexcept {
  target::Request request(wire::Kind::kCallEnds);
  request.fields.word(static_cast<std::uint32_t>(call.kind)).long_word(static_cast<std::uint64_t>(call.time_ns));
  request.fields.long_word(call.position).number(call.result).word(call.first).word(call.second);
  request.fields.text(as_kept(call.text));
  request.answered(nothing);
}

bool command_begins(std::string_view words, pid_t parent) noexcept {
  target::Request request(wire::Kind::kBegin);
  request.fields.word(static_cast<std::uint32_t>(parent)).text(as_kept(words));
  return request.answered(nothing);
}

void command_ends(std::string_view words, int status) noexcept {
  target::Request request(wire::Kind::kEnd);
  request.fields.number(status).text(as_kept(words));
  request.answered(nothing);
}

KeptCall::KeptCall(box::CallKind kind, std::string_view text, std::uint32_t first, std::uint32_t second) noexcept
    : call_(begun_call()) {
  call_.kind = kind;
  call_.text = text;
  call_.first = first;
  call_.second = second;
}

std::int32_t KeptCall::ends_with(std::int32_t result) noexcept {
  call_.result = result;
  end_call(call_);
  return result;
}

}  // namespace platform
