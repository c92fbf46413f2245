#include "src/dialogue/list_file.h"

#include <unistd.h>
#include <cerrno>

namespace lmainte {

void write_list_path(ListPath &path, const char *folder) {
  snprintf(path, sizeof path, "%smainte_fru_list.%d", folder, static_cast<int>(getpid()));
}

bool ListFile::open() {
  write_list_path(path_, "/tmp/");
  file_ = fopen(path_, "w");
  if (file_ == nullptr) call_.system_call_failed(errors_.no_file);
  return file_ != nullptr;
}

bool ListFile::show() {
  close();
  const int32_t shown = lmainte_show_file(path_);
  if (shown != LMAINTE_OK) call_.error(errors_.pager_failed, shown);
  const bool removed = remove_file();
  return shown == LMAINTE_OK && removed;
}

ListFile::~ListFile() {
  if (file_ == nullptr) return;
  close();
  remove_file();
}

void ListFile::close() {
  fclose(file_);
  file_ = nullptr;
}

bool ListFile::remove_file() {
  const int removed = remove(path_);
  if (removed != 0) call_.system_call_failed(errors_.not_removed, removed);
  return removed == 0;
}

}  // namespace lmainte
