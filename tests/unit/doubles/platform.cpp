// The service processor's own functions, over the machine in memory.

#include "include/lmainte_platform.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

#include <gtest/gtest.h>

#include "tests/unit/doubles/kept_events.h"
#include "tests/unit/doubles/machine.h"

using doubles::machine;

namespace {

constexpr int32_t kNoSuchRecord = 3;
constexpr int32_t kNoSuchName = 4;
constexpr int32_t kFirstDescriptor = 40;

std::string with_id(const char *verb, uint32_t db_id) {
  return std::string(verb) + " " + std::to_string(db_id);
}

bool is_known(uint32_t db_id) {
  if (db_id < std::size(machine().databases)) return true;
  ADD_FAILURE() << "the client is asked for database " << db_id;
  return false;
}

// Notes what no user of a database may do. The client would wait for itself, or for another process for ever.
void require(bool holds, const std::string &what) {
  if (!holds) ADD_FAILURE() << what;
}

bool any_locked_above(uint32_t db_id) {
  for (uint32_t id = db_id + 1; id < std::size(machine().databases); ++id)
    if (machine().databases[id].locked) return true;
  return false;
}

int32_t opened(const char *path, int32_t fd) {
  if (fd >= 0) machine().descriptors[fd] = {path, 0};
  return fd;
}

bool is_padded(const char *key) {
  const char *end = std::find(key, key + 128, '\0');
  return end != key + 128 && std::all_of(end, key + 128, [](char c) { return c == '\0'; });
}

}  // namespace

int32_t mgb_trace_write(uint32_t module, uint32_t level, uint32_t kind, uint32_t event, const uint32_t *words,
                        uint32_t length) {
  if (const auto handler = std::exchange(machine().interruption_of_trace, nullptr)) handler();
  static int rubbish = 7000;
  doubles::TraceRecord record = {module, level, kind, event, length, {}, machine().in_child};
  std::memcpy(record.words, words, std::min<size_t>(length - 8, sizeof record.words));
  machine().add_trace(record);
  doubles::keep_event(
      {event, (length - 8) / 4, record.words[1], static_cast<uint32_t>(reinterpret_cast<uintptr_t>(words))});
  errno = ++rubbish;
  return machine().trace_result;
}

int32_t scdb_open(uint32_t db_id) {
  if (!is_known(db_id)) return -1;
  require(!machine().databases[db_id].open, with_id("an open of the open database", db_id));
  if (const auto *failure = machine().enter(with_id("open", db_id))) return failure->result;
  machine().databases[db_id].open = true;
  return 0;
}

int32_t scdb_close(uint32_t db_id) {
  if (!is_known(db_id)) return -1;
  require(machine().databases[db_id].open, with_id("a close of the closed database", db_id));
  if (const auto *failure = machine().enter(with_id("close", db_id))) return failure->result;
  machine().databases[db_id].open = false;
  return 0;
}

int32_t scdb_lock(uint32_t db_id) {
  if (!is_known(db_id)) return -1;
  require(!machine().databases[db_id].locked, with_id("a lock of the locked database", db_id));
  require(!any_locked_above(db_id), with_id("a lock below a locked database, of", db_id));
  if (const auto *failure = machine().enter(with_id("lock", db_id))) return failure->result;
  machine().databases[db_id].locked = true;
  return 0;
}

int32_t scdb_unlock(uint32_t db_id) {
  if (!is_known(db_id)) return -1;
  require(machine().databases[db_id].locked, with_id("an unlock of the unlocked database", db_id));
  require(!any_locked_above(db_id), with_id("an unlock below a locked database, of", db_id));
  if (const auto *failure = machine().enter(with_id("unlock", db_id))) return failure->result;
  machine().databases[db_id].locked = false;
  return 0;
}

int32_t scdb_get(uint32_t db_id, const char *key, void **record, int32_t *size, uint32_t flags) {
  require(is_padded(key), "a key that is not padded with zero bytes");
  require(flags == 0, "flags in a read");
  require(machine().databases[db_id].open && machine().databases[db_id].locked, "a read outside open and lock");
  if (const auto *failure = machine().enter(with_id("get", db_id) + " " + key)) return failure->result;
  const auto found = machine().records.find({db_id, key});
  if (found == machine().records.end()) return kNoSuchRecord;
  const auto &stored = found->second;
  if (stored.hands_over) {
    *record = std::malloc(std::max<size_t>(stored.bytes.size(), 1));
    std::copy(stored.bytes.begin(), stored.bytes.end(), static_cast<uint8_t *>(*record));
    machine().own(*record);
  }
  *size = static_cast<int32_t>(stored.bytes.size());
  return stored.result;
}

