#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <string_view>

#include "host/base/number.h"
#include "host/include/lmainte_host.h"
#include "host/platform/calls.h"
#include "host/platform/exported.h"
#include "host/platform/points.h"
#include "include/lmainte.h"
#include "include/lmainte_record.h"

namespace {

using box::kNoAnswer;  // the line is neither a choice nor q

constexpr std::size_t kLineRoom = 64;

struct Line {
  char text[kLineRoom + 1];
  std::size_t length;  // of the line, however much of it there is room for

  bool whole() const { return length <= kLineRoom; }
  std::string_view view() const { return {text, whole() ? length : kLineRoom}; }
};

// Reads one byte, waiting for it also where another program left the terminal's descriptor in non-blocking mode.
ssize_t read_byte(char *byte) {
  ssize_t got = read(STDIN_FILENO, byte, 1);
  while (got < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
    pollfd input{STDIN_FILENO, POLLIN, 0};
    if (poll(&input, 1, -1) < 0) return -1;
    got = read(STDIN_FILENO, byte, 1);
  }
  return got;
}

// Reads a line byte by byte, so that what follows it stays for the next reader. An input that ends without a newline ends
// with a line all the same.
int read_line(Line *line) {
  line->length = 0;
  char byte = 0;
  ssize_t got = 0;
  while ((got = read_byte(&byte)) == 1 && byte != '\n') {
    if (line->length < kLineRoom) line->text[line->length] = byte;
    if (line->whole()) ++line->length;
  }
  if (got < 0) return errno == EINTR ? LMAINTE_ASK_INTERRUPTED : LMAINTE_ASK_FAILED;
  return got == 0 && line->length == 0 ? LMAINTE_ASK_END_OF_INPUT : LMAINTE_ASK_CHOSEN;
}

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r";
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

int answer_in(const Line &line, int32_t choices, int32_t *choice) {
  if (!line.whole()) return kNoAnswer;
  const std::string_view text = trimmed(line.view());
  if (text == "q" || text == "Q") return LMAINTE_ASK_GAVE_UP;
  const auto number = base::number_in<uint32_t>(text);
  if (!number || *number < 1 || *number > static_cast<uint32_t>(choices)) return kNoAnswer;
  *choice = static_cast<int32_t>(*number);
  return LMAINTE_ASK_CHOSEN;
}

bool show(const char *prompt) {
  return std::fputs(prompt, stdout) >= 0 && std::fflush(stdout) == 0;
}

void show_hint(int32_t choices) {
  if (choices == 1) {
    std::fputs("Type 1, or q to give up.\n", stdout);
  } else {
    std::printf("Type a number from 1 to %d, or q to give up.\n", choices);
  }
}

}  // namespace

namespace {

// Asks once. The question is kept when it is asked, and the answer when it is there.
int ask(int32_t choices, int32_t *choice, const char *prompt) {
  const uint64_t began = lmainte_record_begin();
  platform::KeptCall answer(box::CallKind::kAnswer);
  Line line{};
  int result = LMAINTE_ASK_FAILED;
  if (show(prompt)) result = read_line(&line);
  if (result == LMAINTE_ASK_CHOSEN) {
    answer.set_text(line.view().substr(0, kLineRoom));
    result = answer_in(line, choices, choice);
  }
  if (result == LMAINTE_ASK_CHOSEN) answer.set_first(static_cast<uint32_t>(*choice));
  const std::size_t typed = line.whole() ? line.length : kLineRoom;
  line.text[typed] = '\0';
  return lmainte_record_answer(began, typed == 0 ? nullptr : line.text, choice, answer.ends_with(result));
}

}  // namespace

int32_t cli_ask_select(int32_t first, void *second, const char *prompt) {
  if (first < 1 || second == nullptr || prompt == nullptr) return LMAINTE_ASK_FAILED;
  platform::KeptCall question(box::CallKind::kQuestion, prompt, static_cast<uint32_t>(first));
  const box::Way way = platform::reach(box::PointKind::kQuestion, {}).way;
  lmainte_record_question(first, prompt);
  if (way == box::Way::kRefused || way == box::Way::kEnd) {
    const bool has_ended = way == box::Way::kEnd && show(prompt);
    const int32_t result = question.ends_with(has_ended ? LMAINTE_ASK_END_OF_INPUT : LMAINTE_ASK_FAILED);
    return lmainte_record_answer(0, nullptr, nullptr, result);
  }
  question.ends_with(LMAINTE_ASK_CHOSEN);
  int result = kNoAnswer;
  while ((result = ask(first, static_cast<int32_t *>(second), prompt)) == kNoAnswer) show_hint(first);
  return result;
}
