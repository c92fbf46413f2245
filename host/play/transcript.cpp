#include "host/play/transcript.h"

#include <cerrno>
#include <system_error>

#include "host/base/shown.h"

namespace play {
namespace {

[[noreturn]] void cannot_write(const std::filesystem::path &file) {
  throw std::system_error(errno, std::generic_category(), "the transcript " + file.string() + " cannot be written");
}

}  // namespace

void Transcript::keep_in(const std::filesystem::path &file) {
  path_ = file;
  file_.open(file, std::ios::binary | std::ios::trunc);
  if (!file_) cannot_write(path_);
}

void Transcript::print(std::string_view text) {
  out_ << base::shown_lines(text) << std::flush;
  keep(text);
}

void Transcript::keep(std::string_view text) {
  if (is_kept() && !(file_ << base::shown_lines(text) << std::flush)) cannot_write(path_);
}

}  // namespace play