// A null record is accepted: to refuse it is the library's task.
int32_t lcmn_scdb_put(uint32_t db_id, const char *key, const void *data, int32_t size, uint32_t flags) {
  require(is_padded(key), "a key that is not padded with zero bytes");
  require(flags == 0, "flags in a write");
  const std::string call = with_id("put", db_id) + " " + key + " " + std::to_string(size);
  if (const auto *failure = machine().enter(call)) return failure->result;
  if (data == nullptr) return 0;
  const auto *bytes = static_cast<const uint8_t *>(data);
  machine().records[{db_id, key}] = {{bytes, bytes + size}};
  return 0;
}

// Opens for reading alone, or for reading and writing with or without making the file.
int32_t lcmn_lopen(const char *path, int32_t flags, uint32_t mode) {
  require((flags == 0 && mode == 0444) || (flags == 2 && mode == 0) || flags == 66, "an open of another kind");
  char how[16] = "";
  if (flags == 2) std::snprintf(how, sizeof how, " rw");
  if (flags == 66) std::snprintf(how, sizeof how, " create %o", mode);
  if (const auto *failure = machine().enter(std::string("lopen ") + path + how)) return failed(*failure);
  if (machine().files_are_real) return opened(path, open(path, flags | O_CLOEXEC, mode));
  if (flags == 66) machine().files.try_emplace(path);
  if (!machine().files.contains(path)) {
    errno = ENOENT;
    return -1;
  }
  int32_t fd = kFirstDescriptor;
  while (machine().descriptors.contains(fd)) ++fd;
  return opened(path, fd);
}

int32_t lcmn_read(int32_t fd, void *buffer, int32_t size) {
  require(machine().descriptors.contains(fd), "a read from a closed descriptor");
  if (const auto *failure = machine().enter("lread " + std::to_string(size))) return failed(*failure);
  if (machine().files_are_real) return static_cast<int32_t>(read(fd, buffer, static_cast<size_t>(size)));
  auto &descriptor = machine().descriptors[fd];
  const auto &bytes = machine().files[descriptor.path];
  const auto rest = static_cast<int32_t>(bytes.size()) - static_cast<int32_t>(descriptor.position);
  const auto count = static_cast<size_t>(std::max(0, std::min({size, rest, machine().read_at_most})));
  std::copy_n(bytes.begin() + static_cast<ptrdiff_t>(count == 0 ? 0 : descriptor.position), count,
              static_cast<uint8_t *>(buffer));
  descriptor.position += count;
  errno = EINTR;
  return static_cast<int32_t>(count);
}

int32_t lcmn_write(int32_t fd, const void *buffer, int32_t size) {
  require(machine().descriptors.contains(fd), "a write to a closed descriptor");
  const std::string text(static_cast<const char *>(buffer), static_cast<size_t>(size));
  if (const auto *failure = machine().enter("lwrite " + std::to_string(size) + " " + text)) return failed(*failure);
  if (machine().files_are_real) return static_cast<int32_t>(write(fd, buffer, static_cast<size_t>(size)));
  auto &descriptor = machine().descriptors[fd];
  auto &bytes = machine().files[descriptor.path];
  const auto count = static_cast<size_t>(std::min(size, machine().write_at_most));
  bytes.resize(std::max(bytes.size(), descriptor.position + count));
  std::copy_n(text.begin(), count, bytes.begin() + static_cast<ptrdiff_t>(descriptor.position));
  descriptor.position += count;
  errno = EINTR;
  return static_cast<int32_t>(count);
}

int32_t lcmn_close(int32_t fd) {
  require(machine().descriptors.contains(fd), "a second close of a descriptor");
  if (const auto *failure = machine().enter("lclose")) return failed(*failure);
  machine().descriptors.erase(fd);
  return machine().files_are_real ? close(fd) : 0;
}

int32_t cli_ask_select(int32_t first, void *second, const char *prompt) {
  machine().note("ask");
  machine().asked.push_back({first, second, prompt});
  if (machine().speaks) std::printf("<ask>");
  return machine().answer;
}

int32_t api_conv_unit_name_get(const uint32_t *unit_id, int32_t form, char *name, int32_t unused_1, int32_t unused_2) {
  require(unused_1 == 0 && unused_2 == 0, "unused arguments of a name that are not 0");
  require(std::all_of(name, name + 128, [](char c) { return c == '\0'; }), "a name's room that is not cleared");
  const std::string id = std::to_string(unit_id[0]) + ":" + std::to_string(unit_id[1]);
  if (const auto *failure = machine().enter("name " + id + " form " + std::to_string(form))) return failure->result;
  const auto found = machine().names.find({unit_id[0], unit_id[1]});
  if (found == machine().names.end()) return kNoSuchName;
  found->second.copy(name, 128);
  return 0;
}
