#include "host/play/transcript.h"

#include <cerrno>
#include <stdexcept>
#include <system_error>

#include "host/base/shown.h"
#include "host/script/script.h"

namespace play {
namespace {

std::string cannot_write(const std::filesystem::path &file) {
  return "the transcript " + file.string() + " cannot be written: " + std::generic_category().message(errno);
}

}  // namespace

void Transcript::keep_in(const std::filesystem::path &file) {
  path_ = file;
  file_.open(file, std::ios::binary | std::ios::trunc);
  if (!file_) throw script::Error(cannot_write(path_));
}

void Transcript::print(std::string_view text) {
  out_ << base::shown_lines(text) << std::flush;
  keep(text);
}

void Transcript::keep(std::string_view text) {
  if (is_kept() && !(file_ << base::shown_lines(text) << std::flush)) throw std::runtime_error(cannot_write(path_));
}

}  // namespace play
