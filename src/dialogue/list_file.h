// The list file: the text that a list, a status table or a menu shows through the pager, and that is gone afterwards.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "include/lmainte.h"
#include "src/frame/trace.h"

namespace lmainte {

// The path of this process's list file in a folder, which ends with a slash or is empty.
using ListPath = char[128];
void write_list_path(ListPath &path, const char *folder);

// The errors of a list file.
struct ListFileErrors {
  Error no_file, pager_failed, not_removed;
};

class ListFile {
 public:
  ListFile(const Call &call, const ListFileErrors &errors) : call_(call), errors_(errors) {}
  ListFile(const ListFile &) = delete;
  ListFile &operator=(const ListFile &) = delete;
  // Removes a file that was not shown.
  ~ListFile();

  bool open();
  void write(const char *text) { fputs(text, file_); }

  // Closes the open file, shows it and removes it. True when all of it succeeded.
  bool show();

 private:
  void close();
  bool remove_file();

  const Call &call_;
  const ListFileErrors &errors_;
  ListPath path_ = {};
  FILE *file_ = nullptr;
};

// Formats a caller's line with all ten of its values into a buffer that cuts it.
template <size_t Size>
void format_line(char (&buffer)[Size], const ListLine &line) {
  const uintptr_t *a = line.args;
  // NOLINTNEXTLINE(clang-diagnostic-format-nonliteral): the caller's format
  snprintf(buffer, Size, line.format, a[0], a[1], a[2], a[3], a[4], a[5], a[6], a[7], a[8], a[9]);
}

}  // namespace lmainte
