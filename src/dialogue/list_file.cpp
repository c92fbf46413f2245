#include "src/dialogue/list_file.h"

#include <unistd.h>
#include <cerrno>

namespace lmainte {

bool ListFile::open() {
  snprintf(path_, sizeof path_, "/tmp/mainte_fru_list.%d", static_cast<int>(getpid()));
  file_ = fopen(path_, "w");
  if (file_ == nullptr) call_.system_error(events_.open, errno);
  return file_ != nullptr;
}

bool ListFile::finish(bool good) {
  fclose(file_);
  if (good) {
    const int32_t shown = lmainte_show_file(path_);
    if (shown != LMAINTE_OK) call_.error(events_.show, shown);
    good = shown == LMAINTE_OK;
  }
  const int removed = remove(path_);
  if (removed != 0) call_.system_error(events_.remove, removed, errno);
  return good && removed == 0;
}

}  // namespace lmainte
