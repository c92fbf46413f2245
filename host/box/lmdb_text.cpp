#include "host/box/lmdb_text.h"

#include <lmdb.h>

namespace box {

std::string damaged(const std::string &how) {
  return "data.mdb is damaged: " + how + " Make the box anew, or load a dump of it.";
}

std::string lmdb_text(int result, std::size_t room) {
  switch (result) {
    case MDB_MAP_FULL:
      return "the box is full: its databases hold at most " + std::to_string(room >> 20U) + " MiB together.";
    case MDB_INVALID:
    case MDB_VERSION_MISMATCH:
      return damaged("it does not begin as it should.");
    case MDB_CORRUPTED:
    case MDB_PAGE_NOTFOUND:
    case MDB_CURSOR_FULL:
    case MDB_PAGE_FULL:
    case MDB_BAD_VALSIZE:
    case MDB_INCOMPATIBLE:
    case MDB_BAD_TXN:
      return damaged("a part of it holds something else.");
    case MDB_PANIC:
      return "a save before this one failed on the disk. End the program, see the disk, and try again.";
    case MDB_MAP_RESIZED:
      return damaged("it says that it is larger than a box can be.");
    default:
      return mdb_strerror(result);
  }
}

}  // namespace box
