#include <cstdlib>
#include <cstring>
#include <memory>

#include "host/include/lmainte_host.h"
#include "host/platform/exported.h"
#include "host/target/line.h"
#include "include/lmainte_record.h"

namespace {

using wire::Kind;

struct Freed {
  void operator()(std::uint8_t *memory) const { std::free(memory); }
};
using Room = std::unique_ptr<std::uint8_t[], Freed>;  // NOLINT(*-avoid-c-arrays): memory of malloc

Room new_room() {
  return Room(static_cast<std::uint8_t *>(std::malloc(wire::kLongest)));
}

int32_t result_of(target::Request &request, int32_t otherwise) {
  int32_t result = otherwise, told = otherwise;
  const bool is_told = request.answered([&](wire::Reader &answer) { told = answer.number(); });
  if (is_told) result = told;
  return result;
}

int32_t ask(Kind kind, uint32_t db_id) {
  target::Request request(kind);
  request.fields.word(db_id);
  return result_of(request, LMAINTE_HOST_DB_STORAGE);
}

// As much of it as a key has, with its end.
std::string_view key_text(const char *key) {
  return key == nullptr ? std::string_view() : std::string_view(key, strnlen(key, wire::kKeyRoom));
}

int32_t get_record(uint32_t db_id, const char *key, void **record, int32_t *size, uint32_t flags) {
  std::array<std::uint8_t, wire::kLongestShort> asked;
  wire::Writer request(asked, Kind::kRead);
  request.word(db_id)
      .flag(key != nullptr)
      .flag(record != nullptr)
      .flag(size != nullptr)
      .word(flags)
      .text(key_text(key));
  const Room room = new_room();
  wire::Reader answer;
  if (!room || !target::exchange(request, {room.get(), wire::kLongest}, answer)) return LMAINTE_HOST_DB_STORAGE;
  const int32_t result = answer.number();
  const std::string_view bytes = answer.text(wire::kLongestRecord);
  if (!answer.is_whole()) return LMAINTE_HOST_DB_STORAGE;
  if (result != 0) return result;
  void *copy = std::malloc(bytes.empty() ? 1 : bytes.size());
  if (copy == nullptr) return LMAINTE_HOST_DB_STORAGE;
  if (!bytes.empty()) std::memcpy(copy, bytes.data(), bytes.size());
  *record = copy;
  *size = static_cast<int32_t>(bytes.size());
  return 0;
}

int32_t put_record(uint32_t db_id, const char *key, const void *data, int32_t size, uint32_t flags) {
  const bool has_bytes = data != nullptr && size > 0;
  const std::size_t length = has_bytes ? static_cast<std::size_t>(size) : 0;
  const Room room = new_room();
  if (!room || length > wire::kLongestRecord) return LMAINTE_HOST_DB_STORAGE;
  wire::Writer request({room.get(), wire::kLongest}, Kind::kWrite);
  request.word(db_id).flag(key != nullptr).flag(data != nullptr).number(size).word(flags).text(key_text(key));
  request.text({static_cast<const char *>(data), length});
  std::array<std::uint8_t, wire::kLongestShort> told;
  wire::Reader answer;
  if (!target::exchange(request, told, answer)) return LMAINTE_HOST_DB_STORAGE;
  const int32_t result = answer.number();
  return answer.is_whole() ? result : LMAINTE_HOST_DB_STORAGE;
}

}  // namespace

int32_t scdb_open(uint32_t db_id) {
  if (target::is_between()) return LMAINTE_HOST_DB_STORAGE;
  const uint64_t began = lmainte_record_begin();
  const int32_t result = ask(Kind::kOpen, db_id);
  if (result == 0) target::note_open(db_id, true);
  return lmainte_record_session(LMAINTE_RECORD_OPEN, began, db_id, result);
}

int32_t scdb_close(uint32_t db_id) {
  const uint64_t began = lmainte_record_begin();
  const int32_t result = ask(Kind::kClose, db_id);
  if (result == 0) target::note_open(db_id, false);
  return lmainte_record_session(LMAINTE_RECORD_CLOSE, began, db_id, result);
}

int32_t scdb_lock(uint32_t db_id) {
  const uint64_t began = lmainte_record_begin();
  return lmainte_record_session(LMAINTE_RECORD_LOCK, began, db_id, ask(Kind::kLock, db_id));
}

int32_t scdb_unlock(uint32_t db_id) {
  const uint64_t began = lmainte_record_begin();
  return lmainte_record_session(LMAINTE_RECORD_UNLOCK, began, db_id, ask(Kind::kUnlock, db_id));
}

int32_t scdb_get(uint32_t db_id, const char *key, void **record, int32_t *size, uint32_t flags) {
  const uint64_t began = lmainte_record_begin();
  const int32_t result = get_record(db_id, key, record, size, flags);
  return lmainte_record_get(began, db_id, key, record, size, result);
}

int32_t lcmn_scdb_put(uint32_t db_id, const char *key, const void *data, int32_t size, uint32_t flags) {
  const uint64_t began = lmainte_record_begin();
  return lmainte_record_put(began, db_id, key, data, size, put_record(db_id, key, data, size, flags));
}
