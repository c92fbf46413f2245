#include "host/box/text_database.h"

#include "host/box/record_set.h"

namespace box {

TextDatabase::TextDatabase(const Place &place) : database_(place.hardware()) {}

std::optional<std::string> TextDatabase::get(const std::string &key) const {
  const std::optional<Bytes> record = database_.get(key);
  if (!record) return std::nullopt;
  return std::string(record->begin(), record->end());
}

void TextDatabase::set(const std::string &key, const std::string &value) {
  database_.put(key, {reinterpret_cast<const std::uint8_t *>(value.data()), value.size()});
}

void TextDatabase::clear(const std::string &key) {
  if (database_.get(key)) database_.remove(key);
}

std::string TextDatabase::exchange(const std::string &key, const std::string &value) {
  lock();
  std::string before = get(key).value_or("");
  if (value.empty()) {
    clear(key);
  } else if (value != before) {
    set(key, value);
  }
  unlock();
  return before;
}

void TextDatabase::lock() {
  box::lock(database_);
}

void TextDatabase::unlock() {
  box::save({&database_});
}

std::map<std::string, std::string> TextDatabase::all() const {
  std::map<std::string, std::string> texts;
  database_.each([&](std::string_view key, std::span<const std::uint8_t> value) {
    texts.emplace(key, std::string(value.begin(), value.end()));
  });
  return texts;
}

}  // namespace box
