#include "host/box/lmdb_text.h"

#include <lmdb.h>

namespace box {
namespace {

std::string damaged(const char *how) {
  std::string text = "data.mdb is damaged: ";
  text += how;
  text += kRemake;
  return text;
}

}  // namespace

std::string lmdb_text(int result, std::size_t room) {
  switch (result) {
    case MDB_MAP_FULL:
      return "the box is full: its databases hold at most " + std::to_string(room >> 20U) + " MiB together.";
    case MDB_INVALID:
    case MDB_VERSION_MISMATCH:
      return damaged("it does not begin as it should.");
    case MDB_CORRUPTED:
    case MDB_PAGE_NOTFOUND:
      return damaged("a part of it holds something else.");
    default:
      return mdb_strerror(result);
  }
}

}  // namespace box
