#include "host/spbox/editor.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>

#include "host/base/child.h"
#include "host/base/descriptor.h"
#include "host/base/quoted.h"
#include "host/base/temporary_folder.h"

namespace spbox {
namespace {

// The words of a shell, as these variables may hold options. Debian's `editor` is the one that the administrator chose.
std::string editor_of_user() {
  for (const char *const name : {"VISUAL", "EDITOR"}) {
    const char *const value = std::getenv(name);  // NOLINT(concurrency-mt-unsafe): there is one thread
    if (value != nullptr && *value != '\0') return value;
  }
  return access("/usr/bin/editor", X_OK) == 0 ? "/usr/bin/editor" : "vi";
}

[[noreturn]] void fail(const std::string &what) {
  throw std::system_error(errno, std::generic_category(), what);
}

}  // namespace

EditedText::EditedText(const std::string &text) {
  std::string name = (base::temporary_folder() / "spbox-edit.XXXXXX").string();
  const base::Descriptor file(mkostemp(name.data(), O_CLOEXEC));
  if (file.get() < 0) fail("no text can be edited in " + base::temporary_folder().string());
  path_ = name;
  if (write(file.get(), text.data(), text.size()) == static_cast<ssize_t>(text.size())) return;
  const int why = errno;
  unlink(path_.c_str());
  errno = why;
  fail("no text can be edited in " + base::temporary_folder().string());
}

EditedText::~EditedText() {
  if (!is_kept_) unlink(path_.c_str());
}

std::string EditedText::edited() const {
  const std::string editor = editor_of_user();
  const base::ArgumentVector shell({"/bin/sh", "-c", editor + " " + base::quoted(path_.string())});
  const pid_t child = fork();
  if (child < 0) base::no_process_for("the editor");
  if (child == 0) {
    execv(shell.program(), shell.data());
    _exit(127);
  }
  const int status = base::exit_status_of(child);
  if (status != 0) {
    throw std::runtime_error("`" + editor + "` ended with exit status " + std::to_string(status) +
                             ". Set EDITOR to an editor that can be run here.");
  }
  std::ifstream file(path_, std::ios::binary);
  std::string text{std::istreambuf_iterator<char>(file), {}};
  if (!file.is_open() || file.bad()) throw std::runtime_error(path_.string() + " cannot be read behind the editor.");
  return text;
}

const std::filesystem::path &EditedText::keep() {
  is_kept_ = true;
  return path_;
}

}  // namespace spbox
